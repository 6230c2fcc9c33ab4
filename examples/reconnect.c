/* Recovering after a dropped connection: asks the terminal for the number of its
 * journal entries every half second. When the link fails, it says why (the status
 * and the system's error behind it), closes the connection and opens it again,
 * waiting longer after each failed attempt: 250 ms, doubling up to 8 s. It gives up
 * when the terminal has been gone for a minute.
 *
 *   reconnect ADDRESS [ROUNDS]      ADDRESS is IP[:PORT]; ROUNDS questions, default 20
 */
#include "example.h"

#define FIRST_WAIT_MS 250
#define LONGEST_WAIT_MS 8000
#define GIVE_UP_MS 60000

/* Statuses after which the connection is of no further use: the link failed, or the
 * byte stream is out of step. The terminal's own statuses (-1001 and below) come over
 * a working link; asking again over a new one would get the same answer. */
static int link_failed(int32_t rc) {
    return rc == KVN_E_CONNECTION_FAILED || rc == KVN_E_READ_TIMEOUT || rc == KVN_E_WRITE_TIMEOUT ||
           rc == KVN_E_CRC_MISMATCH || rc == KVN_E_INVALID_SYNC_WORD;
}

/* Prints a failed call's status with the system's error behind it. Call it right
 * after the failure: the next transport call (a close too) records its own error. */
static void report(const char *what, int32_t rc) {
    char why[128];
    kvn_ext_last_os_error_text(why, sizeof why);
    printf("%s: %s (system error %d: %s)\n", what, status_text(rc), (int)kvn_ext_last_os_error(), why);
}

/* Closes the connection and opens it again, with growing waits between attempts. */
static int32_t reconnect(kvn_device_conn *conn) {
    unsigned wait_ms = FIRST_WAIT_MS, waited_ms = 0;
    for (;;) {
        int32_t rc;
        kvn_close_device_conn(conn); /* after a failed open too */
        rc = kvn_open_device_conn(conn);
        if (rc == 0) {
            printf("reconnected\n");
            return 0;
        }
        report("  reconnect", rc);
        if (waited_ms >= GIVE_UP_MS) return rc;
        printf("  next attempt in %u ms\n", wait_ms);
        pause_ms(wait_ms);
        waited_ms += wait_ms;
        wait_ms = wait_ms * 2 < LONGEST_WAIT_MS ? wait_ms * 2 : LONGEST_WAIT_MS;
    }
}

int main(int argc, char **argv) {
    kvn_device_conn conn;
    char host[EXAMPLE_HOST_MAX];
    int rounds, round = 1;
    int32_t rc;

    if (argc < 2 || argc > 3 || parse_address(argv[1], host, &conn) != 0) {
        fprintf(stderr, "usage: reconnect IP[:PORT] [ROUNDS]\n");
        return 2;
    }
    rounds = argc > 2 ? atoi(argv[2]) : 20;
    /* Notice a silent terminal after 5 s instead of the default 120 s read wait, and
     * do not wait longer than 3 s for a connect. */
    kvn_ext_set_timeouts(5000, 5000, 3000);

    rc = connect_terminal(&conn);
    if (rc != 0) {
        report("connect", rc);
        rc = reconnect(&conn);
    }
    while (rc == 0 && round <= rounds) {
        uint32_t count = 0;
        rc = kvn_get_transaction_log_total_count(&conn, &count);
        if (rc == 0) {
            printf("%d: %u journal entries\n", round++, (unsigned)count);
            pause_ms(500);
        } else if (link_failed(rc)) {
            report("connection lost", rc);
            rc = reconnect(&conn); /* then the same question again */
        }
    }
    if (rc != 0) printf("giving up: %s\n", status_text(rc));
    kvn_close_device_conn(&conn);
    return rc == 0 ? 0 : 1;
}
