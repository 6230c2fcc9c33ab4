/* The public header as a consumer compiles it, under #pragma pack(1): built as C99
 * with -pedantic-errors and, from a copy, as C++ with -Wall -Wextra -Werror (see
 * tests/CMakeLists.txt). The header's own size checks stop the build if the packing
 * reached its records; the values below let a test compare this view with the
 * library's, and show that the includer's packing is in force again afterwards. */
#include <stddef.h>
#include <string.h>

#pragma pack(push, 1)
#include "kvnsdk2.h"
struct kvn_check_after {
    char c;
    uint32_t u;
};
#pragma pack(pop)

#ifdef __cplusplus
#define KVN_CHECK_LAYOUT kvn_check_layout_cxx
extern "C" {
#else
#define KVN_CHECK_LAYOUT kvn_check_layout_c
#endif

size_t KVN_CHECK_LAYOUT(size_t *out, size_t capacity);

/* Sizes and offsets of the connection records, then the size of the includer's
 * packed record, then 1 when a call through the declarations reached the library. */
size_t KVN_CHECK_LAYOUT(size_t *out, size_t capacity) {
    const size_t v[] = {
        sizeof(kvn_conn_link), offsetof(kvn_conn_link, socket), offsetof(kvn_conn_link, reserved),
        offsetof(kvn_conn_link, serial_handle), sizeof(kvn_device_conn), offsetof(kvn_device_conn, ip_address),
        offsetof(kvn_device_conn, port), offsetof(kvn_device_conn, serial_port), offsetof(kvn_device_conn, baud_rate),
        offsetof(kvn_device_conn, reserved), offsetof(kvn_device_conn, link), sizeof(struct kvn_check_after),
        (size_t)(kvn_get_sdk2_version()[0] == '1')};
    size_t n = sizeof v / sizeof v[0];
    if (n > capacity) n = capacity;
    memcpy(out, v, n * sizeof v[0]);
    return n;
}

#ifdef __cplusplus
}
#endif
