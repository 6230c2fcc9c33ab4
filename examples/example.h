/* What every example program needs besides the library: a terminal's address from
 * the command line, a connection opened with a line saying how it went, a status
 * code as its message, and a pause. Usable from C and C++.
 *
 * Exit codes of the examples: 0 done, 1 failed (the reason is printed), 2 wrong
 * arguments, 130 cancelled with Ctrl-C.
 */
#ifndef KVN_EXAMPLE_H
#define KVN_EXAMPLE_H

/* Include this first: it asks for the POSIX declarations (nanosleep) it uses. */
#if !defined(_WIN32) && !defined(_POSIX_C_SOURCE)
#define _POSIX_C_SOURCE 200809L
#endif

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#ifdef _WIN32
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#else
#include <time.h>
#endif

#include "kvnsdk2.h"

/** Port of a terminal address given without one. */
#define EXAMPLE_DEFAULT_PORT 5005
/** Bytes of the buffer that keeps the IP text of an address. */
#define EXAMPLE_HOST_MAX 64

/* Fills a TCP connection record from "IP" or "IP:PORT". host keeps the IP text
 * (conn->ip_address points to it) and must outlive the connection. Returns 0, or
 * -1 when the text is no such address. */
static inline int parse_address(const char *text, char host[EXAMPLE_HOST_MAX], kvn_device_conn *conn) {
    const char *colon = strchr(text, ':');
    size_t length = colon ? (size_t)(colon - text) : strlen(text);
    long port = colon ? strtol(colon + 1, NULL, 10) : EXAMPLE_DEFAULT_PORT;
    uint32_t ignored;
    if (length == 0 || length >= EXAMPLE_HOST_MAX || port < 1 || port > 65535) return -1;
    memcpy(host, text, length);
    host[length] = '\0';
    if (kvn_convert_ip_string_to_int(host, &ignored) != 0) return -1;
    memset(conn, 0, sizeof *conn);
    conn->ip_address = host;
    conn->port = (uint16_t)port;
    conn->link.conn_type = KVN_CONN_TCP;
    return 0;
}

/* The message of a status code. The text lives in a static buffer: use it before
 * asking for the next one. */
static inline const char *status_text(int32_t code) {
    static char text[KVN_STATUS_TEXT_MAX];
    kvn_utils_get_status_code_string(code, text);
    return text;
}

/* Opens the connection and prints how it went: "connect 10.0.0.5:5005: Success". */
static inline int32_t connect_terminal(kvn_device_conn *conn) {
    int32_t rc = kvn_open_device_conn(conn);
    printf("connect %s:%u: %s\n", conn->ip_address, (unsigned)conn->port, status_text(rc));
    return rc;
}

/* Waits the given number of milliseconds. */
static inline void pause_ms(unsigned ms) {
#ifdef _WIN32
    Sleep(ms);
#else
    struct timespec wait;
    wait.tv_sec = (time_t)(ms / 1000);
    wait.tv_nsec = (long)(ms % 1000) * 1000000L;
    nanosleep(&wait, NULL);
#endif
}

#endif
