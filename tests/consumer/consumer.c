/* A program using the installed library: the version, a connection that is refused
 * (nothing listens on loopback port 1) with its status text and the system's cause. */
#include <stdio.h>
#include <string.h>

#include "kvnsdk2.h"

int main(void) {
    kvn_device_conn conn;
    char text[KVN_STATUS_TEXT_MAX];
    char cause[128];
    int32_t rc, os_error;
    memset(&conn, 0, sizeof conn);
    conn.ip_address = "127.0.0.1";
    conn.port = 1;
    conn.link.conn_type = KVN_CONN_TCP;
    rc = kvn_open_device_conn(&conn);
    os_error = kvn_ext_last_os_error();
    kvn_ext_last_os_error_text(cause, sizeof cause);
    kvn_utils_get_status_code_string(rc, text);
    kvn_close_device_conn(&conn);
    printf("kvnsdk2 %s: %s (%d: %s)\n", kvn_get_sdk2_version(), text, (int)os_error, cause);
    return strcmp(kvn_get_sdk2_version(), "1.4.0.0") == 0 && rc == KVN_E_CONNECTION_FAILED && os_error != 0 ? 0 : 1;
}
