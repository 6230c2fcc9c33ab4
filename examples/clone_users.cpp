// Clones users with their fingerprint templates from one terminal to another.
//
//   clone_users FROM TO [USER_ID...]     FROM and TO are IP[:PORT]
//
// Without user ids it clones every user of FROM: FROM writes its user list as a CSV
// file, which is fetched, read for the ids (its first column) and removed again.
// A user TO already has is replaced.
#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "example.h"

namespace {

constexpr uint32_t kCsvFile = 3;  // file type of a CSV user list
constexpr const char* kListName = "clone-users.csv";

// The user ids of a terminal, from the CSV user list it writes.
int32_t list_users(kvn_device_conn& conn, std::vector<std::string>& ids) {
    kvn_file_transfer_request list{};
    list.file_type = kCsvFile;
    list.local_path = kListName;  // fetched into the working directory
    std::snprintf(list.file_name, sizeof list.file_name, "%s", kListName);

    int32_t rc = kvn_upgrade_firware_export_csv_file(&conn, kListName);
    if (rc == 0) rc = kvn_download_file(&conn, &list);
    if (rc == 0) rc = kvn_delete_file(&conn, &list);
    if (rc != 0) return rc;

    std::ifstream csv(kListName);
    for (std::string line; std::getline(csv, line);) {
        std::string id = line.substr(0, line.find(','));
        if (!id.empty() && id.back() == '\r') id.pop_back();
        if (!id.empty() && id != "user_id") ids.push_back(id);  // the first line names the columns
    }
    csv.close();
    std::remove(kListName);
    return 0;
}

// Copies one user record, templates included. A user the target already has is
// deleted there first, so that the copy replaces it whole.
int32_t clone_user(kvn_device_conn& from, kvn_device_conn& to, const std::string& id) {
    auto user = std::make_unique<kvn_user_record>();  // 16 KiB, zeroed
    std::snprintf(user->user_id, sizeof user->user_id, "%s", id.c_str());
    int32_t rc = kvn_get_user_record(&from, user.get());
    if (rc != 0) return rc;

    kvn_user_store_result refused{};
    kvn_user_store_request store{user.get(), &refused};
    rc = kvn_store_user_record(&to, &store);
    if (rc == KVN_E_USERID_ALREADY_EXISTS) {
        auto old = std::make_unique<kvn_user_record>();
        std::snprintf(old->user_id, sizeof old->user_id, "%s", id.c_str());
        rc = kvn_delete_user_record(&to, old.get());
        if (rc == 0) rc = kvn_store_user_record(&to, &store);
    }
    if (rc == KVN_E_USER_RECORD_STORE)  // refused, with the reason in the answer
        std::printf("  %s: a template is already held by %s there\n", id.c_str(), refused.user_id);
    else if (rc == 0)
        std::printf("  %s: copied with %d template(s)\n", id.c_str(), int(user->template_count));
    return rc;
}

// The terminal's own statuses (-1001 and below) concern one user; the library's
// (-1 to -15, but -14, a refused store) say that the link or an answer failed.
bool link_failed(int32_t rc) { return rc < 0 && rc > -1001 && rc != KVN_E_USER_RECORD_STORE; }

}  // namespace

int main(int argc, char** argv) {
    kvn_device_conn from, to;
    char from_host[EXAMPLE_HOST_MAX], to_host[EXAMPLE_HOST_MAX];
    if (argc < 3 || parse_address(argv[1], from_host, &from) != 0 || parse_address(argv[2], to_host, &to) != 0) {
        std::fprintf(stderr, "usage: clone_users FROM_IP[:PORT] TO_IP[:PORT] [USER_ID...]\n");
        return 2;
    }
    std::vector<std::string> ids(argv + 3, argv + argc);

    int32_t rc = connect_terminal(&from);
    const int32_t to_rc = connect_terminal(&to);  // both tried: both can be closed below
    if (rc == 0) rc = to_rc;
    if (rc == 0 && ids.empty()) {
        rc = list_users(from, ids);
        std::printf("user list of %s: %s, %zu user(s)\n", argv[1], status_text(rc), ids.size());
    }
    size_t cloned = 0, failed = 0;
    for (size_t i = 0; rc == 0 && i < ids.size(); ++i) {
        const int32_t user_rc = clone_user(from, to, ids[i]);
        if (user_rc == 0) {
            ++cloned;
        } else {
            ++failed;
            if (user_rc != KVN_E_USER_RECORD_STORE) std::printf("  %s: %s\n", ids[i].c_str(), status_text(user_rc));
            if (link_failed(user_rc)) rc = user_rc;  // and with it the rest of the run
        }
    }
    if (rc == 0) std::printf("%zu user(s) cloned, %zu failed\n", cloned, failed);
    else std::printf("clone stopped: %s\n", status_text(rc));
    kvn_close_device_conn(&from);
    kvn_close_device_conn(&to);
    return rc == 0 && failed == 0 ? 0 : 1;
}
