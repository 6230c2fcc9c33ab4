// Every command export as a call with placeholder arguments (generated from the
// header's description, kvn_generate.py export-calls): pointers into a zeroed
// arena, one region per parameter, and integers of 1.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "kvnsdk2.h"

namespace kvntest {

class Args {
public:
    static constexpr size_t kSlot = 512 * 1024;  // the largest record fits
    static constexpr size_t kSlots = 6;

    kvn_device_conn* conn = nullptr;

    struct AnyPtr {
        void* p;
        template <class T>
        operator T*() const {  // NOLINT: converts to whatever the export takes
            return static_cast<T*>(p);
        }
    };
    struct AnyNum {
        template <class T, class = std::enable_if_t<std::is_arithmetic_v<T>>>
        operator T() const {  // NOLINT
            return T(1);
        }
    };
    AnyPtr ptr(int i) { return AnyPtr{arena_.get() + static_cast<size_t>(i) * kSlot / sizeof(std::max_align_t)}; }
    // The record behind parameter i (1 is the one after the connection).
    template <class T>
    T* at(int i) {
        return static_cast<T*>(ptr(i).p);
    }
    static AnyNum num() { return AnyNum{}; }
    void clear() { std::memset(arena_.get(), 0, kSlot * kSlots); }

private:
    std::unique_ptr<std::max_align_t[]> arena_{new std::max_align_t[kSlot * kSlots / sizeof(std::max_align_t)]()};
};

struct ExportCall {
    const char* name;
    int32_t (*call)(Args&);
};

// Exports that need more than zeroed records to reach the terminal (a file to
// read, a valid id) fill their arguments here before the call.
using Setup = void (*)(Args&);
inline Setup setup_for(const std::string& name) {
    static const std::map<std::string, Setup> setups = {
        // Empty addresses are refused before anything is sent: take them from the network.
        {"kvn_set_ethernet_setting", [](Args& a) { a.at<kvn_ethernet_setting>(1)->address_mode = 1; }},
        {"kvn_connect_wifi", [](Args& a) { a.at<kvn_wifi_connect_setting>(1)->source = 1; }},
        // @@NETWORK@@
        // @@TABLES@@
        // @@USERS@@
        {"kvn_store_user_record",
         [](Args& a) { *a.at<kvn_user_store_request>(1) = {a.at<kvn_user_record>(2), a.at<kvn_user_store_result>(3)}; }},
        {"kvn_verify_by_user_record", [](Args& a) { a.at<kvn_verify_user_record_request>(1)->record = a.at<kvn_user_record>(2); }},
        // @@LOGS@@
        // Transfers need a local file: an empty one to upload (only the start packet
        // goes out), a path to create for a download. Relative to the working directory,
        // which is the test process's scratch directory (scratch_dir.cpp).
        {"kvn_upload_file",
         [](Args& a) {
             if (std::FILE* f = std::fopen("kvn_export_upload.bin", "wb")) std::fclose(f);
             a.at<kvn_file_transfer_request>(1)->local_path = "kvn_export_upload.bin";
         }},
        {"kvn_download_file",
         [](Args& a) { a.at<kvn_file_transfer_request>(1)->local_path = "kvn_export_download.bin"; }},
        // @@CARDS@@
    };
    const auto it = setups.find(name);
    return it != setups.end() ? it->second : nullptr;
}

inline const std::vector<ExportCall>& export_calls() {
    static const std::vector<ExportCall> calls = {
#include "export_calls.inc"
    };
    return calls;
}

}  // namespace kvntest
