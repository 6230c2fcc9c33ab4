/* Opens a connection to a terminal, prints the library version and the
 * terminal's answer to a date-and-time query as a status message.
 *
 *   hello_terminal [ip] [port]     (default 127.0.0.1 5005)
 */
#include <stdio.h>
#include <stdlib.h>

#include "kvnsdk2.h"

int main(int argc, char **argv) {
    kvn_device_conn conn = {0};
    char text[KVN_STATUS_TEXT_MAX + 16];
    uint8_t payload[1024];
    uint32_t length = sizeof payload;
    const uint32_t get = KVN_REQUEST_WORD(KVN_REQ_GET);
    int32_t rc;

    conn.ip_address = argc > 1 ? argv[1] : "127.0.0.1";
    conn.port = (uint16_t)(argc > 2 ? atoi(argv[2]) : 5005);
    conn.link.conn_type = KVN_CONN_TCP;

    printf("kvnsdk2 %s\n", kvn_get_sdk2_version());
    rc = kvn_open_device_conn(&conn);
    kvn_utils_get_status_code_string(rc, text);
    printf("connect %s:%u: %s\n", conn.ip_address, (unsigned)conn.port, text);
    if (rc == 0) {
        rc = kvn_send_command(&conn, &get, 126, NULL, 0);
        if (rc == 0) rc = kvn_receive_response(&conn, payload, &length);
        kvn_utils_get_status_code_string(rc, text);
        printf("date and time query: %s (%u payload bytes)\n", text, rc == 0 ? (unsigned)length : 0u);
    }
    kvn_close_device_conn(&conn);
    return rc == 0 ? 0 : 1;
}
