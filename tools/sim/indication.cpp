// Indication: LED, buzzer and audio entries, the LCD, device notifications,
// audio playback and the image display, with the terminal's preset audio and
// image lists.
#include <algorithm>
#include <string_view>

#include "handlers.h"
#include "kvnsdk2.h"

namespace kvnsim::indication {
namespace {

// LED and buzzer entries: number, enable, option and a 3 x 3 matrix.
std::vector<Field> indication_fields(uint32_t count) {
    return {KEYED(1, 3, 1, count, cat({{U32(3), U8(2), U32(13)}, range(U32, 4, 12)}))};
}
// Each entry enabled, option 0, the identity matrix.
std::vector<Preset> indication_defaults(uint32_t count) {
    return {entries(1, count, 1,
                    {{2, 1}, {13, 0}, {4, 1}, {5, 0}, {6, 0}, {7, 0}, {8, 1}, {9, 0}, {10, 0}, {11, 0}, {12, 1}})};
}

const std::vector<std::string_view> kAudioNames = {
    "Welcome",       "Access granted", "Access denied", "Try again",   "Place finger", "Remove finger",
    "Present card",  "Door open",      "Door closed",   "Alarm",       "Enrolled",     "Duplicate",
    "Timeout",       "Thank you",      "Good morning",  "Good evening", "Goodbye",     "Please wait"};

Preset audio_entries() {
    Preset p = entries(1, 18, 1, {{5, 1}, {7, 5}});
    p.names_tag = 4;
    p.names = kAudioNames;
    return p;
}

struct MediaItem {
    const char* name;
    const char* text;
};
constexpr MediaItem kAudioList[] = {{"beep.wav", "Short beep"}, {"granted.wav", "Access granted"},
                                    {"denied.wav", "Access denied"}};
constexpr MediaItem kImageList[] = {{"logo.png", "Built in"}, {"welcome.png", "Built in"}};
constexpr uint32_t kImageFiles = 4, kAudioFiles = 5;  // file types of uploaded images and audio

// The preset entries of a media list, then the uploaded files of one file type.
template <size_t N>
Reply media_list(const State& st, uint8_t name_tag, uint8_t text_tag, const MediaItem (&builtin)[N], uint32_t file_type) {
    Out o;
    for (const MediaItem& m : builtin) {
        o.text(name_tag, m.name);
        o.text(text_tag, m.text);
    }
    for (const auto& [key, data] : st.files)
        if (key.first == file_type) {
            o.text(name_tag, key.second.substr(0, 50));
            o.text(text_tag, "Uploaded");
        }
    return Reply::with(std::move(o));
}

}  // namespace

const Group kLed{indication_fields(17), indication_defaults(17), {}};
const Group kBuzzer{indication_fields(18), indication_defaults(18), {}};
const Group kAudio{{KEYED(1, 3, 1, 18, {U32(3), TXT(4, 51), U8(5), TXT(6, 256), U32(7), U32(8)})}, {audio_entries()}, {}};
const Group kLcd{{U32(1), TXT(2, 51)}, {{1, 1}, {2, "Welcome"}}, {}};
const Group kDeviceNotification{{U8(1), TXT(2, 129), TXT(3, 51), TXT(4, 51), U32(5)}, {{1, 0}, {5, 0}}, {}};

// Entries set one at a time carry their value under tag 8; the terminal keeps it
// where every other form reads it, tag 7.
Reply audio(Call& c) {
    if (c.rq.type != kSet) return settings::plain(c);
    std::vector<Node> in;
    if (int32_t rc = settings::parse_set(c, &in); rc != 0) return Reply::of(rc);
    settings::store(c, std::move(in));
    for (Node& e : c.st.groups.nodes(c.cmd.id)) {
        for (Node& k : e.kids) {
            if (k.tag != 8) continue;
            Node* seven = nullptr;
            for (Node& k7 : e.kids)
                if (k7.tag == 7) seven = &k7;
            if (seven) seven->value = k.value;
            else k.tag = 7;
        }
        e.kids.erase(std::remove_if(e.kids.begin(), e.kids.end(), [](const Node& k) { return k.tag == 8; }), e.kids.end());
    }
    c.st.groups.save(c.cmd.id);
    return Reply{};
}

Reply audio_play(Call& c) {
    static const std::vector<Field> fields = {TXT(4, 51), TXT(6, 256), U32(8)};
    std::vector<Node> in;
    return Reply::of(parse(fields, c.rq.data, c.rq.size, &in));
}

// The stop request carries a buffer the terminal does not read.
Reply audio_stop(Call&) { return Reply{}; }

Reply audio_list(Call& c) { return media_list(c.st, 11, 12, kAudioList, kAudioFiles); }

Reply image_list(Call& c) { return media_list(c.st, 1, 2, kImageList, kImageFiles); }

// Shows a preset or uploaded image by name.
Reply display_image(Call& c) {
    static const std::vector<Field> fields = {TXT(3, 255)};
    std::vector<Node> in;
    if (int32_t rc = parse(fields, c.rq.data, c.rq.size, &in); rc != 0) return Reply::of(rc);
    if (in.empty()) return Reply::of(KVN_E_INVALID_FILE_NAME);
    const std::string name = in[0].text();
    for (const MediaItem& m : kImageList)
        if (name == m.name) return Reply{};
    return Reply::of(c.st.file(kImageFiles, name) != nullptr ? 0 : KVN_E_INVALID_FILE_NAME);
}

}  // namespace kvnsim::indication
