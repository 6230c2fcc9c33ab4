/* Firmware upgrade: sends a firmware package to the terminal with progress, which
 * Ctrl-C cancels, then asks the terminal to install it.
 *
 *   firmware_upgrade ADDRESS PACKAGE        ADDRESS is IP[:PORT]
 *
 * A cancelled or failed transfer is never installed: the install request goes out
 * only after every packet has arrived.
 */
#include "example.h"

#include <signal.h>

#define FIRMWARE_FILE 1 /* file type of a firmware package */
#define CANCELLED 1     /* the progress callback's "stop"; statuses are 0 or negative */

static volatile sig_atomic_t interrupted;

static void on_interrupt(int signal_number) {
    (void)signal_number;
    interrupted = 1;
}

/* Called after the start answer and after every packet: prints each further tenth
 * of the transfer and says whether to go on. */
static int32_t show_progress(const kvn_ext_transfer_progress *p, void *context) {
    unsigned *next_percent = (unsigned *)context;
    unsigned percent = p->bytes_total ? (unsigned)(p->bytes_done * 100 / p->bytes_total) : 100;
    if (percent >= *next_percent) {
        printf("  %3u%%  %llu of %llu bytes, packet %u of %u\n", percent, (unsigned long long)p->bytes_done,
               (unsigned long long)p->bytes_total, (unsigned)p->packets_done, (unsigned)p->packets_total);
        fflush(stdout);
        *next_percent = percent / 10 * 10 + 10;
    }
    return interrupted ? CANCELLED : 0;
}

int main(int argc, char **argv) {
    kvn_device_conn conn;
    char host[EXAMPLE_HOST_MAX];
    kvn_file_transfer_request package;
    const char *name;
    unsigned next_percent = 0;
    int32_t rc;

    memset(&package, 0, sizeof package);
    if (argc != 3 || parse_address(argv[1], host, &conn) != 0) {
        fprintf(stderr, "usage: firmware_upgrade IP[:PORT] PACKAGE\n");
        return 2;
    }
    /* The name on the terminal is the file's own name, without its directories. */
    for (name = argv[2] + strlen(argv[2]); name > argv[2] && name[-1] != '/' && name[-1] != '\\'; --name) {
    }
    package.file_type = FIRMWARE_FILE;
    package.local_path = argv[2];
    strncpy(package.file_name, name, sizeof package.file_name - 1);
    signal(SIGINT, on_interrupt);

    rc = connect_terminal(&conn);
    if (rc == 0) {
        printf("sending %s (Ctrl-C cancels)\n", package.file_name);
        rc = kvn_ext_upload_file(&conn, &package, show_progress, &next_percent);
        if (rc == CANCELLED) printf("cancelled: nothing will be installed\n");
        else printf("transfer: %s\n", status_text(rc));
    }
    if (rc == 0) {
        /* The terminal installs the package it holds; it may restart to do so. */
        rc = kvn_upgrade_firware(&conn);
        printf("install: %s\n", status_text(rc));
    }
    kvn_close_device_conn(&conn);
    return rc == 0 ? 0 : rc == CANCELLED ? 130 : 1;
}
