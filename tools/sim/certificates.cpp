// VPN and certificates: the VPN profile and status, and files uploaded with
// file type 6 installed into the user (.pfx, .p12) or CA (.crt) store. The lists
// answer as many names as fit the reader's 1024-byte buffer.
#include <algorithm>
#include <cctype>
#include <cstring>

#include "handlers.h"
#include "kvnsdk2.h"

namespace kvnsim::certificates {
namespace {

constexpr uint32_t kCertificateFiles = 6;  // file type of uploaded certificates

Field TXT51(uint8_t t) { return TXT(t, 51); }

bool ends_with(std::string s, const char* suffix) {
    std::transform(s.begin(), s.end(), s.begin(), [](unsigned char ch) { return char(std::tolower(ch)); });
    const size_t n = std::strlen(suffix);
    return s.size() >= n && s.compare(s.size() - n, n, suffix) == 0;
}

// Names, flat under one tag, cut to 50 bytes, while they fit 1024 bytes.
Reply name_list(uint8_t tag, const std::vector<std::string>& names) {
    Out o;
    for (const std::string& n : names)
        if (o.bytes.size() + 2 + std::min<size_t>(n.size(), 50) < 1024) o.text(tag, n.substr(0, 50));
    return Reply::with(std::move(o));
}

}  // namespace

const Group kVpnProfile{cat({{U32(17), TXT(2, 51), U32(3)}, range(TXT51, 4, 9), {U32(10)}, range(TXT51, 11, 16)}),
                            {{17, 0}, {3, 0}, {10, 0}},
                            {}};

bool vpn_up(State& st) { return st.groups.value(Cmd::VpnProfile, 17) != 0; }

Reply ssl_list(Call& c) { return name_list(4, c.st.user_certs); }

Reply user_list(Call& c) { return name_list(14, c.st.user_certs); }

Reply ca_list(Call& c) { return name_list(15, c.st.ca_certs); }

Reply uploaded_list(Call& c) {
    std::vector<std::string> names;
    for (const auto& [key, data] : c.st.files)
        if (key.first == kCertificateFiles) names.push_back(key.second);
    return name_list(21, names);
}

Reply install(Call& c) {
    static const std::vector<Field> fields = {TXT(21, 255), TXT(22, 1000)};
    std::vector<Node> in;
    if (int32_t rc = parse(fields, c.rq.data, c.rq.size, &in); rc != 0) return Reply::of(rc);
    std::string name, secret;
    for (const Node& n : in) (n.tag == 21 ? name : secret) = n.text();
    const Blob* f = c.st.file(kCertificateFiles, name);
    if (f == nullptr) return Reply::of(KVN_E_CERTIFICATE_DOES_NOT_EXIST_ON_DEVICE);
    const bool ca = ends_with(name, ".crt");
    if (!ca && !ends_with(name, ".pfx") && !ends_with(name, ".p12")) return Reply::of(KVN_E_VPN_CERTIFICATE_BAD_FORMAT);
    if (f->empty()) return Reply::of(KVN_E_CERTIFICATE_IS_NOT_OF_VALID_PKCS_FORMAT);
    if (!ca && secret.empty()) return Reply::of(KVN_E_INVALID_VPN_CERTIFICATE_OR_PASSWORD);
    auto& list = ca ? c.st.ca_certs : c.st.user_certs;
    if (std::find(list.begin(), list.end(), name) == list.end()) list.push_back(name);
    c.st.save_misc();
    return Reply{};
}

// A certificate the VPN profile names stays installed.
Reply uninstall(Call& c) {
    static const std::vector<Field> fields = {TXT(14, 255), TXT(15, 255)};
    std::vector<Node> in;
    if (int32_t rc = parse(fields, c.rq.data, c.rq.size, &in); rc != 0) return Reply::of(rc);
    if (in.size() != 1) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
    auto& list = in[0].tag == 14 ? c.st.user_certs : c.st.ca_certs;
    const std::string name = in[0].text();
    auto it = std::find(list.begin(), list.end(), name);
    if (it == list.end()) return Reply::of(KVN_E_CERTIFICATE_DOES_NOT_EXIST_ON_DEVICE);
    for (const Node& n : c.st.groups.nodes(Cmd::VpnProfile))
        if (n.text() == name) return Reply::of(KVN_E_VPN_CERTIFICATE_IN_USE);
    list.erase(it);
    c.st.save_misc();
    return Reply{};
}

Reply vpn_status(Call& c) {
    const bool up = vpn_up(c.st);
    Out o;
    o.u32(28, up ? 1 : 0);
    o.u32(29, up ? kVpnAddress : 0);
    return Reply::with(std::move(o));
}

}  // namespace kvnsim::certificates
