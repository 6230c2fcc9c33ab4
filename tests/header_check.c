/* The public header compiles as C, and the records have the sizes tools rely on. */
#include "kvnsdk2.h"

int kvn_test_header_from_c(void) {
    kvn_device_conn conn = {0};
    conn.link.conn_type = KVN_CONN_TCP;
    return (int)sizeof(conn) + (kvn_get_sdk2_version()[0] == '1' ? 0 : 1000) + KVN_E_INVALID_SYNC_WORD * 0;
}
