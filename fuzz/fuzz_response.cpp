// Feeds arbitrary terminal answers to every reading export. The first input byte
// picks the export and whether the rest is wrapped in a well-formed frame (so the
// decoders see it) or sent raw (so the frame checks do).
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include <stdlib.h>  // mkdtemp

#include "kvnsdk2.h"
#include "link/crc32.h"
#include "memory_transport.h"

namespace {

std::vector<uint8_t> frame(const uint8_t* payload, size_t n) {
    std::vector<uint8_t> f;
    auto put = [&f](uint32_t v) { for (int b = 0; b < 32; b += 8) f.push_back(static_cast<uint8_t>(v >> b)); };
    for (uint32_t w : {0xAABBCCDDu, 1u, 0x00020002u, 0u, 0u, 0u, static_cast<uint32_t>(n)}) put(w);
    f.insert(f.end(), payload, payload + n);
    put(kvn::crc32(0, f.data() + 4, 24 + n));
    return f;
}

// Each record is kept between runs (one per type, shared by the exports that take
// it) so that stale contents (counts, lengths) left by earlier answers are exercised too.
template <class T> T* keep() { static auto r = std::make_unique<T>(); return r.get(); }
template <class T, size_t N> T* keep_array() { return keep<std::array<T, N>>()->data(); }
// An export that takes one record after the connection, given that record.
template <class T>
void run(int32_t (*get)(kvn_device_conn*, T*), kvn_device_conn* c) { get(c, keep<std::remove_const_t<T>>()); }

// An enrolment request with its answer buffers (the second one only sometimes).
kvn_enrollment_request* enrolment(bool both) {
    auto* e = keep<std::pair<kvn_enrollment_request, std::array<uint8_t, 2 * KVN_ENROLLMENT_DATA_SIZE>>>();
    e->first.data_t03 = e->second.data();
    e->first.data_t06 = both ? e->second.data() + KVN_ENROLLMENT_DATA_SIZE : nullptr;
    return &e->first;
}

// Transfers read a local file of two packets and write into a scratch file, both in
// a directory of the run's own under the system's temporary directory.
kvn_file_transfer_request* fuzz_transfer(bool upload) {
    static kvn_file_transfer_request r{5, nullptr, "f"};
    static const std::string dir = [] {
        std::string d = (std::filesystem::temp_directory_path() / "kvn-fuzz-XXXXXX").string();
        return mkdtemp(d.data()) ? d : std::string(".");
    }();
    static const std::string up = dir + "/upload.bin", down = dir + "/download.bin";
    static const bool made = [] {
        static const uint8_t zeros[70000] = {};
        std::FILE* f = std::fopen(up.c_str(), "wb");
        return f != nullptr && std::fwrite(zeros, 1, sizeof zeros, f) + std::fclose(f) == sizeof zeros;
    }();
    r.local_path = made && upload ? up.c_str() : down.c_str();
    return &r;
}

// Every export that reads one record, from the header's description
// (kvn_generate.py fuzz-readers): the record it reads into is the one its signature names.
#define KVN_FUZZ_READER(f, T) [](kvn_device_conn* c) { run(f, c); },
void (*const kReaders[])(kvn_device_conn*) = {
#include "fuzz_readers.inc"
};
constexpr unsigned kReaderCount = sizeof kReaders / sizeof kReaders[0];

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    // Two bytes pick the export (low 15 bits) and whether the rest is wrapped in a
    // well-formed frame (top bit clear) or sent raw.
    const unsigned pick = data[0] | (data[1] << 8);
    std::vector<uint8_t> input =
        (pick & 0x8000) ? std::vector<uint8_t>(data + 2, data + size) : frame(data + 2, size - 2);
    kvnfuzz::feed(input.data(), input.size());
    kvn_device_conn c = kvnfuzz::connection();
    uint8_t buffer[256];
    uint32_t length = sizeof buffer;
    const unsigned which = pick & 0x7FFF;
    if (which < kReaderCount) {
        kReaders[which](&c);
        return 0;
    }
    // Exports whose arguments need preparing: arrays of a fixed count, records that
    // point to buffers, files, a capacity, a command id.
    switch (which - kReaderCount) {
        case 0: kvn_get_led_setting(&c, keep_array<kvn_led_setting, KVN_LED_COUNT>()); break;
        case 1: kvn_get_buzzer_setting(&c, keep_array<kvn_led_setting, KVN_BUZZER_COUNT>()); break;
        case 2: kvn_get_audio_setting(&c, keep_array<kvn_audio_setting, KVN_AUDIO_COUNT>()); break;
        case 3: run(kvn_set_dac_settings, &c); break;
        case 4: kvn_send_reset_command(&c, 121); break;
        case 5: {  // the whole capacity every time: the count only shrinks otherwise
            uint8_t n = UINT8_MAX;
            kvn_get_wifi_scan_list(&c, keep<kvn_wifi_connection_info>(), keep_array<kvn_wifi_scan_entry, UINT8_MAX>(), &n);
        } break;
        case 6: {
            kvn_user_store_request rq{keep<kvn_user_record>(), keep<kvn_user_store_result>()};
            kvn_store_user_record(&c, &rq);
        } break;
        case 7: kvn_enrollment(&c, enrolment(false)); break;
        case 8: kvn_enrollment_with_duplicate_identify(&c, enrolment(true)); break;
        case 9: run(kvn_verify_by_template, &c); break;
        case 10: {
            kvn_verify_user_record_request verify{keep<kvn_user_record>(), nullptr, {}};
            kvn_verify_by_user_record(&c, &verify);
        } break;
        case 11: kvn_upload_file(&c, fuzz_transfer(true)); break;
        case 12: kvn_download_file(&c, fuzz_transfer(false)); break;
        case 13: kvn_read_prox_card_serial_number(&c, keep_array<uint8_t, KVN_CARD_SERIAL_SIZE>()); break;
        default: kvn_receive_response(&c, buffer, &length); break;
    }
    return 0;
}
