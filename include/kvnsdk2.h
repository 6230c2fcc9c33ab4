/*
 * kvnsdk2 - client library for networked biometric access-control terminals.
 *
 * One header for C and C++. Every function returns a status code (KVN_SUCCESS,
 * or a negative KVN_E_* value; kvn_utils_get_status_code_string() gives its text).
 * Records are plain fixed-size structures owned by the caller; the library keeps
 * nothing between calls and never allocates memory that the caller must free.
 *
 * Threads: calls on different connections may run on different threads at the
 * same time. Calls on one connection must not overlap: each response is read as
 * the answer to the last request sent on that connection.
 */
/**
 * @file kvnsdk2.h
 * @brief The kvnsdk2 C interface: link, frames, TLV codec, status codes, command families.
 *
 * Each command function is one exchange with the terminal: it encodes the caller's
 * record, sends one request frame, reads the answer and decodes it into the record.
 * Its comment names the request it sends, as in "Request: get (0x00020002), command 104".
 *
 * The reference is arranged by what the functions do, one group each: @ref link,
 * @ref settings, @ref network, @ref users, @ref logs, @ref files, @ref schedules,
 * @ref cards, @ref wiegand and the library's own @ref extensions.
 *
 * @section kvn_status_codes Status codes of the command functions
 *
 * - 0: success. A set whose answer carries a payload also returns 0.
 * - -1 ("TLV buffer overflow"): a record too large for the request (nothing is sent), an
 *   answer at least as long as the function's buffer, or a malformed answer.
 * - -2, -3: read or write failure or timeout; -6: CRC mismatch; -12: the answer does not
 *   start with the sync word. The link may then hold unread bytes: close and reopen it.
 *   A function's comment says this with one line, \@kvn_link_errors (docs/Doxyfile.in).
 * - any other value is the terminal's status for the request, returned unchanged.
 *
 * Given a null connection they return -3, given a null record -1, sending nothing. A failed
 * read leaves the record as it was, except for fields decoded before a malformed element.
 * Reads store only the fields the answer carries; a text takes at most the field's size
 * and no NUL is added, so clear a record before reading into it.
 */
/**
 * @defgroup link Link
 * @brief The connection to a terminal, its frames and TLV payloads, and the status codes.
 *
 * Everything beneath the commands, shared by every family. A kvn_device_conn record names
 * a terminal by TCP address or serial port; kvn_open_device_conn() opens the link and
 * kvn_close_device_conn() closes it. A command is one request frame sent by
 * kvn_send_command() and one answer read by kvn_receive_response(); their payloads are
 * tag-length-value elements, written with kvn_create_tlv() and its kin and read with
 * kvn_serch_tlv_tag() and kvn_read_tlv_length(). Every function returns a status code,
 * named by enum kvn_status and put into words by kvn_utils_get_status_code_string(); the
 * address converters and the library's version complete the group.
 */
/**
 * @defgroup settings Settings
 * @brief How the terminal behaves: indication, biometrics, sensors and alarms, door, I/O, attendance, VoIP.
 *
 * Each settings group is written by a set function, read by a get function and returned
 * to the terminal's defaults by a reset function: LEDs, buzzer, audio and LCD, with audio
 * played and images shown on request (kvn_play_audio(), kvn_display_image()); device
 * notification; biometric and multi-user verification; the fingerprint, proximity and
 * next sensors, the anti-shock and fire alarms; the door relay and DAC, with the door
 * opened and closed on request (kvn_open_door_for_time(), kvn_close_door()); the
 * specific-purpose inputs and outputs; time attendance and job codes; VoIP and its
 * contacts. Network and device management are under @ref network, week, holiday and
 * access schedules under @ref schedules.
 */
/**
 * @defgroup network Network
 * @brief The terminal's network and its management as a device: ports, Wi-Fi, SSL, VPN, certificates, time, reboot.
 *
 * The wired network, serial port and USB auxiliary port settings; the device and product
 * information, debug log, device security, date and time, status and VNC setting, with
 * reboots and the factory default; the SSL setting and its certificates, system
 * notifications, Wi-Fi (status, scan, join and leave, network information), Ethernet
 * security, and the VPN profile and status with the user, CA and uploaded certificates.
 * Addresses are dotted-quad texts in the records and numbers on the wire, converted as
 * kvn_convert_ip_string_to_int() does.
 */
/**
 * @defgroup users Users
 * @brief The people the terminal knows: user records and templates, enrolment, identification, verification, user groups.
 *
 * A kvn_user_record holds a user, keyed by its user_id, with up to KVN_USER_TEMPLATE_COUNT
 * biometric templates. kvn_store_user_record(), kvn_get_user_record() and
 * kvn_delete_user_record() keep users on the terminal, beside the user and template counts
 * and the upkeep of one finger's template. kvn_enrollment() has the terminal capture a
 * finger for a user; identification finds whose finger, template or sample it is, and
 * verification checks a finger against a template, a stored user or a user record sent
 * along. User groups and the users' display-image setting complete the group; a user
 * record written to a smart card is under @ref cards, the users' CSV export and import
 * under @ref files.
 */
/**
 * @defgroup logs Logs
 * @brief The terminal's transaction journal: counts, pages of entries, marks, deletion.
 *
 * Each event the terminal records is a kvn_transaction_log entry with an id of its own.
 * The journal is counted and read as a whole, by date, by criteria or by what is not yet
 * marked as read, at most KVN_TRANSACTION_LOG_MAX entries a read; the library does not
 * page by itself. A host that copies the journal marks what it has stored as read
 * (kvn_mark_transaction_logs_as_read()) and asks for the unread entries next time, so
 * that each entry is taken once.
 */
/**
 * @defgroup files Files
 * @brief Files moved to, fetched from and deleted on the terminal; firmware upgrade, backup restore, CSV import and export.
 *
 * A transfer is a start exchange and then one exchange per packet of at most
 * KVN_FILE_PACKET_SIZE bytes, between a local file and a file on the terminal named by a
 * kvn_file_transfer_request (kvn_upload_file(), kvn_download_file(), kvn_delete_file()).
 * Once a package or backup is on the terminal, kvn_upgrade_firware() and
 * kvn_restore_backup_file() ask it to apply it; the CSV functions have it export its users
 * to a file or import them from one. kvn_ext_upload_file() and kvn_ext_download_file()
 * under @ref extensions move files the same way with progress and cancel.
 */
/**
 * @defgroup schedules Schedules
 * @brief When things happen: week schedules of the biometric check and the door, holiday and access schedules.
 *
 * A week schedule (kvn_week_schedule) gives each weekday its slots; the terminal keeps one
 * for the biometric check and one for keeping the door open. Holiday schedules
 * (KVN_HOLIDAY_SCHEDULE_COUNT of them, each of up to KVN_HOLIDAY_COUNT holidays) and access
 * schedules (KVN_ACCESS_SCHEDULE_COUNT, each a week with a name) live in tables that are
 * written whole or one schedule at a time and reset one index at a time; only entries
 * whose enabled field is 1 go out.
 */
/**
 * @defgroup cards Cards
 * @brief The cards the terminal reads: serial numbers, card layouts and keys, the card server, smart cards and revocation.
 *
 * Reading the serial number of the card at the reader; the CSN and PACS settings; the
 * smart-card access keys, MIFARE and HID layouts, DESFire settings and key manipulation
 * flags; the SRL server and the card preference. The smart card presented to the terminal
 * can be secured, formatted, reset, read and written, with raw bytes or a user record
 * (kvn_write_user_record_on_smart_card()); cards are revoked and taken off the revoked
 * list by their identifier.
 */
/**
 * @defgroup wiegand Wiegand
 * @brief The Wiegand ports: formats uploaded, listed and deleted, input, output, pulse and multi-input settings.
 *
 * A kvn_wiegand_format describes a bit layout by its type (0, 1 or 2) and, for type 2, up
 * to KVN_WIEGAND_PARITY_MAX parity definitions of each kind; kvn_upload_wiegand_format()
 * stores it on the terminal and kvn_get_wiegand_format_list() lists what it holds. The
 * input, output and pulse settings configure the ports, and the multi-input setting up to
 * KVN_MULTI_WIEGAND_INPUTS inputs at once.
 */
/**
 * @defgroup extensions Extensions
 * @brief Options and conveniences of this library that are not terminal commands (kvn_ext_*).
 *
 * The waits of TCP and serial reads, writes and connects (kvn_ext_set_timeouts(),
 * kvn_ext_apply_timeouts_to_serial()); the operating system's error behind the last
 * transport call of a thread, which tells apart the many causes of -5, -2 and -3
 * (kvn_ext_last_os_error()); where the library's diagnostic lines go
 * (kvn_ext_set_diagnostic_sink()); and file transfers that report progress and can be
 * cancelled (kvn_ext_upload_file(), kvn_ext_download_file()). The options are
 * process-wide: set them before opening connections.
 */
#ifndef KVNSDK2_H
#define KVNSDK2_H

#include <stddef.h>
#include <stdint.h>
#include <wchar.h>

/*
 * Export and calling convention, stated once: every kvn_ function and the callback
 * type below use the C calling convention (__cdecl on Windows, whatever a program's
 * own default is, for example under /Gz; the platform's only convention on Linux
 * x86-64 and Windows x64). On Windows, KVN_STATIC selects the static library
 * (libkvnsdk2_static.a); without it the functions come from kvnsdk2.dll.
 */
#if defined(_WIN32) || defined(__CYGWIN__)
#  define KVN_CALL __cdecl
#  if defined(KVN_STATIC)
#    define KVN_API KVN_CALL
#  elif defined(KVN_BUILDING_LIBRARY)
#    define KVN_API __declspec(dllexport) KVN_CALL
#  else
#    define KVN_API __declspec(dllimport) KVN_CALL
#  endif
#else
#  define KVN_CALL
#  if defined(KVN_BUILDING_LIBRARY)
#    define KVN_API __attribute__((visibility("default")))
#  else
#    define KVN_API
#  endif
#endif

/*
 * Record layouts. The records below have the library's layout in every program that
 * includes this header: natural alignment, whatever #pragma pack (or /Zp) is in
 * effect where it is included, and KVN_RECORD_SIZE checks each record's size at
 * compile time on the two pinned targets:
 *   lp64   Linux x86-64 (and the other LP64 targets: Linux AArch64, macOS)
 *   win64  Windows x64 (mingw-w64 and MSVC)
 * The two differ only in the connection records, whose socket and handle are
 * pointer-sized on Windows. Other targets are not checked. Each record is followed
 * by one line: KVN_RECORD_SIZE(type, lp64 size, win64 size);
 */
#if defined(_WIN64)
#  define KVN_RECORD_SIZE_PINNED_(lp64, win64) (win64)
#elif defined(__LP64__) || defined(_LP64)
#  define KVN_RECORD_SIZE_PINNED_(lp64, win64) (lp64)
#else
#  define KVN_RECORD_SIZE_PINNED_(lp64, win64) 0 /* not pinned here */
#endif
#define KVN_RECORD_SIZE_OK_(type, lp64, win64) \
    (KVN_RECORD_SIZE_PINNED_(lp64, win64) == 0 || sizeof(type) == KVN_RECORD_SIZE_PINNED_(lp64, win64))
#if defined(__cplusplus) && (__cplusplus >= 201103L || (defined(_MSC_VER) && _MSC_VER >= 1600))
#  define KVN_RECORD_SIZE(type, lp64, win64) \
    static_assert(KVN_RECORD_SIZE_OK_(type, lp64, win64), "kvnsdk2.h: unexpected layout of " #type)
#elif !defined(__cplusplus) && defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L
#  define KVN_RECORD_SIZE(type, lp64, win64) \
    _Static_assert(KVN_RECORD_SIZE_OK_(type, lp64, win64), "kvnsdk2.h: unexpected layout of " #type)
#else /* C99, C++98: an array of negative size when the check fails */
#  define KVN_RECORD_SIZE(type, lp64, win64) \
    typedef char kvn_record_size_check_##type[KVN_RECORD_SIZE_OK_(type, lp64, win64) ? 1 : -1]
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* The library's packing, whatever the includer has in effect; restored at the end. */
#pragma pack(push, 8)

/* ------------------------------------------------------------------------- */
/* Connection                                                                */
/* ------------------------------------------------------------------------- */

/** @addtogroup link
 * @{ */

#if defined(_WIN32)
typedef uintptr_t kvn_socket_t; /* SOCKET */
typedef void *kvn_handle_t;     /* HANDLE */
#else
typedef int kvn_socket_t;       /* file descriptor */
typedef int kvn_handle_t;       /* file descriptor */
#endif

/* conn_type values: 0 is a serial line, any other value is TCP. */
/** conn_type of a serial line. */
#define KVN_CONN_SERIAL 0u
/** conn_type of a TCP connection (any value other than 0 selects TCP). */
#define KVN_CONN_TCP 1u

/** Transport block, filled by kvn_open_device_conn(): file descriptors on POSIX, a
 * SOCKET and a HANDLE on Windows. The open stores one in every case (-1 or
 * INVALID_HANDLE_VALUE when nothing stayed open), so closing after a failed open is
 * safe. A record that never went through kvn_open_device_conn() must not be closed:
 * zero-filled, it holds descriptor 0 on POSIX, and closing it would close the
 * process's standard input.
 * Layout: Linux x86-64 16 bytes (socket at 4, serial_handle at 12); Windows x64
 * 32 bytes (socket at 8, serial_handle at 24). */
typedef struct kvn_conn_link {
    /** KVN_CONN_SERIAL or KVN_CONN_TCP, set by the caller. */
    uint32_t conn_type;
    /** TCP socket (a file descriptor; a SOCKET on Windows), set by kvn_open_device_conn(). */
    kvn_socket_t socket;
    /** Neither read nor written. */
    uint32_t reserved;
    /** Serial port (a file descriptor; a HANDLE on Windows), set by kvn_open_device_conn(). */
    kvn_handle_t serial_handle;
} kvn_conn_link;
KVN_RECORD_SIZE(kvn_conn_link, 16, 32);

/** The caller's connection record. Layout: ip_address at 8, port at 16, serial_port at
 * 24, baud_rate at 32; link at 44 of 64 bytes on Linux x86-64, at 48 of 80 on Windows x64. */
typedef struct kvn_device_conn {
    uint32_t header_id;          /* copied into word 1 of every request frame */
    const char *ip_address;      /* dotted IPv4 text, TCP */
    uint16_t port;               /* TCP port, host byte order */
    const wchar_t *serial_port;  /* device name, serial (for example L"/dev/ttyUSB0" or L"\\\\.\\COM3") */
    uint32_t baud_rate;          /* serial line speed in bits per second */
    /** Neither read nor written. */
    uint32_t reserved[2];
    /** Transport block, filled by kvn_open_device_conn(). */
    kvn_conn_link link;
} kvn_device_conn;
KVN_RECORD_SIZE(kvn_device_conn, 64, 80);

/**
 * Opens the TCP connection or the serial line (raw, 8N1) that @p conn describes. Close
 * the record with kvn_close_device_conn() afterwards, also after a failed open.
 * @param[in,out] conn  connection record; its link block receives the socket or handle.
 * @par Request: none (opens the link).
 * @return 0 on success, or:
 * @retval -5 the terminal cannot be reached, or the serial port cannot be opened or queried.
 * @retval -3 the serial port refuses its settings (for example an unsupported baud rate).
 */
KVN_API int32_t kvn_open_device_conn(kvn_device_conn *conn);

/**
 * Closes the link of @p conn. The socket or handle stays in the record: close once.
 * @param[in] conn  connection record.
 * @par Request: none (closes the link).
 * @retval 0 closed; a serial line always reports 0.
 * @retval -1 the socket could not be closed, or @p conn is null.
 */
KVN_API int32_t kvn_close_device_conn(kvn_device_conn *conn);

/* Raw byte movers; pass &conn->link, not the whole record. */
/**
 * Writes @p count bytes to the link, all of them or fails.
 * @param[in] link   &conn->link of an open connection.
 * @param[in] data   the bytes.
 * @param[in] count  number of bytes; 0 returns at once.
 * @par Request: none (raw bytes, no frame).
 * @retval 0 all bytes written.
 * @retval -3 write failure, or no progress within the TCP write wait (kvn_ext_set_timeouts()).
 */
KVN_API int32_t kvn_send_data(kvn_conn_link *link, const uint8_t *data, uint32_t count);

/**
 * Reads exactly @p count bytes from the link.
 * @param[in] link     &conn->link of an open connection.
 * @param[out] buffer  receives the bytes; after a failure it holds those that arrived.
 * @param[in] count    number of bytes; 0 returns at once.
 * @par Request: none (raw bytes, no frame).
 * @retval 0 all bytes read.
 * @retval -2 read failure, the peer closed, or no data within the TCP read wait.
 */
KVN_API int32_t kvn_receive_data(kvn_conn_link *link, uint8_t *buffer, uint32_t count);

/* ------------------------------------------------------------------------- */
/* Frames                                                                    */
/* ------------------------------------------------------------------------- */

/** First word of every frame; it travels as the bytes DD CC BB AA. */
#define KVN_SYNC_WORD 0xAABBCCDDu
/** Request type: write a settings group, or an action that carries a payload. */
#define KVN_REQ_SET 1u
/** Request type: read a settings group, or run a query. */
#define KVN_REQ_GET 2u
/** Request type: reset a settings group to its defaults, delete, reboot. */
#define KVN_REQ_RESET 3u
/** Request type: send a file to the terminal. */
#define KVN_REQ_UPLOAD 4u
/** Request type: fetch a file from the terminal. */
#define KVN_REQ_DOWNLOAD 5u
/* Request word: request type in the high 16 bits, 2 in the low 16 bits. */
/** Request word of a request type: KVN_REQUEST_WORD(KVN_REQ_GET) is 0x00020002. */
#define KVN_REQUEST_WORD(type) ((uint32_t)(((uint32_t)(type) << 16) | 2u))
/* Largest request payload that fits one request frame. */
/** Largest payload kvn_send_command() sends, in bytes. */
#define KVN_MAX_REQUEST_PAYLOAD 511972u

/**
 * Sends one request frame (header, payload, CRC-32) in one write; read the answer with
 * kvn_receive_response() before anything else is sent.
 * @param[in] conn            open connection; its header_id goes into the header.
 * @param[in] request_word    KVN_REQUEST_WORD() of the request type.
 * @param[in] command_id      command id.
 * @param[in] payload         TLV payload, or NULL.
 * @param[in] payload_length  payload bytes, at most KVN_MAX_REQUEST_PAYLOAD.
 * @par Request: the given request word and command id.
 * @retval 0 sent.
 * @retval -1 payload longer than KVN_MAX_REQUEST_PAYLOAD; nothing is sent.
 * @retval -3 write failure or timeout.
 */
KVN_API int32_t kvn_send_command(kvn_device_conn *conn, const uint32_t *request_word, uint32_t command_id,
                                 const uint8_t *payload, uint32_t payload_length);

/* *length holds the buffer's capacity on entry and the received payload length on return.
 * A payload as long as the capacity or longer is refused with -1 (one byte always stays spare). */
/**
 * Reads the answer to the last request and checks its sync word and CRC.
 * @param[in] conn        open connection.
 * @param[out] buffer     receives the payload.
 * @param[in,out] length  capacity of @p buffer on entry, payload length on return.
 * @par Request: none (reads the answer to the request just sent).
 * @return 0 when the answer carries a payload; without one, the terminal's status,
 *         returned unchanged (it may be any value); or:
 * @retval -1 payload of @p length bytes or more: it stays unread and @p length unchanged.
 * @retval -2 read failure or timeout.
 * @retval -6 CRC mismatch, after the whole frame was read.
 * @retval -12 the answer does not start with the sync word; the rest stays unread.
 */
KVN_API int32_t kvn_receive_response(kvn_device_conn *conn, uint8_t *buffer, uint32_t *length);

/**
 * Sends a reset request without payload and reads the answer; its payload is discarded.
 * @param[in] conn        open connection.
 * @param[in] command_id  command id of the settings group.
 * @par Request: reset (0x00030002), the given command id.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_send_reset_command(kvn_device_conn *conn, uint32_t command_id);

/* CRC-32 of a 20-byte request header (words 1 to 4 and the payload length). */
/**
 * CRC-32 (IEEE 802.3, as in zlib) of frame bytes 4 to 23 of a request. For a request
 * without payload it is the frame's CRC.
 * @param[in] header20  header words 1 to 4 and the payload length, little-endian.
 * @par Request: none (a computation).
 * @return the CRC; 0 for a null pointer.
 */
KVN_API uint32_t kvn_calculate_req_header_crc(const uint8_t *header20);

/* ------------------------------------------------------------------------- */
/* TLV primitives: each takes a cursor and a remaining count and moves both.  */
/* ------------------------------------------------------------------------- */

/**
 * Writes one tag byte.
 * @param[in] tag            the tag; 0xFF is never a valid tag.
 * @param[in,out] cursor     write position, advanced past what is written.
 * @param[in,out] remaining  bytes left in the buffer, lowered by the same count.
 * @par Request: none (works on the caller's buffer).
 * @retval 0 written.
 * @retval -1 no byte left.
 */
KVN_API int32_t kvn_set_tlv_tag(uint8_t tag, uint8_t **cursor, uint32_t *remaining);

/**
 * Writes a length in its shortest form: one byte below 128, else 0x81, 0x82 or 0x84
 * followed by 1, 2 or 4 big-endian bytes.
 * @param[in] length         the value's length.
 * @param[in,out] cursor     write position, advanced past what is written.
 * @param[in,out] remaining  bytes left in the buffer, lowered by the same count.
 * @par Request: none (works on the caller's buffer).
 * @retval 0 written.
 * @retval -1 the form does not fit; nothing is written.
 */
KVN_API int32_t kvn_set_tlv_length(uint32_t length, uint8_t **cursor, uint32_t *remaining);

/**
 * Writes a length in the five-byte form (0x84 and four big-endian bytes), whatever its value.
 * @param[in] length         the value's length.
 * @param[in,out] cursor     write position, advanced past what is written.
 * @param[in,out] remaining  bytes left in the buffer, lowered by the same count.
 * @par Request: none (works on the caller's buffer).
 * @retval 0 written.
 * @retval -1 fewer than 5 bytes left; nothing is written.
 */
KVN_API int32_t kvn_set_tlv_4byte_length(uint32_t length, uint8_t **cursor, uint32_t *remaining);

/**
 * Copies a value as it is.
 * @param[in] value          the bytes; may be NULL when @p length is 0.
 * @param[in] length         number of bytes.
 * @param[in,out] cursor     write position, advanced past what is written.
 * @param[in,out] remaining  bytes left in the buffer, lowered by the same count.
 * @par Request: none (works on the caller's buffer).
 * @retval 0 written.
 * @retval -1 fewer than @p length bytes left; nothing is written.
 */
KVN_API int32_t kvn_set_tlv_data(const void *value, uint32_t length, uint8_t **cursor, uint32_t *remaining);

/* Returns 0, -1, or 65535 when the length form does not fit (tag stays written). */
/**
 * Writes one element: tag, length in its shortest form, value.
 * @param[in] tag            the tag.
 * @param[in] value          the value's bytes.
 * @param[in] length         number of value bytes.
 * @param[in,out] cursor     write position, advanced past what is written.
 * @param[in,out] remaining  bytes left in the buffer, lowered by the same count.
 * @par Request: none (works on the caller's buffer).
 * @retval 0 written.
 * @retval -1 no byte left, or the value does not fit (tag and length stay written).
 * @retval 65535 the length does not fit (the tag stays written).
 */
KVN_API int32_t kvn_create_tlv(uint8_t tag, const void *value, uint32_t length, uint8_t **cursor, uint32_t *remaining);

/**
 * Moves the cursor past @p count bytes.
 * @param[in] count          number of bytes.
 * @param[in,out] cursor     position, advanced by @p count.
 * @param[in,out] remaining  bytes left, lowered by @p count.
 * @par Request: none (works on the caller's buffer).
 * @retval 0 moved.
 * @retval -1 fewer than @p count bytes left; nothing moves.
 */
KVN_API int32_t kvn_skip_tlv_length(uint32_t count, uint8_t **cursor, uint32_t *remaining);

/**
 * Reads a length: a first byte below 0x80 is the length, else its low four bits count
 * the big-endian bytes that follow (a count of 0: length 0).
 * @param[in,out] cursor     read position, advanced past what is read.
 * @param[in,out] remaining  unread bytes, lowered by the same count.
 * @par Request: none (works on the caller's buffer).
 * @return the length (a four-byte length of 0x80000000 or more comes back negative), or:
 * @retval -1 the input runs out.
 */
KVN_API int32_t kvn_read_tlv_length(uint8_t **cursor, uint32_t *remaining);

/**
 * Reads one tag byte.
 * @param[in,out] cursor     read position, advanced past what is read.
 * @param[in,out] remaining  unread bytes, lowered by the same count.
 * @par Request: none (works on the caller's buffer).
 * @return the tag as a signed 8-bit value (tags 0x80 to 0xFF come back negative), or:
 * @retval -1 nothing left to read (the same value as tag 0xFF).
 */
KVN_API int32_t kvn_read_tlv_tag(uint8_t **cursor, uint32_t *remaining);

/* On a match the cursor is left on the value and *remaining counts the bytes after it. */
/**
 * Finds the first element whose tag is @p tag. On a match the cursor is on its value and
 * @p remaining counts the bytes after the value; advance the cursor by the length yourself.
 * @param[in,out] cursor     read position.
 * @param[in,out] remaining  unread bytes.
 * @param[in] tag            the tag to find; tags 0x80 to 0xFE never match.
 * @par Request: none (works on the caller's buffer).
 * @return the value's length, or:
 * @retval -1 not found, or the input ends or turns malformed first.
 */
KVN_API int32_t kvn_serch_tlv_tag(uint8_t **cursor, uint32_t *remaining, uint8_t tag);

/* ------------------------------------------------------------------------- */
/* Status codes                                                              */
/* ------------------------------------------------------------------------- */

/* Every status code with its message, X(code, NAME, "message"). */
/** Every status code with its message, sorted by code; codes from -1001 down are the terminal's. */
#define KVN_STATUS_LIST(X) \
    X(0, SUCCESS, "Success") \
    X(-1, TLV_BUFFER_OVERFLOW, "TLV buffer overflow") \
    X(-2, READ_TIMEOUT, "Read timeout") \
    X(-3, WRITE_TIMEOUT, "Write timeout") \
    X(-4, SSL_CONTEXT_INIT, "Error in SSL context init") \
    X(-5, CONNECTION_FAILED, "Connection failed") \
    X(-6, CRC_MISMATCH, "CRC mismatch") \
    X(-7, LOADING_CERTIFICATE, "Error while loading certificate") \
    X(-8, LOADING_PRIVATE_KEY, "Error while loading private key") \
    X(-9, PRIVATE_KEY_MISMATCH, "Private key mismatch") \
    X(-10, INVALID_WIEGAND_TYPE, "Invalid wiegand type") \
    X(-11, PARITIES_CREATED_THAN_SUPPORTED, "Parities created than supported") \
    X(-12, INVALID_SYNC_WORD, "Invalid SYNC word") \
    X(-13, OPENING_FILE, "Error while opening file") \
    X(-14, USER_RECORD_STORE, "User Record Store") \
    X(-15, INVALID_IP_ADDRESS, "Invalid IP address") \
    X(-1001, INVALID_TAG_RECEIVED, "Invalid tag received") \
    X(-1002, COMMAND_NOT_FOUND, "Command not found") \
    X(-1003, FAILED_TO_ALLOCATE_MEMORY, "Failed to allocate memory") \
    X(-1004, PAYLOAD_NOT_RECEIVED, "Payload not received") \
    X(-1006, INVALID_DATA_RECEIVED, "Invalid data received") \
    X(-1008, ADD_ALGORITHM_FAILED, "Add algorithm failed error.") \
    X(-1009, INVALID_VALUE_RECEIVED, "Invalid value received") \
    X(-1010, INVALID_LENGTH_RECEIVED, "Invalid length received") \
    X(-1011, INVALID_REQUEST_TYPE, "Invalid request type") \
    X(-1016, MAX_WIEGAND_REACHED, "Maximum wiegand limit reached") \
    X(-1018, DOS_FIRE_ALARM_ACTIVE, "DOS settings cannot be applied as Fire Alarm is Active") \
    X(-1019, NAME_ALREADY_EXIST, "Name already exist") \
    X(-1020, MAX_BIOMETRIC_USER_RECORDS, "Maximum Biometric User Record limit reached") \
    X(-1021, ONLY_ONE_CONTACT_MUST_BE_DEFAULT, "Only One Contact must be default") \
    X(-1022, VOIPID_MUST_BE_UNIQUE, "VoIPID must be unique") \
    X(-1023, JOBCODE_ID_MUST_BE_UNIQUE, "JobCode ID must be unique") \
    X(-1024, DUPLICATE_LANGUAGE, "Duplicate language") \
    X(-1025, LANGUAGE_NOT_SUPPORTED, "Language not supported") \
    X(-1026, ANTI_PASSBACK_RULE_VIOLATION, "Can not set RS232/RS485/Secure Relay Box 1,802,Violation of the Anti-passback Rule") \
    X(-1027, MAXIMUM_VALUE_REACHED, "Maximum Value reached") \
    X(-1028, DUPLICATE_VALUE, "Entred Duplicate Value") \
    X(-1029, WIEGAND_IS_IN_USE, "Wiegand is in use") \
    X(-2001, DEVICE_DATABASE_ERROR, "Device database error") \
    X(-2010, MAX_USERS_REACHED, "Maximum user limit reached in the device database") \
    X(-2012, USERID_ALREADY_EXISTS, "UserID already exists") \
    X(-2015, ERROR_SAVING_BIOMETRIC_RECORD, "Error saving biometric record.") \
    X(-2020, INVALID_USERRECORD_ID, "Invalid UserRecord Id") \
    X(-2021, USER_NOT_FOUND, "User not found") \
    X(-2022, MAX_TRANSACTION_LOGS_REACHED, "Maximum Transaction Log limit reached") \
    X(-2023, LANGUAGE_EXIST_IN_DEVICE_DATABASE, "Language exist in device database") \
    X(-2024, LANGUAGE_NOT_EXIST_IN_DEVICE_DATABASE, "Language not exist in device database") \
    X(-3001, SENSOR_IS_NOT_CONNECTED, "Sensor is not connected") \
    X(-3002, SENSOR_ERROR, "Sensor error") \
    X(-3003, FINGER_CAPTURE_TIMEOUT, "Finger capture timeout") \
    X(-4001, DEVICE_IS_BUSY, "Device is busy") \
    X(-4003, DEVICE_FAILED_TO_OPEN_FILE, "Device failed to open file") \
    X(-4007, DEVICE_FAILED_TO_READ_FILE, "Device failed to read file") \
    X(-4009, DEVICE_FAILED_TO_WRITE_FILE, "Device failed to write file") \
    X(-4014, INVALID_FILE_ID, "Invalid file ID") \
    X(-4015, INVALID_PACKET_ID, "Invalid packet ID") \
    X(-4016, INVALID_PACKET_SIZE, "Invalid packet size") \
    X(-4017, INVALID_FILE_NAME, "Invalid file name") \
    X(-4018, INVALID_FILE_TYPE, "Invalid file type") \
    X(-4019, INVALID_CURRENT_PACKET_ID, "Invalid current packet ID") \
    X(-4023, INVALID_FILE_LENGTH, "Invalid file length") \
    X(-4024, FAILED_TO_REMOVE_FILE, "Failed to remove File") \
    X(-4026, MAX_AUDIO_FILES_REACHED, "Maximum Audio file limit reached") \
    X(-4027, AUDIO_RECORDING_FAILED, "Audio Recording failed") \
    X(-4028, HARDWARE_TEST_OPERATION_FAILED, "Hardware Test Operation failed") \
    X(-4029, INVALID_EMAIL_ID_OR_PASSWORD, "Invalid Email ID or Password") \
    X(-4030, INVALID_SMTP_SERVER, "Invalid SMTP Server") \
    X(-4031, INVALID_EMAIL_ADDRESS, "Invalid Email Address") \
    X(-4032, FAILED_TO_SEND_TEST_EMAIL, "Failed to send Test Email") \
    X(-4033, VOIP_CALL_RUNNING, "Failed to Save/Reset VoIP Settings. VoIP call is running.") \
    X(-4034, DOOR_OPEN_SCHEDULE_ACTIVE, "Failed to Enable Door Open Schedule duration. Door Open Schedule is already activated.") \
    X(-4035, CONNECT_USB, "connect USB .") \
    X(-4036, DEVICE_IS_IN_VERIFICATION_MODE, "Device is in verification mode.") \
    X(-4037, RELAY_BOX_IS_ENABLED, "Relay box is enabled.") \
    X(-4038, CURRENT_DEVICE_LANGUAGE, "Current device language") \
    X(-4039, ANTI_PASSBACK_IS_ENABLED, "Anti-passback is enabled") \
    X(-5001, FAILED_TO_VERIFY_USER, "Failed to verify user") \
    X(-5002, FAILED_TO_IDENTIFY_USER, "Failed to identify user") \
    X(-5003, ENROLLMENT_FAILED, "Enrollment Failed") \
    X(-5004, UNABLE_TO_DELETE_THE_GROUP, "Unable to delete the group") \
    X(-5005, GROUP_CONTAINS_USERS_FAILED_TO_DELETE, "Group contains users. Failed to delete.") \
    X(-5006, GROUP_NAME_ALREADY_EXISTS, "Group name already exists") \
    X(-5007, OUT_OF_RANGE_GROUP_RETRIEVE_REQUEST, "Out of range group retrieve request") \
    X(-5008, GROUP_DOES_NOT_EXIST, "Group(s) doesn't exist on device") \
    X(-5009, GROUP_MAX_LIMIT_REACHED, "Group max limit reached") \
    X(-5010, DUPLICATE_USER_ID, "Duplicate User ID") \
    X(-6002, FAILED_TO_DELETE_USERRECORD, "Failed to delete UserRecord") \
    X(-7001, FEATURE_IS_NOT_SUPPORTED, "Feature is not supported") \
    X(-7002, INVALID_FIRMWARE_UPGRADE_PACKAGE, "Invalid Firmware Upgrade package") \
    X(-7003, FIRMWARE_UPGRADE_FAILED, "Firmware Upgrade failed") \
    X(-7004, VERIFICATION_MODE_IS_NOT_SUPPORTED, "Verification mode is not supported") \
    X(-7005, INVALID_RESTORE_PACKAGE, "Invalid Restore package") \
    X(-7006, RESTORE_FAILED, "Restore failed") \
    X(-7007, BACKUP_FAILED, "Backup failed") \
    X(-7008, DOWNGRADE_NOT_ALLOWED, "Not downgrade from 1.2.20.0 to below") \
    X(-8001, INVALID_IPADDRESS, "Invalid IPAddress") \
    X(-8002, INVALID_GATEWAY_ADDRESS, "Invalid Gateway Address") \
    X(-8003, INVALID_NETMASK_ADDRESS, "Invalid Netmask Address") \
    X(-8004, INVALID_DNS1, "Invalid DNS1") \
    X(-8005, INVALID_DNS2, "Invalid DNS2") \
    X(-8006, INVALID_DEVICE_COMMUNICATION_PORT, "Invalid device communication port") \
    X(-8008, INVALID_NETWORK_PARAMETER, "Invalid network parameter") \
    X(-8009, COMMUNICATION_PORT_IN_USE, "Communication port in use") \
    X(-8011, INVALID_NETWORK_MODE, "Invalid network mode") \
    X(-8012, FAILED_TO_ENABLE_WI_FI, "Failed to Enable Wi-Fi") \
    X(-8013, FAILED_TO_CONNECT_WI_FI, "Failed to Connect Wi-Fi") \
    X(-8014, FAILED_TO_CONNECT_BLUETOOTH, "Failed to connect Bluetooth") \
    X(-8015, FAILED_TO_CONNECT_VOIP, "Failed to connect VOIP") \
    X(-9001, CERTIFICATE_DOES_NOT_EXIST_ON_DEVICE, "Certificate does not exist on device") \
    X(-9002, CERTIFICATE_NOT_ACCESSIBLE, "Certificate can not be accessed by Device") \
    X(-9003, CERTIFICATE_IS_NOT_OF_VALID_PKCS_FORMAT, "Certificate is not of valid PKCS format") \
    X(-9004, CERTIFICATE_NOT_READABLE, "Certificate can not be read by Device. May be certificate password is wrong.") \
    X(-9005, CERTIFICATE_INCOMPLETE, "Certificate does not have one of the private key, public key or CA certificate.") \
    X(-9006, CERTIFICATE_IN_USE, "Cannot delete certificate, It is in Use.") \
    X(-10001, CARD_NOT_FOUND, "Card not found") \
    X(-10002, INVALID_APPLICATIONID, "Invalid ApplicationID") \
    X(-10003, FAILED_TO_AUTHENTICATE_SMART_CARD, "Failed to Authenticate Smart Card") \
    X(-10004, FAILED_TO_WRITE_SMART_CARD, "FailToWriteSmartCard") \
    X(-10005, FAILED_TO_READ_SMART_CARD, "Failed to read Smart Card") \
    X(-10006, FAILED_TO_CREATE_SMART_CARD, "Failed to create Smart Card") \
    X(-10007, INVALID_FILEID, "Invalid FileID") \
    X(-10008, SMART_CARD_FULL, "Maximum limit reached to write data on Smart Card") \
    X(-10010, REVOKED_SMART_CARD, "Revoked Smart Card") \
    X(-10012, FAILED_TO_FORMAT_SMART_CARD, "Failed to Format Smart Card") \
    X(-10016, INVALID_CARD_FOUND, "Invalid Card found") \
    X(-10017, FAILED_TO_RESET_SMART_CARD, "Failed to reset Smart Card") \
    X(-11001, VPN_SETTINGS_RETRIEVE, "Failed to Retrive VPNSettings") \
    X(-11002, INVALID_PROFILE_SETTING_RECEIVED, "Invalid Profile Setting received.") \
    X(-11003, VPN_CERTIFICATE_FAILED_TO_INSTALL, "VPN Certificate failed to Install") \
    X(-11004, VPN_CERTIFICATE_FAILED_TO_UNINSTALL, "VPN Certificate failed to Uninstall") \
    X(-11005, VPN_CERTIFICATE_IN_USE, "VPN Certificate in used,fail to Uninstall") \
    X(-11006, VPN_FOLDER_DOES_NOT_EXIST, "VPN Folder does not exist") \
    X(-11007, VPN_CERTIFICATE_BAD_FORMAT, "Incorrect format. Only certificate files with (.pfx, .p12, .crt) file types can be uploaded.") \
    X(-11008, INVALID_VPN_CERTIFICATE_OR_PASSWORD, "Invalid VPN Certificate or Password")

/** Status codes by name: KVN_E_<NAME> for each entry of KVN_STATUS_LIST(), and KVN_SUCCESS. */
enum kvn_status {
#define KVN_STATUS_ENUM_(code, name, text) KVN_E_##name = (code),
    KVN_STATUS_LIST(KVN_STATUS_ENUM_)
#undef KVN_STATUS_ENUM_
    KVN_SUCCESS = 0
};

/* Longest message plus its NUL; "Error : <code>" for codes without one fits too. */
/** Buffer size for kvn_utils_get_status_code_string(). */
#define KVN_STATUS_TEXT_MAX 93

/* ------------------------------------------------------------------------- */
/* Utilities                                                                 */
/* ------------------------------------------------------------------------- */

/* Writes the message of code (or "Error : <code>") into text; give it KVN_STATUS_TEXT_MAX bytes. */
/**
 * Writes the message of a status code, or "Error : <code>" for a code without one.
 * @param[in] code   any status code.
 * @param[out] text  at least KVN_STATUS_TEXT_MAX bytes; receives NUL-terminated text.
 * @par Request: none (a library function).
 * @return always 0.
 */
KVN_API int32_t kvn_utils_get_status_code_string(int32_t code, char *text);

/**
 * The library's version.
 * @par Request: none (a library function).
 * @return the constant text "1.4.0.0", valid for the life of the process.
 */
KVN_API const char *kvn_get_sdk2_version(void);

/**
 * Checks that the first @p count bytes are ASCII letters or digits. Bytes 0x80 to 0xFF
 * pass; a rejected byte is reported as a diagnostic line ("char %c").
 * @param[in] text   the bytes.
 * @param[in] count  number of bytes; below 1 nothing is checked.
 * @par Request: none (a library function).
 * @retval 0 every byte passes.
 * @retval -1009 a byte is rejected ("Invalid value received").
 */
KVN_API int32_t kvn_utils_validate_alphanumeric_string(const char *text, int32_t count);

/**
 * Converts dotted IPv4 text to the integer that payloads carry: "192.168.1.10" gives
 * 0xC0A8010A.
 * @param[in] text      1 to 15 characters: four decimal numbers of at most 255, three dots.
 * @param[out] address  the integer; written only on success.
 * @par Request: none (a library function).
 * @retval 0 converted.
 * @retval -15 not such a text ("Invalid IP address").
 */
KVN_API int32_t kvn_convert_ip_string_to_int(const char *text, uint32_t *address);

/* text needs 16 bytes. Returns the number of characters written. */
/**
 * Writes an address integer as dotted text, the top byte first: 0x0A000001 gives "10.0.0.1".
 * @param[in] address  the integer.
 * @param[out] text    at least 16 bytes; receives NUL-terminated text.
 * @par Request: none (a library function).
 * @return the number of characters written, 7 to 15.
 */
KVN_API int32_t kvn_convert_ip_int_to_string(uint32_t address, char *text);

/** @} */

/* ------------------------------------------------------------------------- */
/* Library extensions (kvn_ext_*): process-wide options of this library.     */
/* They are not terminal commands. Set them before opening connections.      */
/* ------------------------------------------------------------------------- */

/** @addtogroup extensions
 * @{ */

/**
 * Sets the per-chunk waits of reads and writes and the wait of a TCP connect.
 * Each read or write waits at most its limit for the link to become ready, once per
 * chunk: a reply that keeps trickling in is not cut off. Reads and writes over TCP are
 * always bounded this way; serial ones only after kvn_ext_apply_timeouts_to_serial(1).
 * The same value means the same for all three limits: a positive value is the limit
 * in milliseconds; 0 sets no limit of the library's own (a read or write waits as long
 * as it takes, a connect as long as the platform lets it); a negative value leaves
 * that limit as it is. Defaults: read 120000, write 60000, connect 0.
 * @param read_ms limit of each read wait (-2 KVN_E_READ_TIMEOUT when it passes)
 * @param write_ms limit of each write wait (-3 KVN_E_WRITE_TIMEOUT when it passes)
 * @param connect_ms limit of a TCP connect (-5 KVN_E_CONNECTION_FAILED when it passes)
 * @return 0 (KVN_SUCCESS), always.
 */
KVN_API int32_t kvn_ext_set_timeouts(int32_t read_ms, int32_t write_ms, int32_t connect_ms);

/**
 * Reads the TCP waits set by kvn_ext_set_timeouts(), in milliseconds.
 * @param[out] read_ms     read wait; may be NULL.
 * @param[out] write_ms    write wait; may be NULL.
 * @param[out] connect_ms  connect limit, 0 for the platform's own; may be NULL.
 * @par Request: none (a library option).
 */
KVN_API void kvn_ext_get_timeouts(int32_t *read_ms, int32_t *write_ms, int32_t *connect_ms);

/**
 * Applies the read and write limits of kvn_ext_set_timeouts() to serial links too.
 * By default serial reads and writes wait without limit, as the terminal's protocol
 * expects of a serial line. Once applied, each serial read or write waits at most the
 * read or write limit per chunk and fails with -2 or -3 when it passes; with a connect
 * limit set as well, no call of the library can wait for ever. Process-wide; takes
 * effect at the next read or write, on open connections too.
 * @param apply non-zero to bound serial waits, 0 to wait without limit (the default)
 * @return 0 (KVN_SUCCESS), always.
 */
KVN_API int32_t kvn_ext_apply_timeouts_to_serial(int32_t apply);

/**
 * The operating system's error code behind the last transport call of this thread.
 * -5, -2 and -3 each stand for many causes; this tells them apart. Every open, close,
 * read and write of a link records a value for the thread that made it: 0 when the
 * call succeeded, otherwise the system's code, as follows.
 * - Linux, macOS: an errno value (ECONNREFUSED, EHOSTUNREACH, ENOENT, EACCES, ENOTTY
 *   for a port that is no terminal, EBUSY for a serial port that another connection
 *   holds, EINVAL for a speed the port does not take or an empty port name).
 *   A wait that passed its limit records ETIMEDOUT, a peer that closed the connection
 *   ECONNRESET, a serial line that hung up EIO.
 * - Windows, TCP: a WSAGetLastError() value (WSAECONNREFUSED, WSAENETUNREACH, ...).
 *   A wait that passed its limit records WSAETIMEDOUT, a closed peer WSAECONNRESET.
 * - Windows, serial: a GetLastError() value (ERROR_FILE_NOT_FOUND, ERROR_ACCESS_DENIED
 *   for a port in use, ERROR_INVALID_PARAMETER for a speed the port does not take).
 *   A wait that passed its limit records ERROR_TIMEOUT.
 * Calls refused before they reach the system (a NULL record or buffer) record nothing.
 * @return the code of this thread's last transport call; 0 after a success or before any.
 */
KVN_API int32_t kvn_ext_last_os_error(void);

/**
 * Writes the system's message for kvn_ext_last_os_error() into text, cut to fit.
 * @param text buffer for the message; always terminated, empty when the code is 0
 * @param size bytes available at text, the terminating NUL included
 * @return the number of characters written without the NUL; 0 when text is NULL or size is 0.
 */
KVN_API int32_t kvn_ext_last_os_error_text(char *text, uint32_t size);

/** Receiver of diagnostic lines: the context given with it, and one line. */
typedef void (KVN_CALL *kvn_ext_diagnostic_fn)(void *context, const char *line);
/**
 * Sets where the library's diagnostic lines go (each as printf would have printed it).
 * Lines are delivered one at a time: a sink needs no locking of its own, and once this
 * function has returned, the previous sink and context are not used any more. A sink
 * may call library functions; it should return promptly, since other threads'
 * diagnostics wait for it.
 * @param[in] sink receives each line with the context; NULL restores the default, standard output
 * @param[in] context passed to the sink unchanged
 */
KVN_API void kvn_ext_set_diagnostic_sink(kvn_ext_diagnostic_fn sink, void *context);

/** @} */

/* The command families follow, one section each. */

/* ------------------------------------------------------------------------- */
/* Indication: LED, buzzer, audio, images, LCD, device notification          */
/* ------------------------------------------------------------------------- */

/** @addtogroup settings
 * @{ */

/** Entries of the LED settings (command 104). */
#define KVN_LED_COUNT 17
/** Entries of the buzzer settings (command 111). */
#define KVN_BUZZER_COUNT 18
/** Entries of the audio settings (command 110). */
#define KVN_AUDIO_COUNT 18

/* One LED entry; also one buzzer entry. */
/** One LED entry (command 104), also one buzzer entry (command 111). */
typedef struct kvn_led_setting {
    uint32_t index;        /* tag 3: 1-based entry number */
    uint8_t enable;        /* tag 2 */
    uint32_t option;       /* tag 13 */
    uint32_t matrix[3][3]; /* [row][column]: tag 4 + 3 * row + column */
} kvn_led_setting;
KVN_RECORD_SIZE(kvn_led_setting, 48, 48);

/* Texts read from the terminal are copied as they arrive: a text of the field's
 * size or longer fills the field without a terminating NUL (marked "unterminated"). */
/** One audio entry (command 110). */
typedef struct kvn_audio_setting {
    uint32_t index;        /* tag 3: 1-based entry number */
    char short_text[51];   /* tag 4; read: may be unterminated */
    char long_text[256];   /* tag 6; a read fills at most its first 51 bytes, unterminated when all 51 */
    uint8_t flag;          /* tag 5 */
    uint32_t value;        /* tag 8 in the single-entry set, 7 otherwise */
} kvn_audio_setting;
KVN_RECORD_SIZE(kvn_audio_setting, 316, 316);

/** What kvn_play_audio() plays; empty texts are not sent. */
typedef struct kvn_audio_play_request {
    char short_text[51];   /* tag 4 */
    char long_text[256];   /* tag 6 */
    uint32_t value;        /* tag 8 */
} kvn_audio_play_request;
KVN_RECORD_SIZE(kvn_audio_play_request, 312, 312);

/* Lists read by kvn_retrieve_audio_list (tags 11 and 12) and kvn_retrieve_image_list
 * (tags 1 and 2): the k-th element of each tag fills entry k. Entries beyond
 * KVN_MEDIA_LIST_MAX are counted in `total` but not stored. */
/** Entries a kvn_media_list holds. */
#define KVN_MEDIA_LIST_MAX 64
/** One entry of an audio or image list. */
typedef struct kvn_media_list_entry {
    /** Name: audio list tag 11, image list tag 1; at most 50 bytes and a NUL. */
    char name[51];
    /** Text: audio list tag 12, image list tag 2; at most 50 bytes and a NUL. */
    char text[51];
} kvn_media_list_entry;
KVN_RECORD_SIZE(kvn_media_list_entry, 102, 102);

/** An audio or image list, rebuilt by every read the terminal answers. */
typedef struct kvn_media_list {
    uint32_t count;   /* entries stored */
    uint32_t total;   /* entries the terminal reported */
    /** The entries; the first `count` are valid. */
    kvn_media_list_entry entries[KVN_MEDIA_LIST_MAX];
} kvn_media_list;
KVN_RECORD_SIZE(kvn_media_list, 6536, 6536);

/** The image kvn_display_image() shows. */
typedef struct kvn_display_image_request {
    char name[51];         /* tag 3 */
} kvn_display_image_request;
KVN_RECORD_SIZE(kvn_display_image_request, 51, 51);

/** LCD settings (command 149). */
typedef struct kvn_lcd_setting {
    uint32_t value;        /* tag 1 */
    char short_text[51];   /* tag 2; read: may be unterminated */
} kvn_lcd_setting;
KVN_RECORD_SIZE(kvn_lcd_setting, 56, 56);

/** Device notification settings (command 507). */
typedef struct kvn_device_notification_setting {
    uint8_t flag;          /* tag 1 */
    char text_a[129];      /* tag 2; read: may be unterminated */
    char text_b[51];       /* tag 3; read: may be unterminated */
    char text_c[51];       /* tag 4; read: may be unterminated */
    uint32_t value;        /* tag 5 */
} kvn_device_notification_setting;
KVN_RECORD_SIZE(kvn_device_notification_setting, 236, 236);

/* Entry numbers are 1-based: entry n is element n - 1. An entry number outside
 * the array gives KVN_E_INVALID_VALUE_RECEIVED without sending anything. */
/**
 * Writes one LED entry.
 * @param[in] conn   open connection.
 * @param[in] leds   the caller's array; only element @p entry - 1 is sent.
 * @param[in] entry  1-based entry number.
 * @par Request: set (0x00010002), command 104.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1009 @p entry outside 1 to KVN_LED_COUNT; nothing is sent.
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_single_led_setting(kvn_device_conn *conn, const kvn_led_setting *leds, uint32_t entry);

/**
 * Writes all LED entries.
 * @param[in] conn  open connection.
 * @param[in] leds  KVN_LED_COUNT entries, sent in array order.
 * @par Request: set (0x00010002), command 104.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_all_led_setting(kvn_device_conn *conn, const kvn_led_setting *leds /* [KVN_LED_COUNT] */);

/**
 * Reads the LED entries.
 * @param[in] conn   open connection.
 * @param[out] leds  KVN_LED_COUNT entries, each updated from the answer's entry of its number.
 * @par Request: get (0x00020002), command 104.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_led_setting(kvn_device_conn *conn, kvn_led_setting *leds /* [KVN_LED_COUNT] */);

/**
 * Resets the LED settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 104.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_led_setting(kvn_device_conn *conn);

/**
 * Writes one buzzer entry.
 * @param[in] conn     open connection.
 * @param[in] buzzers  the caller's array; only element @p entry - 1 is sent.
 * @param[in] entry    1-based entry number.
 * @par Request: set (0x00010002), command 111.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1009 @p entry outside 1 to KVN_BUZZER_COUNT; nothing is sent.
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_single_buzzer_setting(kvn_device_conn *conn, const kvn_led_setting *buzzers, uint32_t entry);

/**
 * Writes all buzzer entries.
 * @param[in] conn     open connection.
 * @param[in] buzzers  KVN_BUZZER_COUNT entries, sent in array order.
 * @par Request: set (0x00010002), command 111.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_all_buzzer_setting(kvn_device_conn *conn, const kvn_led_setting *buzzers /* [KVN_BUZZER_COUNT] */);

/**
 * Reads the buzzer entries.
 * @param[in] conn      open connection.
 * @param[out] buzzers  KVN_BUZZER_COUNT entries, each updated from the answer's entry
 *                      of its number.
 * @par Request: get (0x00020002), command 111.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_buzzer_setting(kvn_device_conn *conn, kvn_led_setting *buzzers /* [KVN_BUZZER_COUNT] */);

/**
 * Resets the buzzer settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 111.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_buzzer_setting(kvn_device_conn *conn);

/**
 * Writes one audio entry: texts as whole arrays, value under tag 8.
 * @param[in] conn   open connection.
 * @param[in] audio  the caller's array; only element @p entry - 1 is sent.
 * @param[in] entry  1-based entry number.
 * @par Request: set (0x00010002), command 110.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1009 @p entry outside 1 to KVN_AUDIO_COUNT; nothing is sent.
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_single_audio_setting(kvn_device_conn *conn, const kvn_audio_setting *audio, uint32_t entry);

/**
 * Writes all audio entries: texts at their own length, value under tag 7.
 * @param[in] conn   open connection.
 * @param[in] audio  KVN_AUDIO_COUNT entries, sent in array order.
 * @par Request: set (0x00010002), command 110.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_all_audio_setting(kvn_device_conn *conn, const kvn_audio_setting *audio /* [KVN_AUDIO_COUNT] */);

/**
 * Reads the audio entries; each text receives at most 51 bytes.
 * @param[in] conn    open connection.
 * @param[out] audio  KVN_AUDIO_COUNT entries, each updated from the answer's entry of its number.
 * @par Request: get (0x00020002), command 110.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_audio_setting(kvn_device_conn *conn, kvn_audio_setting *audio /* [KVN_AUDIO_COUNT] */);

/**
 * Resets the audio settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 110.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_audio_setting(kvn_device_conn *conn);

/**
 * Plays audio on the terminal.
 * @param[in] conn     open connection.
 * @param[in] request  what to play.
 * @par Request: set (0x00010002), command 801.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_play_audio(kvn_device_conn *conn, const kvn_audio_play_request *request);

/**
 * Stops audio playback. The request carries 20480 zero bytes, which the terminal ignores.
 * @param[in] conn  open connection.
 * @par Request: set (0x00010002), command 802.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_stop_audio(kvn_device_conn *conn);

/**
 * Reads the list of audio files (names under tag 11, texts under tag 12).
 * @param[in] conn   open connection.
 * @param[out] list  rebuilt from the answer; entries past KVN_MEDIA_LIST_MAX are only counted.
 * @par Request: get (0x00020002), command 803.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_retrieve_audio_list(kvn_device_conn *conn, kvn_media_list *list);

/**
 * Reads the list of images (names under tag 1, texts under tag 2).
 * @param[in] conn   open connection.
 * @param[out] list  rebuilt from the answer; entries past KVN_MEDIA_LIST_MAX are only counted.
 * @par Request: get (0x00020002), command 140.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_retrieve_image_list(kvn_device_conn *conn, kvn_media_list *list);

/**
 * Shows an image on the terminal's display.
 * @param[in] conn     open connection.
 * @param[in] request  the image's name.
 * @par Request: set (0x00010002), command 205.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_display_image(kvn_device_conn *conn, const kvn_display_image_request *request);

/**
 * Writes the LCD settings.
 * @param[in] conn     open connection.
 * @param[in] setting  the settings; an empty text is not sent.
 * @par Request: set (0x00010002), command 149.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_lcd_settings(kvn_device_conn *conn, const kvn_lcd_setting *setting);

/**
 * Reads the LCD settings.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 149.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_lcd_settings(kvn_device_conn *conn, kvn_lcd_setting *setting);

/**
 * Resets the LCD settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 149.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_lcd_settings(kvn_device_conn *conn);

/**
 * Writes the device notification settings.
 * @param[in] conn     open connection.
 * @param[in] setting  the settings; empty texts are not sent.
 * @par Request: set (0x00010002), command 507.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_device_notification_setting(kvn_device_conn *conn, const kvn_device_notification_setting *setting);

/**
 * Reads the device notification settings.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 507.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_device_notification_setting(kvn_device_conn *conn, kvn_device_notification_setting *setting);

/**
 * Resets the device notification settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 507.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_device_notification_setting(kvn_device_conn *conn);

/* ------------------------------------------------------------------------- */
/* Biometric and multi-user verification settings                            */
/* ------------------------------------------------------------------------- */

/** Biometric settings (command 108); setting_n travels under tag n. */
typedef struct kvn_biometric_setting {
    uint32_t setting_1;   /* tag 1 */
    uint32_t setting_2;   /* tag 2 */
    uint32_t setting_3;   /* tag 3 */
    uint32_t setting_4;   /* tag 4 */
    uint32_t setting_5;   /* tag 5 */
    uint8_t setting_8;    /* tag 8 */
    uint32_t setting_9;   /* tag 9 */
    uint32_t setting_10;  /* tag 10 */
    uint32_t setting_11;  /* tag 11 */
    uint32_t setting_12;  /* tag 12 */
    uint32_t setting_13;  /* tag 13 */
    uint32_t setting_14;  /* tag 14 */
    uint32_t setting_15;  /* tag 15 */
} kvn_biometric_setting;
KVN_RECORD_SIZE(kvn_biometric_setting, 52, 52);

/** One group of the multi-user verification settings. */
typedef struct kvn_verification_group {
    uint32_t group_value_a;  /* tag 5 */
    char group_text[64];     /* tag 6 */
    uint32_t group_value_b;  /* tag 7 */
} kvn_verification_group;
KVN_RECORD_SIZE(kvn_verification_group, 72, 72);

/** Multi-user verification settings (command 139). */
typedef struct kvn_multi_user_verification_setting {
    uint32_t value;          /* tag 1 */
    uint8_t flag;            /* tag 2 */
    kvn_verification_group groups[3];  /* tag 3 each, position under tag 4 */
} kvn_multi_user_verification_setting;
KVN_RECORD_SIZE(kvn_multi_user_verification_setting, 224, 224);

/**
 * Writes the biometric settings; every field is sent.
 * @param[in] conn     open connection.
 * @param[in] setting  the settings.
 * @par Request: set (0x00010002), command 108.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_biometric_setting(kvn_device_conn *conn, const kvn_biometric_setting *setting);

/**
 * Reads the biometric settings.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 108.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_biometric_setting(kvn_device_conn *conn, kvn_biometric_setting *setting);

/**
 * Resets the biometric settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 108.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_biometric_setting(kvn_device_conn *conn);

/**
 * Writes the multi-user verification settings; all three groups are sent.
 * @param[in] conn     open connection.
 * @param[in] setting  the settings.
 * @par Request: set (0x00010002), command 139.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_multi_user_verification_setting(kvn_device_conn *conn, const kvn_multi_user_verification_setting *setting);

/**
 * Reads the multi-user verification settings.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries; a group is chosen
 *                      by its position (0 to 2), its text keeps at most 63 bytes and a NUL.
 * @par Request: get (0x00020002), command 139.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_multi_user_verification_setting(kvn_device_conn *conn, kvn_multi_user_verification_setting *setting);

/**
 * Resets the multi-user verification settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 139.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_multi_user_verification_setting(kvn_device_conn *conn);

/* ------------------------------------------------------------------------- */
/* Sensors and alarms                                                        */
/* ------------------------------------------------------------------------- */

/** Bytes of sensor test data a kvn_fingerprint_sensor_test holds. */
#define KVN_FINGERPRINT_TEST_DATA_MAX 98560

/** Fingerprint sensor self-test: the value sent and the data the terminal answers with. */
typedef struct kvn_fingerprint_sensor_test {
    uint32_t test_value;                            /* tag 7, sent */
    uint8_t data[KVN_FINGERPRINT_TEST_DATA_MAX];    /* tag 6, received */
    uint32_t data_length;                           /* bytes stored in data */
} kvn_fingerprint_sensor_test;
KVN_RECORD_SIZE(kvn_fingerprint_sensor_test, 98568, 98568);

/** Proximity sensor settings (command 304). */
typedef struct kvn_proximity_sensor_setting {
    uint32_t value_a;  /* tag 5 */
    uint32_t value_b;  /* tag 4 */
    uint32_t value_c;  /* tag 8 */
} kvn_proximity_sensor_setting;
KVN_RECORD_SIZE(kvn_proximity_sensor_setting, 12, 12);

/** Next-sensor settings (command 166); value_b is sent first. */
typedef struct kvn_next_sensor_setting {
    uint32_t value_a;  /* tag 2 */
    uint32_t value_b;  /* tag 1 */
} kvn_next_sensor_setting;
KVN_RECORD_SIZE(kvn_next_sensor_setting, 8, 8);

/** Anti-shock (tamper) alarm settings (command 306); value_n travels under tag n + 1. */
typedef struct kvn_antishock_setting {
    /** @{ */
    uint32_t value_1;  /* tags 2 to 8 */
    uint32_t value_2;
    uint32_t value_3;
    uint32_t value_4;
    uint32_t value_5;
    uint32_t value_6;
    uint32_t value_7;
    /** @} */
} kvn_antishock_setting;
KVN_RECORD_SIZE(kvn_antishock_setting, 28, 28);

/**
 * Runs the fingerprint sensor's self-test and stores the data it answers with.
 * @param[in] conn      open connection.
 * @param[in,out] test  test_value is sent; data and data_length receive the answer's tag 6,
 *                      at most KVN_FINGERPRINT_TEST_DATA_MAX bytes.
 * @par Request: get (0x00020002) with a payload, command 301.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 no memory for the 1 MiB exchange buffer (nothing is sent), a malformed answer, or one of 1048576 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_test_fingerprint_sensor(kvn_device_conn *conn, kvn_fingerprint_sensor_test *test);

/**
 * Resets the fingerprint sensor.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 302.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_fingerprint_sensor(kvn_device_conn *conn);

/**
 * Writes the fingerprint sensor's automatic power-on status.
 * @param[in] conn    open connection.
 * @param[in] status  the status, sent under tag 1.
 * @par Request: set (0x00010002), command 303.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_fingerprint_sensor_autoon_status(kvn_device_conn *conn, uint32_t status);

/**
 * Reads the fingerprint sensor's automatic power-on status.
 * @param[in] conn     open connection.
 * @param[out] status  receives tag 1 of the answer.
 * @par Request: get (0x00020002), command 303.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_fingerprint_sensor_autoon_status(kvn_device_conn *conn, uint32_t *status);

/**
 * Resets the fingerprint sensor's automatic power-on status to the terminal's default.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 303.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_fingerprint_sensor_autoon_status(kvn_device_conn *conn);

/**
 * Writes the proximity sensor settings.
 * @param[in] conn     open connection.
 * @param[in] setting  the settings.
 * @par Request: set (0x00010002), command 304.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_proximity_sensor_settings(kvn_device_conn *conn, const kvn_proximity_sensor_setting *setting);

/**
 * Reads the proximity sensor settings.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 304.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_proximity_sensor_settings(kvn_device_conn *conn, kvn_proximity_sensor_setting *setting);

/**
 * Resets the proximity sensor settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 304.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_proximity_sensor_settings(kvn_device_conn *conn);

/**
 * Writes the next-sensor settings.
 * @param[in] conn     open connection.
 * @param[in] setting  the settings.
 * @par Request: set (0x00010002), command 166.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_next_sensor_settings(kvn_device_conn *conn, const kvn_next_sensor_setting *setting);

/**
 * Reads the next-sensor settings.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 166.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_next_sensor_settings(kvn_device_conn *conn, kvn_next_sensor_setting *setting);

/* Resets the next-sensor settings (command 166). */
/**
 * Resets the next-sensor settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 166.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_next_sensor_settings(kvn_device_conn *conn);

/**
 * Writes the anti-shock alarm settings.
 * @param[in] conn     open connection.
 * @param[in] setting  the settings.
 * @par Request: set (0x00010002), command 306.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_antishock_settings(kvn_device_conn *conn, const kvn_antishock_setting *setting);

/**
 * Reads the anti-shock alarm settings.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 306.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_antishock_settings(kvn_device_conn *conn, kvn_antishock_setting *setting);

/**
 * Resets the anti-shock alarm settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 306.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_antishock_settings(kvn_device_conn *conn);

/**
 * Clears the anti-shock alarm and arms it again (tag 1 = 1).
 * @param[in] conn  open connection.
 * @par Request: set (0x00010002), command 306.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_clear_reenable_antishock_alarm(kvn_device_conn *conn);

/**
 * Writes the fire alarm state.
 * @param[in] conn   open connection.
 * @param[in] state  the state, sent under tag 7.
 * @par Request: set (0x00010002), command 305.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_fire_alarm_state(kvn_device_conn *conn, uint32_t state);

/**
 * Reads the fire alarm state.
 * @param[in] conn    open connection.
 * @param[out] state  receives tag 7 of the answer.
 * @par Request: get (0x00020002), command 305.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_fire_alarm_state(kvn_device_conn *conn, uint32_t *state);

/**
 * Resets the fire alarm state to the terminal's default.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 305.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_fire_alarm_state(kvn_device_conn *conn);

/**
 * Clears the fire alarm and arms it again (tag 9 = 1).
 * @param[in] conn  open connection.
 * @par Request: set (0x00010002), command 305.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_clear_reenable_fire_alarm(kvn_device_conn *conn);

/* ------------------------------------------------------------------------- */
/* Door and DAC                                                              */
/* ------------------------------------------------------------------------- */

/* Fields are named by the tag that carries them. */
/** Door relay and DAC settings (command 115). */
typedef struct kvn_dac_setting {
    uint8_t dac_value_1;      /* tag 1 */
    uint32_t dac_value_2;     /* tag 2 */
    uint32_t dac_value_3;     /* tag 3 */
    uint32_t dac_value_4;     /* tag 4 */
    uint32_t dac_value_10;    /* tag 10 */
    uint32_t dac_value_11;    /* tag 11 */
    uint32_t dac_value_12;    /* tag 12 */
    uint32_t dac_value_13;    /* tag 13 */
    uint32_t dac_value_14;    /* tag 14 */
    uint32_t dac_value_6;     /* tag 6 */
    uint32_t door_open_time;  /* tag 8: read only, a set never sends it */
    uint32_t dac_value_16;    /* tag 16 */
} kvn_dac_setting;
KVN_RECORD_SIZE(kvn_dac_setting, 48, 48);

/**
 * Writes the DAC settings; door_open_time is not sent.
 * @param[in] conn     open connection.
 * @param[in] setting  the settings.
 * @par Request: set (0x00010002), command 115.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer as long as the request (63 bytes) or longer.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_dac_settings(kvn_device_conn *conn, const kvn_dac_setting *setting);

/**
 * Reads the DAC settings, door_open_time included.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 115.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer (an empty element counts), or one of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_dac_settings(kvn_device_conn *conn, kvn_dac_setting *setting);

/**
 * Resets the DAC settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 115.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_dac_settings(kvn_device_conn *conn);

/**
 * Opens the door for a time.
 * @param[in] conn       open connection.
 * @param[in] open_time  sent under tag 8; kvn_get_dac_settings() reports it as door_open_time.
 * @param[in] option     sent under tag 7; its meaning is the terminal's.
 * @par Request: set (0x00010002), command 115.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer as long as the request (12 bytes) or longer.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_open_door_for_time(kvn_device_conn *conn, uint32_t open_time, int32_t option);

/**
 * Closes the door: kvn_open_door_for_time() with time 0 and option 0.
 * @param[in] conn  open connection.
 * @par Request: set (0x00010002), command 115.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer as long as the request (12 bytes) or longer.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_close_door(kvn_device_conn *conn);

/**
 * Clears the door-forced-open alarm (tag 15 = 1).
 * @param[in] conn  open connection.
 * @par Request: set (0x00010002), command 115.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer as long as the request (6 bytes) or longer.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_clear_door_force_open_alarm(kvn_device_conn *conn);

/** @} */

/* ------------------------------------------------------------------------- */
/* Network and device management: wired and serial network, device information and maintenance, wireless, SSL, notifications, Ethernet security, VPN and certificates */
/* ------------------------------------------------------------------------- */

/** @addtogroup network
 * @{ */

/* Wired network (101), serial port (102) and USB auxiliary port (103). */

/* Addresses are NUL-terminated dotted-quad texts in the records and 32-bit numbers on the
 * wire (a.b.c.d is a * 2^24 + b * 2^16 + c * 2^8 + d, sent little-endian), converted as
 * kvn_convert_ip_string_to_int() and kvn_convert_ip_int_to_string() do. A set whose
 * address the conversion rejects returns KVN_E_INVALID_IP_ADDRESS and sends nothing. */
/** Wired Ethernet settings (command 101). */
typedef struct kvn_ethernet_setting {
    uint32_t address_mode; /* tag 1: 1 takes the addresses from the network, and a set then sends none */
    char ip_address[16];   /* tag 2: the terminal's own address */
    uint32_t port;         /* tag 3: communication port; 0 is not sent */
    char address_4[16];    /* tag 4: netmask, gateway or DNS server, as the terminal assigns tags 4 to 7 */
    char address_5[16];    /* tag 5 */
    char address_6[16];    /* tag 6 */
    char address_7[16];    /* tag 7 */
    char mac_address[18];  /* tag 8: read only; a read copies at most 18 bytes */
} kvn_ethernet_setting;
KVN_RECORD_SIZE(kvn_ethernet_setting, 108, 108);

/** Serial port settings (command 102); the values are the terminal's. */
typedef struct kvn_serial_setting {
    uint32_t value_1; /* tag 1 */
    uint32_t value_2; /* tag 2 */
    uint32_t value_3; /* tag 3 */
    uint32_t value_4; /* tag 4 */
} kvn_serial_setting;
KVN_RECORD_SIZE(kvn_serial_setting, 16, 16);

/** USB auxiliary port setting (command 103). */
typedef struct kvn_usb_auxiliary_setting {
    uint32_t value; /* tag 1 */
} kvn_usb_auxiliary_setting;
KVN_RECORD_SIZE(kvn_usb_auxiliary_setting, 4, 4);

/**
 * Writes the Ethernet settings: tag 1, tag 3 when the port is not 0, then (unless the
 * address mode is 1) the five addresses under tags 2, 4, 5, 6 and 7. The MAC is never sent.
 * @param[in] conn     open connection.
 * @param[in] setting  the settings.
 * @par Request: set (0x00010002), command 101.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -15 an address that is not a dotted quad; nothing is sent.
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_ethernet_setting(kvn_device_conn *conn, const kvn_ethernet_setting *setting);

/**
 * Reads the Ethernet settings, the MAC address included; addresses come back as dotted quads.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 101.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_ethernet_setting(kvn_device_conn *conn, kvn_ethernet_setting *setting);

/**
 * Resets the Ethernet settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 101.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_ethernet_setting(kvn_device_conn *conn);

/**
 * Writes the serial port settings (tags 1 to 4).
 * @param[in] conn     open connection.
 * @param[in] setting  the settings.
 * @par Request: set (0x00010002), command 102.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_serial_setting(kvn_device_conn *conn, const kvn_serial_setting *setting);

/**
 * Reads the serial port settings.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 102.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_serial_setting(kvn_device_conn *conn, kvn_serial_setting *setting);

/**
 * Resets the serial port settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 102.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_serial_setting(kvn_device_conn *conn);

/**
 * Writes the USB auxiliary port setting (tag 1).
 * @param[in] conn     open connection.
 * @param[in] setting  the setting.
 * @par Request: set (0x00010002), command 103.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_usb_auxiliary_setting(kvn_device_conn *conn, const kvn_usb_auxiliary_setting *setting);

/**
 * Reads the USB auxiliary port setting.
 * @param[in] conn      open connection.
 * @param[out] setting  receives tag 1 of the answer.
 * @par Request: get (0x00020002), command 103.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_usb_auxiliary_setting(kvn_device_conn *conn, kvn_usb_auxiliary_setting *setting);

/**
 * Resets the USB auxiliary port setting to the terminal's default.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 103.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_usb_auxiliary_setting(kvn_device_conn *conn);

/* Device information (201), product information (116), debug log (129), device security
 * (128), date and time (126), device status (202), VNC (134) and maintenance (121, 122, 131). */

/* Fields are named by the tag that carries them; their meaning is the terminal's.
 * Addresses come back as dotted quads, one-byte fields take the low byte of their value. */
/** Device information (command 201), read only. */
typedef struct kvn_device_info {
    uint32_t value_1;       /* tag 1 */
    char text_2[50];        /* tag 2: at most 50 bytes */
    uint32_t value_20;      /* tag 20 */
    uint32_t value_5;       /* tag 5 */
    char address_9[16];     /* tag 9 */
    char address_10[16];    /* tag 10 */
    char address_11[16];    /* tag 11 */
    char address_12[16];    /* tag 12 */
    char text_21[32];       /* tag 21: at most 32 bytes */
    char address_22[16];    /* tag 22 */
    char address_23[16];    /* tag 23 */
    char address_24[16];    /* tag 24 */
    char address_25[16];    /* tag 25 */
    uint8_t byte_26;        /* tag 26 */
    uint8_t byte_28;        /* tag 28 */
    char address_29[16];    /* tag 29 */
    char mac_13[18];        /* tag 13: at most 18 bytes; a tag 14 of 26 bytes or more overwrites it */
    char text_14[26];       /* tag 14: shorter than 26 bytes, stored here; longer, 26 bytes from mac_13 on */
    uint32_t value_8;       /* tag 8 */
    char text_4[16];        /* tag 4: at most 16 bytes */
    char mac_15[18];        /* tag 15: at most 18 bytes */
    uint32_t value_16;      /* tag 16 */
    uint32_t value_30;      /* tag 30 */
    uint32_t value_17;      /* tag 17 */
    uint32_t value_6;       /* tag 6 */
    uint32_t value_18;      /* tag 18 */
    uint32_t value_19;      /* tag 19 */
    uint32_t value_31;      /* tag 31 */
    uint32_t value_32;      /* tag 32 */
    uint32_t unused;        /* never written */
    uint32_t value_7;       /* tag 7 */
    uint8_t byte_27;        /* tag 27 */
    char text_3[11];        /* tag 3: at most 11 bytes */
    uint32_t value_35;      /* tag 35 */
    uint8_t data_36[1024];  /* tag 36: the value's bytes, the rest cleared */
    char text_37[50];       /* tag 37: the value's first 50 bytes, the rest cleared */
    uint32_t value_38;      /* tag 38 */
    uint32_t value_39;      /* tag 39 */
} kvn_device_info;
KVN_RECORD_SIZE(kvn_device_info, 1468, 1468);

/** Product information (command 116). */
typedef struct kvn_product_info {
    uint32_t value; /* tag 1 */
    char text[50];  /* tag 2: sent at its own length when not empty; a read takes at most 50 bytes */
} kvn_product_info;
KVN_RECORD_SIZE(kvn_product_info, 56, 56);

/** Debug log setting (command 129). */
typedef struct kvn_device_debug_log {
    uint32_t value_1; /* tag 1: sent, never read back */
    uint32_t value_2; /* tag 2 */
} kvn_device_debug_log;
KVN_RECORD_SIZE(kvn_device_debug_log, 8, 8);

/** Device security setting (command 128). */
typedef struct kvn_device_security {
    uint32_t value; /* tag 1 */
    char text[11];  /* tag 2: sent at its own length when not empty; a read takes at most 11 bytes */
} kvn_device_security;
KVN_RECORD_SIZE(kvn_device_security, 16, 16);

/** Device status (command 202), read like kvn_device_security. */
typedef struct kvn_device_status {
    uint32_t value; /* tag 1 */
    char text[11];  /* tag 2: at most 11 bytes */
} kvn_device_status;
KVN_RECORD_SIZE(kvn_device_status, 16, 16);

/** Date and time (command 126). */
typedef struct kvn_device_date_time {
    uint32_t value_1; /* tag 1 */
    uint32_t value_2; /* tag 2 */
    char text[1024];  /* tag 5: always sent, empty too; a read fills all 1024 bytes, the value's first */
    uint32_t value_6; /* tag 6 */
} kvn_device_date_time;
KVN_RECORD_SIZE(kvn_device_date_time, 1036, 1036);

/** VNC setting (command 134). */
typedef struct kvn_device_vnc_setting {
    uint8_t value; /* tag 2 */
    char text[21]; /* tag 3: sent at its own length when not empty; a read takes at most 21 bytes */
} kvn_device_vnc_setting;
KVN_RECORD_SIZE(kvn_device_vnc_setting, 22, 22);

/**
 * Reads the device information. Each value is taken from a cleared scratch area, so a
 * short integer is zero-extended; tags 33, 34 and 40 onwards are ignored.
 * @param[in] conn   open connection.
 * @param[out] info  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 201.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_device_info(kvn_device_conn *conn, kvn_device_info *info);

/**
 * Writes the product information: tag 1, and tag 2 when the text is not empty.
 * @param[in] conn  open connection.
 * @param[in] info  the product information.
 * @par Request: set (0x00010002), command 116.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_product_info(kvn_device_conn *conn, const kvn_product_info *info);

/**
 * Reads the product information.
 * @param[in] conn   open connection.
 * @param[out] info  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 116.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_product_info(kvn_device_conn *conn, kvn_product_info *info);

/**
 * Resets the product information to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 116.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_product_info(kvn_device_conn *conn);

/**
 * Writes the debug log setting (tags 1 and 2).
 * @param[in] conn  open connection.
 * @param[in] log   the setting.
 * @par Request: set (0x00010002), command 129.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_device_debug_log(kvn_device_conn *conn, const kvn_device_debug_log *log);

/**
 * Reads the debug log setting: value_2 only; value_1 is left as it was.
 * @param[in] conn  open connection.
 * @param[out] log  receives tag 2 of the answer.
 * @par Request: get (0x00020002), command 129.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_device_debug_log(kvn_device_conn *conn, kvn_device_debug_log *log);

/**
 * Resets the debug log setting to the terminal's default.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 129.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_device_debug_log(kvn_device_conn *conn);

/**
 * Reboots the terminal at once. The request is sent and no answer is read, so the
 * result says only whether it was sent.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 121.
 * @return 0 when the request was sent, or:
 * @retval -3 write failure or timeout.
 */
KVN_API int32_t kvn_device_reboot_forcefully(kvn_device_conn *conn);

/**
 * Reboots the terminal once it has answered.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 131.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_device_reboot_gracefully(kvn_device_conn *conn);

/**
 * Writes the device security setting: tag 1, and tag 2 when the text is not empty.
 * @param[in] conn      open connection.
 * @param[in] security  the setting.
 * @par Request: set (0x00010002), command 128.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_device_security(kvn_device_conn *conn, const kvn_device_security *security);

/**
 * Reads the device security setting.
 * @param[in] conn       open connection.
 * @param[out] security  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 128.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_device_security(kvn_device_conn *conn, kvn_device_security *security);

/**
 * Resets the device security setting to the terminal's default.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 128.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_device_security(kvn_device_conn *conn);

/**
 * Writes the date and time: tags 1, 2, 5 (even when the text is empty) and 6.
 * @param[in] conn       open connection.
 * @param[in] date_time  the date and time.
 * @par Request: set (0x00010002), command 126.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_device_date_time(kvn_device_conn *conn, const kvn_device_date_time *date_time);

/**
 * Reads the date and time.
 * @param[in] conn        open connection.
 * @param[out] date_time  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 126.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_device_date_time(kvn_device_conn *conn, kvn_device_date_time *date_time);

/**
 * Reads the device status (tag 1 value, tag 2 text of at most 11 bytes).
 * @param[in] conn     open connection.
 * @param[out] status  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 202.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_device_status(kvn_device_conn *conn, kvn_device_status *status);

/**
 * Restores the terminal's factory defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 122.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_device_factory_default(kvn_device_conn *conn);

/**
 * Writes the VNC setting: tag 2, and tag 3 when the text is not empty.
 * @param[in] conn     open connection.
 * @param[in] setting  the setting.
 * @par Request: set (0x00010002), command 134.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_device_vnc_setting(kvn_device_conn *conn, const kvn_device_vnc_setting *setting);

/**
 * Reads the VNC setting.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 134.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_device_vnc_setting(kvn_device_conn *conn, kvn_device_vnc_setting *setting);

/**
 * Resets the VNC setting to the terminal's default.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 134.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_device_vnc_setting(kvn_device_conn *conn);

/* SSL (127, 133), system notification (125), Wi-Fi (135 to 138) and Ethernet security (163). */

/** SSL setting (command 127). */
typedef struct kvn_ssl_setting {
    uint32_t value_6; /* tag 6: when not 0, a set sends it instead of the name and the secret */
    char name[51];    /* tag 4: a read takes at most 50 bytes */
    char secret[33];  /* tag 5: sent only, never read back */
    uint32_t value_3; /* tag 3: always sent first */
} kvn_ssl_setting;
KVN_RECORD_SIZE(kvn_ssl_setting, 92, 92);

/** Names a kvn_ssl_cert_list or kvn_vpn_cert_list holds: every value of its 8-bit count. */
#define KVN_CERT_LIST_MAX 256

/* A read appends at `count` and never clears it: set count to 0 before the first read.
 * After 255 names the count wraps to 0 and the next name lands in entry 0 again. */
/** SSL certificate names (command 133). */
typedef struct kvn_ssl_cert_list {
    uint8_t count;                      /* names stored; the next name goes to entry `count` */
    char names[KVN_CERT_LIST_MAX][51];  /* tag 4: at most 50 bytes each, the rest of the entry kept */
} kvn_ssl_cert_list;
KVN_RECORD_SIZE(kvn_ssl_cert_list, 13057, 13057);

/** System notification setting (command 125). */
typedef struct kvn_system_notification_setting {
    uint32_t value;   /* tag 1 */
    char text[1024];  /* tag 2: always sent, empty too; a set has room for about 1014 bytes */
} kvn_system_notification_setting;
KVN_RECORD_SIZE(kvn_system_notification_setting, 1028, 1028);

/** Wi-Fi status (command 135). */
typedef struct kvn_wifi_status {
    uint8_t value; /* tag 2 */
} kvn_wifi_status;
KVN_RECORD_SIZE(kvn_wifi_status, 1, 1);

/* Addresses B to E are netmask, gateway and DNS servers as the terminal assigns them. */
/** The network kvn_connect_wifi() joins (command 137). */
typedef struct kvn_wifi_connect_setting {
    char name[32];        /* tag 3: sent when not empty */
    char key[65];         /* tag 7: sent when not empty */
    uint8_t source;       /* tag 8: 0 sends the addresses below, any other value none */
    char ip_address[16];  /* tag 9 */
    char address_b[16];   /* tag 11 */
    char address_c[16];   /* tag 10 */
    char address_d[16];   /* tag 12 */
    char address_e[16];   /* tag 13, and again as tag 15 */
} kvn_wifi_connect_setting;
KVN_RECORD_SIZE(kvn_wifi_connect_setting, 178, 178);

/** The network joined, as kvn_get_wifi_scan_list() reports it. */
typedef struct kvn_wifi_connection_info {
    char name[32];        /* tag 6: at most 32 bytes */
    uint8_t source;       /* tag 8 */
    char ip_address[16];  /* tag 9 */
    char address_b[16];   /* tag 11 */
    char address_c[16];   /* tag 10 */
    char address_d[16];   /* tag 12 */
    char address_e[16];   /* tag 13 */
    uint8_t value_15;     /* tag 15: the low byte */
} kvn_wifi_connection_info;
KVN_RECORD_SIZE(kvn_wifi_connection_info, 114, 114);

/** One network of a Wi-Fi scan (a tag-1 container). */
typedef struct kvn_wifi_scan_entry {
    char name[32];     /* inner tag 3: at most 32 bytes */
    char text[100];    /* inner tag 4: at most 100 bytes */
    uint32_t value_5;  /* inner tag 5 */
} kvn_wifi_scan_entry;
KVN_RECORD_SIZE(kvn_wifi_scan_entry, 136, 136);

/** Wi-Fi network information (command 138). */
typedef struct kvn_wifi_network_info {
    uint8_t value_2;      /* tag 2 */
    char name[32];        /* tag 3: at most 32 bytes */
    char text[100];       /* tag 4: at most 100 bytes */
    uint32_t value_5;     /* tag 5 */
    uint8_t source;       /* tag 8 */
    char ip_address[16];  /* tag 9 */
    char address_b[16];   /* tag 11 */
    char address_c[16];   /* tag 10 */
    char address_d[16];   /* tag 12 */
    char address_e[16];   /* tag 13 */
    uint8_t value_15;     /* tag 15: the low byte */
} kvn_wifi_network_info;
KVN_RECORD_SIZE(kvn_wifi_network_info, 224, 224);

/** Address and MAC texts a kvn_ethernet_security_setting holds, each. */
#define KVN_ETHERNET_SECURITY_MAX 10

/* Texts travel as they are, not converted: each non-empty one in a container of its own
 * (addresses: tag 2 around tag 3; MACs: tag 4 around tag 5). A read fills the texts in
 * the order the containers arrive; a MAC must be exactly 17 bytes. */
/** Ethernet security setting (command 163). */
typedef struct kvn_ethernet_security_setting {
    uint32_t mode;                                /* tag 1 */
    char addresses[KVN_ETHERNET_SECURITY_MAX][16]; /* tag 2 containers, inner tag 3 */
    char macs[KVN_ETHERNET_SECURITY_MAX][18];      /* tag 4 containers, inner tag 5: 17 characters and a NUL */
} kvn_ethernet_security_setting;
KVN_RECORD_SIZE(kvn_ethernet_security_setting, 344, 344);

/**
 * Writes the SSL setting: tag 3, then tag 6 alone when value_6 is not 0, otherwise the
 * name (tag 4) and the secret (tag 5), both sent even when empty.
 * @param[in] conn     open connection.
 * @param[in] setting  the setting.
 * @par Request: set (0x00010002), command 127.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_ssl_setting(kvn_device_conn *conn, const kvn_ssl_setting *setting);

/**
 * Reads the SSL setting; the secret is never read back and keeps what it held.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 127.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_ssl_setting(kvn_device_conn *conn, kvn_ssl_setting *setting);

/**
 * Resets the SSL setting to the terminal's default.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 127.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_ssl_setting(kvn_device_conn *conn);

/**
 * Reads the SSL certificate names, appending each tag 4 at list->count.
 * @param[in] conn       open connection.
 * @param[in,out] list   count: where the first name goes (0 for a fresh list); names: filled.
 * @par Request: get (0x00020002), command 133.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_ssl_cert_list(kvn_device_conn *conn, kvn_ssl_cert_list *list);

/**
 * Writes the system notification setting: tag 1, and tag 2 even when the text is empty.
 * @param[in] conn     open connection.
 * @param[in] setting  the setting.
 * @par Request: set (0x00010002), command 125.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 a text too long for the 1024-byte request (nothing is sent), or an answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_system_notification_setting(kvn_device_conn *conn,
                                                    const kvn_system_notification_setting *setting);

/**
 * Reads the system notification setting.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 125.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_system_notification_setting(kvn_device_conn *conn, kvn_system_notification_setting *setting);

/**
 * Resets the system notification setting to the terminal's default.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 125.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_system_notification_setting(kvn_device_conn *conn);

/**
 * Writes the Wi-Fi status (tag 2).
 * @param[in] conn    open connection.
 * @param[in] status  the status.
 * @par Request: set (0x00010002), command 135.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_wifi_status(kvn_device_conn *conn, const kvn_wifi_status *status);

/**
 * Reads the Wi-Fi status.
 * @param[in] conn     open connection.
 * @param[out] status  receives tag 2 of the answer.
 * @par Request: get (0x00020002), command 135.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_wifi_status(kvn_device_conn *conn, kvn_wifi_status *status);

/**
 * Resets the Wi-Fi status to the terminal's default.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 135.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_wifi_status(kvn_device_conn *conn);

/**
 * Scans for Wi-Fi networks: each tag-1 container fills the next entry while fewer than
 * the capacity are filled (the others are read and dropped); the network joined fills @p info.
 * @param[in] conn         open connection.
 * @param[out] info        receives the network joined (tags 6, 8 to 13, 15).
 * @param[out] entries     the caller's array of at least *@p count entries.
 * @param[in,out] count    in: the entries @p entries holds; out: the entries filled,
 *                         written only when the whole answer was read.
 * @par Request: get (0x00020002), command 136.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 204800 bytes or more; also a null @p entries with a non-zero count.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_wifi_scan_list(kvn_device_conn *conn, kvn_wifi_connection_info *info,
                                       kvn_wifi_scan_entry *entries, uint8_t *count);

/**
 * Joins a Wi-Fi network: tags 3 and 7 when not empty, tag 8, and when the source is 0
 * the addresses under tags 9 to 13, then address E once more under tag 15.
 * @param[in] conn     open connection.
 * @param[in] setting  the network and its addresses.
 * @par Request: set (0x00010002), command 137.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -15 an address that is not a dotted quad; nothing is sent.
 * @retval -1 answer of 1024 bytes or more.
 * @retval -8012/-8013 the terminal's "Failed to Enable Wi-Fi", "Failed to Connect Wi-Fi".
 * @kvn_link_errors
 */
KVN_API int32_t kvn_connect_wifi(kvn_device_conn *conn, const kvn_wifi_connect_setting *setting);

/**
 * Leaves a Wi-Fi network: tag 3 with the name when it is not empty, else an empty payload.
 * @param[in] conn  open connection.
 * @param[in] name  the network's name, NUL-terminated.
 * @par Request: reset (0x00030002), command 137.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 a name too long for the 1024-byte request (nothing is sent), or an answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_disconnect_wifi(kvn_device_conn *conn, const char *name);

/**
 * Reads the Wi-Fi network information.
 * @param[in] conn   open connection.
 * @param[out] info  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 138.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_wifi_network_info(kvn_device_conn *conn, kvn_wifi_network_info *info);

/**
 * Writes the Ethernet security setting: tag 1, then a container for each address and
 * each MAC text that is not empty.
 * @param[in] conn     open connection.
 * @param[in] setting  the setting.
 * @par Request: set (0x00010002), command 163.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_ethernet_security_setting(kvn_device_conn *conn, const kvn_ethernet_security_setting *setting);

/**
 * Reads the Ethernet security setting. The result is that of the last container read.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the mode and the texts, in the order of the containers.
 * @par Request: get (0x00020002), command 163.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1010 the last container held a MAC that is not exactly 17 bytes (it is not stored).
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_ethernet_security_setting(kvn_device_conn *conn, kvn_ethernet_security_setting *setting);

/**
 * Resets the Ethernet security setting to the terminal's default.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 163.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_ethernet_security_setting(kvn_device_conn *conn);

/* VPN profile and status (1001, 1002) and its certificates (1003 to 1007). Every request
 * of this family works in a 1024-byte buffer, and a set reads its answer with the length
 * it sent as the capacity. */

/** VPN profile (command 1001); every field is sent, empty texts too. */
typedef struct kvn_vpn_profile {
    uint32_t value_17; /* tag 17 */
    char text_2[51];   /* tag 2; a read takes at most 50 bytes of each text */
    uint32_t value_3;  /* tag 3 */
    char text_4[51];   /* tag 4 */
    char text_5[51];   /* tag 5 */
    char text_6[51];   /* tag 6 */
    char text_7[51];   /* tag 7 */
    char text_8[51];   /* tag 8 */
    char text_9[51];   /* tag 9 */
    uint32_t value_10; /* tag 10 */
    char text_11[51];  /* tag 11 */
    char text_12[51];  /* tag 12 */
    char text_13[51];  /* tag 13 */
    char text_14[51];  /* tag 14 */
    char text_15[51];  /* tag 15 */
    char text_16[51];  /* tag 16 */
} kvn_vpn_profile;
KVN_RECORD_SIZE(kvn_vpn_profile, 680, 680);

/** VPN status (command 1002). */
typedef struct kvn_vpn_status {
    uint32_t state;   /* tag 28 */
    char address[16]; /* tag 29: dotted quad */
} kvn_vpn_status;
KVN_RECORD_SIZE(kvn_vpn_status, 20, 20);

/* A read appends at `count` and never clears it: set count to 0 before the first read. */
/** VPN certificate names (commands 1003, 1004, 1007). */
typedef struct kvn_vpn_cert_list {
    uint8_t count;                      /* names stored; the next name goes to entry `count` */
    char names[KVN_CERT_LIST_MAX][51];  /* tags 14, 15, 21 (also inside tag-20 containers): at most 50 bytes each */
} kvn_vpn_cert_list;
KVN_RECORD_SIZE(kvn_vpn_cert_list, 13057, 13057);

/** An uploaded certificate to install (command 1005). */
typedef struct kvn_vpn_certificate_install {
    char name[51];    /* tag 21: sent even when empty */
    char secret[960]; /* tag 22: sent even when empty */
} kvn_vpn_certificate_install;
KVN_RECORD_SIZE(kvn_vpn_certificate_install, 1011, 1011);

/**
 * Writes the VPN profile: all sixteen elements in record order (tags 17, 2, 3, 4 to 9, 10,
 * 11 to 16), texts at their own length even when empty.
 * @param[in] conn     open connection.
 * @param[in] profile  the profile.
 * @par Request: set (0x00010002), command 1001.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 a profile too long for the 1024-byte request (nothing is sent), or an answer as long as the request or longer.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_vpn_profile(kvn_device_conn *conn, const kvn_vpn_profile *profile);

/**
 * Reads the VPN profile.
 * @param[in] conn      open connection.
 * @param[out] profile  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 1001.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_vpn_profile(kvn_device_conn *conn, kvn_vpn_profile *profile);

/**
 * Resets the VPN profile to the terminal's default.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 1001.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_vpn_profile(kvn_device_conn *conn);

/**
 * Reads the VPN status.
 * @param[in] conn     open connection.
 * @param[out] status  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 1002.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_vpn_status(kvn_device_conn *conn, kvn_vpn_status *status);

/**
 * Reads the user certificate names, appending at list->count. A tag-20 container is read
 * into the same list, and the result of the last one is the result.
 * @param[in] conn      open connection.
 * @param[in,out] list  count: where the first name goes (0 for a fresh list); names: filled.
 * @par Request: get (0x00020002), command 1003.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer or container, or an answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_user_cert_list(kvn_device_conn *conn, kvn_vpn_cert_list *list);

/**
 * Reads the CA certificate names, as kvn_get_user_cert_list() does.
 * @param[in] conn      open connection.
 * @param[in,out] list  count: where the first name goes (0 for a fresh list); names: filled.
 * @par Request: get (0x00020002), command 1004.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer or container, or an answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_ca_cert_list(kvn_device_conn *conn, kvn_vpn_cert_list *list);

/**
 * Reads the names of the uploaded certificates, as kvn_get_user_cert_list() does.
 * @param[in] conn      open connection.
 * @param[in,out] list  count: where the first name goes (0 for a fresh list); names: filled.
 * @par Request: get (0x00020002), command 1007.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer or container, or an answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_uploaded_cert_list(kvn_device_conn *conn, kvn_vpn_cert_list *list);

/**
 * Installs an uploaded certificate: tag 21 the name, tag 22 the secret, both sent even when empty.
 * @param[in] conn     open connection.
 * @param[in] install  the certificate's name and secret.
 * @par Request: set (0x00010002), command 1005.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer as long as the request or longer.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_install_uploaded_certificate(kvn_device_conn *conn, const kvn_vpn_certificate_install *install);

/**
 * Uninstalls a user certificate: tag 14 with the name, sent even when empty.
 * @param[in] conn  open connection.
 * @param[in] name  the certificate's name, NUL-terminated.
 * @par Request: set (0x00010002), command 1006.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 a name too long for the 1024-byte request (nothing is sent), or an answer as long as the request or longer.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_uninstall_user_certificate(kvn_device_conn *conn, const char *name);

/**
 * Uninstalls a CA certificate: tag 15 with the name, sent even when empty.
 * @param[in] conn  open connection.
 * @param[in] name  the certificate's name, NUL-terminated.
 * @par Request: set (0x00010002), command 1006.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 a name too long for the 1024-byte request (nothing is sent), or an answer as long as the request or longer.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_uninstall_ca_certificate(kvn_device_conn *conn, const char *name);

/** @} */

/* ------------------------------------------------------------------------- */
/* Specific-purpose I/O, time attendance, job codes, VoIP and schedules */
/* ------------------------------------------------------------------------- */

/** @addtogroup settings
 * @{ */

/** Output entries of the specific-purpose output settings (command 113). */
#define KVN_SPECIFIC_PURPOSE_OUTPUT_COUNT 9
/** Slots of each time attendance array; slots 1 to 16 are the numbered items, slot 0 is never sent. */
#define KVN_TIME_ATTENDANCE_SLOTS 17
/** Entries of the time attendance settings (command 109). */
#define KVN_TIME_ATTENDANCE_ENTRIES 24
/** Bytes of a time attendance text, its NUL included. */
#define KVN_TIME_ATTENDANCE_TEXT 51
/** Job codes of a kvn_job_code_list (command 146). */
#define KVN_JOB_CODE_COUNT 32
/** Contacts of a kvn_voip_contact_list (command 145). */
#define KVN_VOIP_CONTACT_COUNT 10

/** @} */

/** @addtogroup schedules
 * @{ */

/** Weekdays of a week or access schedule, index 0 to 6. */
#define KVN_WEEKDAY_COUNT 7
/** Holiday schedules of a kvn_holiday_schedule_table (command 106). */
#define KVN_HOLIDAY_SCHEDULE_COUNT 64
/** Holidays of one holiday schedule. */
#define KVN_HOLIDAY_COUNT 50
/** Access schedules of a kvn_access_schedule_table (command 105). */
#define KVN_ACCESS_SCHEDULE_COUNT 64
/** Bytes of a schedule or holiday name field; a name read back has no NUL added. */
#define KVN_SCHEDULE_NAME 51

/** @} */

/** @addtogroup settings
 * @{ */

/* Fields are named by the tag that carries them; their meaning is the terminal's. */
/** Specific-purpose input settings (command 112): three inputs of three fields each. */
typedef struct kvn_specific_purpose_input_setting {
    uint32_t input_1_value_a;  /* tag 2 */
    uint8_t input_1_flag;      /* tag 3 */
    uint32_t input_1_value_b;  /* tag 1 */
    uint32_t input_2_value_a;  /* tag 5 */
    uint8_t input_2_flag;      /* tag 6 */
    uint32_t input_2_value_b;  /* tag 4 */
    uint32_t input_3_value_a;  /* tag 8 */
    uint8_t input_3_flag;      /* tag 9 */
    uint32_t input_3_value_b;  /* tag 7 */
} kvn_specific_purpose_input_setting;
KVN_RECORD_SIZE(kvn_specific_purpose_input_setting, 36, 36);

/** One output of the specific-purpose output settings; a tag-1 container on the wire. */
typedef struct kvn_specific_purpose_output_entry {
    uint32_t value_2;  /* inner tag 2 */
    uint32_t value_3;  /* inner tag 3 */
    uint32_t value_4;  /* inner tag 4 */
    uint8_t flag_5;    /* inner tag 5 */
    uint32_t value_6;  /* inner tag 6 */
} kvn_specific_purpose_output_entry;
KVN_RECORD_SIZE(kvn_specific_purpose_output_entry, 20, 20);

/** Specific-purpose output settings (command 113). */
typedef struct kvn_specific_purpose_output_setting {
    /** The outputs, one tag-1 container each, in array order. */
    kvn_specific_purpose_output_entry entries[KVN_SPECIFIC_PURPOSE_OUTPUT_COUNT];
    uint8_t byte_7;  /* tag 7 */
    uint8_t byte_8;  /* tag 8 */
    uint8_t byte_9;  /* tag 9 */
} kvn_specific_purpose_output_setting;
KVN_RECORD_SIZE(kvn_specific_purpose_output_setting, 184, 184);

/** One entry of the time attendance settings; a tag-2 container on the wire. */
typedef struct kvn_time_attendance_entry {
    uint32_t value;    /* inner tag 4 */
    uint8_t bytes[4];  /* inner tags 6, 7, 8 and 9 */
} kvn_time_attendance_entry;
KVN_RECORD_SIZE(kvn_time_attendance_entry, 8, 8);

/* Slots 1 to 16 of texts_a, texts_b and values are item i (a tag-1 container with the
 * item number under inner tag 3); slot 0 is never sent, a read may fill it. */
/** Time attendance settings (command 109). */
typedef struct kvn_time_attendance_setting {
    uint32_t value_10;  /* tag 10 */
    uint32_t value_11;  /* tag 11 */
    /** Item texts A, inner tag 12; a read stores at most 50 bytes. */
    char texts_a[KVN_TIME_ATTENDANCE_SLOTS][KVN_TIME_ATTENDANCE_TEXT];
    /** Item texts B, inner tag 13; a read stores at most 50 bytes. */
    char texts_b[KVN_TIME_ATTENDANCE_SLOTS][KVN_TIME_ATTENDANCE_TEXT];
    /** The entries, one tag-2 container each, in array order. */
    kvn_time_attendance_entry entries[KVN_TIME_ATTENDANCE_ENTRIES];
    /** Item values, inner tag 14. */
    uint32_t values[KVN_TIME_ATTENDANCE_SLOTS];
    uint32_t value_19;  /* tag 19 */
} kvn_time_attendance_setting;
KVN_RECORD_SIZE(kvn_time_attendance_setting, 2008, 2008);

/** One job code; a tag-16 container on the wire. */
typedef struct kvn_job_code {
    uint32_t id;    /* inner tag 17; the terminal wants non-zero ids unique */
    char name[52];  /* inner tag 18; a read stores at most 51 bytes */
} kvn_job_code;
KVN_RECORD_SIZE(kvn_job_code, 56, 56);

/** The job code list (command 146). */
typedef struct kvn_job_code_list {
    /** The job codes, all sent, empty ones included. */
    kvn_job_code codes[KVN_JOB_CODE_COUNT];
} kvn_job_code_list;
KVN_RECORD_SIZE(kvn_job_code_list, 1792, 1792);

/** VoIP settings (command 142); empty texts are not sent. */
typedef struct kvn_voip_setting {
    uint32_t value_1;    /* tag 1 */
    char text_2[1025];   /* tag 2 */
    char text_5[21];     /* tag 5 */
    char text_3[21];     /* tag 3 */
    char text_4[21];     /* tag 4 */
    uint32_t value_7;    /* tag 7 */
} kvn_voip_setting;
KVN_RECORD_SIZE(kvn_voip_setting, 1096, 1096);

/** One VoIP contact; a tag-1 container in the contact list, empty texts not sent. */
typedef struct kvn_voip_contact {
    char text_2[21];   /* inner tag 2 */
    char text_3[21];   /* inner tag 3 */
    uint32_t value_4;  /* inner tag 4 */
} kvn_voip_contact;
KVN_RECORD_SIZE(kvn_voip_contact, 48, 48);

/** The VoIP contact list (command 145). */
typedef struct kvn_voip_contact_list {
    /** The contacts, all sent, empty ones included. */
    kvn_voip_contact contacts[KVN_VOIP_CONTACT_COUNT];
} kvn_voip_contact_list;
KVN_RECORD_SIZE(kvn_voip_contact_list, 480, 480);

/** @} */

/** @addtogroup schedules
 * @{ */

/** One weekday of a schedule: eight one-byte values, each its own element. */
typedef struct kvn_day_schedule {
    uint8_t slots[8];  /* week schedule: tags 4 to 11; access schedule: tags 10 to 17 */
} kvn_day_schedule;
KVN_RECORD_SIZE(kvn_day_schedule, 8, 8);

/** The biometric (command 107) or door-open (command 155) week schedule. */
typedef struct kvn_week_schedule {
    uint32_t value;  /* tag 1 */
    /** Weekdays 0 to 6, each a tag-2 container with its index under tag 3. */
    kvn_day_schedule days[KVN_WEEKDAY_COUNT];
} kvn_week_schedule;
KVN_RECORD_SIZE(kvn_week_schedule, 60, 60);

/** One holiday; a tag-5 container, sent only when enabled is exactly 1. */
typedef struct kvn_holiday {
    uint32_t enabled;                 /* tag 16 */
    char name[KVN_SCHEDULE_NAME];     /* tag 7 */
    uint8_t slots[8];                 /* tags 8 to 15 */
} kvn_holiday;
KVN_RECORD_SIZE(kvn_holiday, 64, 64);

/** One holiday schedule; a tag-1 container, sent only when enabled is exactly 1. */
typedef struct kvn_holiday_schedule {
    uint32_t enabled;  /* tag 3 */
    char name[52];     /* tag 4; a read stores at most 51 bytes */
    /** Holidays 0 to 49, each with its index under tag 6. */
    kvn_holiday holidays[KVN_HOLIDAY_COUNT];
} kvn_holiday_schedule;
KVN_RECORD_SIZE(kvn_holiday_schedule, 3256, 3256);

/** All holiday schedules (command 106), index 0 to 63 under tag 2. */
typedef struct kvn_holiday_schedule_table {
    /** The schedules by index. */
    kvn_holiday_schedule schedules[KVN_HOLIDAY_SCHEDULE_COUNT];
} kvn_holiday_schedule_table;
KVN_RECORD_SIZE(kvn_holiday_schedule_table, 208384, 208384);

/** One access schedule; a tag-3 container, sent only when enabled is exactly 1. */
typedef struct kvn_access_schedule {
    uint32_t enabled;              /* tag 5 */
    char name[KVN_SCHEDULE_NAME];  /* tag 6 */
    uint8_t value;                 /* tag 7 */
    /** Weekdays 0 to 6, each a tag-8 container with its index under tag 9. */
    kvn_day_schedule days[KVN_WEEKDAY_COUNT];
} kvn_access_schedule;
KVN_RECORD_SIZE(kvn_access_schedule, 112, 112);

/** All access schedules (command 105), index 0 to 63 under tag 4. */
typedef struct kvn_access_schedule_table {
    uint32_t value;  /* tag 1 */
    uint8_t flag;    /* tag 2 */
    /** The schedules by index. */
    kvn_access_schedule schedules[KVN_ACCESS_SCHEDULE_COUNT];
} kvn_access_schedule_table;
KVN_RECORD_SIZE(kvn_access_schedule_table, 7176, 7176);

/** The names of the access schedules (command 119), by schedule index. */
typedef struct kvn_access_schedule_name_list {
    /** Name of schedule i; a read stores at most 51 bytes and adds no NUL. */
    char names[KVN_ACCESS_SCHEDULE_COUNT][KVN_SCHEDULE_NAME];
} kvn_access_schedule_name_list;
KVN_RECORD_SIZE(kvn_access_schedule_name_list, 3264, 3264);

/** @} */

/** @addtogroup settings
 * @{ */

/**
 * Writes the specific-purpose input settings: tags 2, 3, 1, 5, 6, 4, 8, 9, 7 (45 bytes).
 * @param[in] conn     open connection.
 * @param[in] setting  the settings.
 * @par Request: set (0x00010002), command 112.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_specific_purpose_input_setting(kvn_device_conn *conn, const kvn_specific_purpose_input_setting *setting);

/**
 * Reads the specific-purpose input settings.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 112.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_specific_purpose_input_setting(kvn_device_conn *conn, kvn_specific_purpose_input_setting *setting);

/**
 * Resets the specific-purpose input settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 112.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_specific_purpose_input_setting(kvn_device_conn *conn);

/**
 * Writes the specific-purpose output settings: tags 7, 8, 9, then the nine outputs as
 * tag-1 containers with four-byte lengths (306 bytes).
 * @param[in] conn     open connection.
 * @param[in] setting  the settings.
 * @par Request: set (0x00010002), command 113.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_specific_purpose_output_setting(kvn_device_conn *conn, const kvn_specific_purpose_output_setting *setting);

/**
 * Reads the specific-purpose output settings.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries; the k-th tag-1 container
 *                      fills output k - 1, containers past the ninth are dropped.
 * @par Request: get (0x00020002), command 113.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_specific_purpose_output_setting(kvn_device_conn *conn, kvn_specific_purpose_output_setting *setting);

/**
 * Resets the specific-purpose output settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 113.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_specific_purpose_output_setting(kvn_device_conn *conn);

/**
 * Writes the time attendance settings: tags 10, 11, 19, items 1 to 16 (texts sent even
 * when empty), then the 24 entries.
 * @param[in] conn     open connection.
 * @param[in] setting  the settings; slot 0 of the item arrays is not sent.
 * @par Request: set (0x00010002), command 109.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_time_attendance_setting(kvn_device_conn *conn, const kvn_time_attendance_setting *setting);

/**
 * Reads the time attendance settings.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries: an item goes to the slot of
 *                      its number, the k-th entry container to entry k - 1 (past the 24th: dropped).
 * @par Request: get (0x00020002), command 109.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1009 an item number above 16; decoding stops, what came before stays stored.
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_time_attendance_setting(kvn_device_conn *conn, kvn_time_attendance_setting *setting);

/**
 * Resets the time attendance settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 109.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_time_attendance_setting(kvn_device_conn *conn);

/**
 * Writes the job code list: all 32 job codes as tag-16 containers, names sent even when empty.
 * @param[in] conn  open connection.
 * @param[in] list  the job codes.
 * @par Request: set (0x00010002), command 146.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1023 a repeated id ("JobCode ID must be unique").
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_job_code_list(kvn_device_conn *conn, const kvn_job_code_list *list);

/**
 * Reads the job code list; each name (tag 18) ends a job code, the first filling job code 0,
 * and at most 32 are filled.
 * @param[in] conn   open connection.
 * @param[out] list  receives the job codes the answer carries.
 * @par Request: get (0x00020002), command 146.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_job_code_list(kvn_device_conn *conn, kvn_job_code_list *list);

/**
 * Resets the job code list to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 146.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_job_code_list(kvn_device_conn *conn);

/**
 * Writes the VoIP settings: tags 1, 2, 3, 4, 5, 7, empty texts left out.
 * @param[in] conn     open connection.
 * @param[in] setting  the settings.
 * @par Request: set (0x00010002), command 142.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -4033 a VoIP call is running.
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_voip_setting(kvn_device_conn *conn, const kvn_voip_setting *setting);

/**
 * Reads the VoIP settings.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries; texts take at most their
 *                      field's size and no NUL is added.
 * @par Request: get (0x00020002), command 142.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_voip_setting(kvn_device_conn *conn, kvn_voip_setting *setting);

/**
 * Resets the VoIP settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 142.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -4033 a VoIP call is running.
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_voip_setting(kvn_device_conn *conn);

/**
 * Writes the VoIP contact list: all ten contacts as tag-1 containers, empty texts left out.
 * @param[in] conn  open connection.
 * @param[in] list  the contacts.
 * @par Request: set (0x00010002), command 145.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1021 more than one default contact.
 * @retval -1022 a repeated VoIP id.
 * @retval -1 no memory for the 204800-byte exchange buffer (nothing is sent), or an
 *            answer of 204800 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_voip_contact_list(kvn_device_conn *conn, const kvn_voip_contact_list *list);

/**
 * Reads the VoIP contact list; the k-th container fills contact k - 1, past the tenth dropped.
 * @param[in] conn   open connection.
 * @param[out] list  receives the contacts the answer carries.
 * @par Request: get (0x00020002), command 145.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 no memory for the 204800-byte exchange buffer (nothing is sent), a malformed
 *            answer, or one of 204800 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_voip_contact_list(kvn_device_conn *conn, kvn_voip_contact_list *list);

/**
 * Resets the VoIP contact list to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 145.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_voip_contact_list(kvn_device_conn *conn);

/**
 * Reads the default VoIP contact: its two texts only; value_4 is left as it is.
 * @param[in] conn      open connection.
 * @param[out] contact  receives tags 2 and 3 of the answer.
 * @par Request: get (0x00020002), command 147.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_voip_default_contact(kvn_device_conn *conn, kvn_voip_contact *contact);

/** @} */

/** @addtogroup schedules
 * @{ */

/**
 * Writes the biometric week schedule: tag 1, then always all seven weekdays (237 bytes).
 * @param[in] conn      open connection.
 * @param[in] schedule  the schedule.
 * @par Request: set (0x00010002), command 107.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_biometric_schedule_setting(kvn_device_conn *conn, const kvn_week_schedule *schedule);

/**
 * Reads the biometric week schedule.
 * @param[in] conn       open connection.
 * @param[out] schedule  receives the fields the answer carries, each day by its index.
 * @par Request: get (0x00020002), command 107.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1009 a weekday of 7 or more; decoding stops, what came before stays stored.
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_biometric_schedule_setting(kvn_device_conn *conn, kvn_week_schedule *schedule);

/**
 * Resets the biometric week schedule to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 107.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_biometric_schedule_setting(kvn_device_conn *conn);

/**
 * Writes the door-open week schedule: tag 1, then always all seven weekdays (237 bytes).
 * @param[in] conn      open connection.
 * @param[in] schedule  the schedule.
 * @par Request: set (0x00010002), command 155.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -4034 the door-open schedule is already active.
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_door_open_schedule_setting(kvn_device_conn *conn, const kvn_week_schedule *schedule);

/**
 * Reads the door-open week schedule.
 * @param[in] conn       open connection.
 * @param[out] schedule  receives the fields the answer carries, each day by its index.
 * @par Request: get (0x00020002), command 155.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1009 a weekday of 7 or more; decoding stops, what came before stays stored.
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_door_open_schedule_setting(kvn_device_conn *conn, kvn_week_schedule *schedule);

/**
 * Resets the door-open week schedule to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 155.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_door_open_schedule_setting(kvn_device_conn *conn);

/**
 * Writes one holiday schedule of the table, with its enabled holidays. A schedule whose
 * enabled is not 1 is sent as an empty payload.
 * @param[in] conn   open connection.
 * @param[in] table  the caller's table; only schedule @p index is sent.
 * @param[in] index  schedule index; only its low byte counts.
 * @par Request: set (0x00010002), command 106.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1006 the low byte of @p index is 64 or more; nothing is sent.
 * @retval -1 no memory for the 204800-byte exchange buffer (nothing is sent), or an answer
 *            of 204800 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_single_holiday_schedule_setting(kvn_device_conn *conn, const kvn_holiday_schedule_table *table, uint32_t index);

/**
 * Writes every holiday schedule whose enabled is 1, each with its enabled holidays.
 * @param[in] conn   open connection.
 * @param[in] table  the schedules.
 * @par Request: set (0x00010002), command 106.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 no memory for the 204800-byte exchange buffer, or schedules too large for it
 *            (nothing is sent in either case); an answer of 204800 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_all_holiday_schedule_setting(kvn_device_conn *conn, const kvn_holiday_schedule_table *table);

/**
 * Reads the holiday schedules; each schedule and holiday goes to the entry of its index.
 * @param[in] conn    open connection.
 * @param[out] table  receives the fields the answer carries; names take at most 51 bytes and no NUL is added.
 * @par Request: get (0x00020002), command 106.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1009 a schedule index of 64 or more or a holiday index of 50 or more; decoding
 *               stops, what came before stays stored.
 * @retval -1 no memory for the 204800-byte exchange buffer (nothing is sent), a malformed
 *            answer, or one of 204800 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_all_holiday_schedule_setting(kvn_device_conn *conn, kvn_holiday_schedule_table *table);

/**
 * Resets one holiday schedule: the index goes out in four bytes under tag 2.
 * @param[in] conn   open connection.
 * @param[in] index  schedule index, not checked here.
 * @par Request: reset (0x00030002), command 106.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_holiday_schedule_setting(kvn_device_conn *conn, uint32_t index);

/**
 * Writes the access schedule table: tags 1 and 2, then every schedule whose enabled is 1
 * with its seven weekdays.
 * @param[in] conn   open connection.
 * @param[in] table  the schedules.
 * @par Request: set (0x00010002), command 105.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 no memory for the 204800-byte exchange buffer (nothing is sent), or an answer
 *            of 204800 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_all_access_schedule_setting(kvn_device_conn *conn, const kvn_access_schedule_table *table);

/**
 * Reads the access schedule table; each schedule and weekday goes to the entry of its index.
 * @param[in] conn    open connection.
 * @param[out] table  receives the fields the answer carries; names take at most 51 bytes and no NUL is added.
 * @par Request: get (0x00020002), command 105.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1009 a schedule index of 64 or more or a weekday of 7 or more; decoding stops,
 *               what came before stays stored.
 * @retval -1 no memory for the 204800-byte exchange buffer (nothing is sent), a malformed
 *            answer, or one of 204800 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_all_access_schedule_setting(kvn_device_conn *conn, kvn_access_schedule_table *table);

/**
 * Resets one access schedule: the index goes out in four bytes under tag 4.
 * @param[in] conn   open connection.
 * @param[in] index  schedule index, not checked here.
 * @par Request: reset (0x00030002), command 105.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_access_schedule_setting(kvn_device_conn *conn, uint32_t index);

/**
 * Reads the names of the access schedules (tag-1 containers: index under tag 2, name under tag 3).
 * @param[in] conn   open connection.
 * @param[out] list  receives each name at its index; names take at most 51 bytes and no NUL is added.
 * @par Request: get (0x00020002), command 119.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1009 an index of 64 or more; decoding stops, the names before it stay stored.
 * @retval -1 no memory for the 51200-byte exchange buffer (nothing is sent), a malformed
 *            answer, or one of 51200 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_access_schedule_list(kvn_device_conn *conn, kvn_access_schedule_name_list *list);

/** @} */

/* ------------------------------------------------------------------------- */
/* Users, enrolment, identification, verification and smart-card operations */
/* ------------------------------------------------------------------------- */

/** @addtogroup users
 * @{ */

/* Fields named attr_tNN, text_tNN and data_tNN are named by the tag that carries them;
 * the library passes them through without giving them a meaning. */

/** Template data bytes of one user-record template slot. */
#define KVN_USER_TEMPLATE_SIZE 1572
/** Template slots of a user record. */
#define KVN_USER_TEMPLATE_COUNT 10
/** Entries of a user record's attr_t35 list. */
#define KVN_USER_VALUE_COUNT 10
/** Bytes each enrolment answer buffer (data_t03, data_t06) must hold: any answer is shorter. */
#define KVN_ENROLLMENT_DATA_SIZE 512000
/** Sample bytes of an identification request. */
#define KVN_IDENTIFY_SAMPLE_SIZE 204800

/** @} */

/** @addtogroup cards
 * @{ */

/** Entries of a revoked-card list: as many as its one-byte count can name. */
#define KVN_REVOKED_CARD_COUNT 256

/** @} */

/** @addtogroup users
 * @{ */

/** One biometric template slot of a user record (1580 bytes). */
typedef struct kvn_user_template {
    uint8_t finger_index;                          /* tag 7: the finger the template belongs to */
    uint8_t attr_t15;                              /* tag 15 */
    uint8_t attr_t21;                              /* tag 21 */
    uint8_t attr_t17;                              /* tag 17 */
    uint8_t template_data[KVN_USER_TEMPLATE_SIZE]; /* tag 23: template bytes */
    uint32_t template_length;                      /* valid bytes of template_data (at most 1572) */
} kvn_user_template;
KVN_RECORD_SIZE(kvn_user_template, 1580, 1580);

/** A user known to the terminal (16232 bytes, the size the terminal's records take). */
typedef struct kvn_user_record {
    char user_id[65];          /* tag 2: NUL-terminated, at most 64 characters; the record's key */
    uint8_t attr_t06;          /* tag 6: always sent */
    char text_t03[51];         /* tag 3: text_t03_length bytes, at most 50 */
    uint32_t text_t03_length;  /* bytes of text_t03 sent; tag 3 goes out even when 0 */
    char text_t04[51];         /* tag 4: text_t04_length bytes, at most 50 */
    uint32_t text_t04_length;  /* bytes of text_t04; tag 4 is sent only when non-zero */
    uint8_t attr_t29;          /* tag 29: sent by a store, never read back */
    uint32_t attr_t05;         /* tag 5: sent only when non-zero */
    kvn_user_template templates[KVN_USER_TEMPLATE_COUNT]; /* tag-22 groups: slots below template_count */
    int32_t template_count;    /* used template slots, 0 to 10; a read increments its low byte only */
    uint32_t attr_t08;         /* tag 8: sent only when non-zero */
    uint32_t attr_t09;         /* tag 9: sent only when non-zero */
    char text_t10[11];         /* tag 10: NUL-terminated, at most 10; sent only when not empty */
    uint32_t attr_t11;         /* tag 11: one byte in a store, four on a card; read back zero-extended */
    uint32_t attr_t12;         /* tag 12: one byte in a store, four on a card; read back zero-extended */
    uint8_t attr_t13;          /* tag 13 */
    uint8_t attr_t14;          /* tag 14 */
    uint32_t attr_t18;         /* tag 18 */
    uint32_t attr_t16;         /* tag 16: sent as one byte; read back zero-extended */
    char text_t19[64];         /* tag 19: always all 64 bytes */
    char text_t20[64];         /* tag 20: always all 64 bytes */
    uint8_t data_t32[16];      /* tag 32: sent by a store, never read back */
    uint8_t attr_t33;          /* tag 33 */
    uint32_t attr_t35[KVN_USER_VALUE_COUNT]; /* tag 35 in tag-34 groups: entries below attr_t35_count */
    uint8_t attr_t35_count;    /* used entries of attr_t35, 0 to 10 */
    uint8_t reserved[11];      /* not touched by the library */
} kvn_user_record;
KVN_RECORD_SIZE(kvn_user_record, 16232, 16232);

/** The terminal's answer to a store that was not a plain success. */
typedef struct kvn_user_store_result {
    char user_id[65];         /* tag 2: at most 64 bytes */
    uint32_t attr_t30;        /* tag 30: first four bytes */
    uint8_t data_t31[10];     /* tag 31: at most 10 bytes */
    uint8_t data_t31_length;  /* bytes stored in data_t31 */
} kvn_user_store_result;
KVN_RECORD_SIZE(kvn_user_store_result, 84, 84);

/** Argument of kvn_store_user_record(). */
typedef struct kvn_user_store_request {
    kvn_user_record *record;        /* the record to store */
    kvn_user_store_result *result;  /* receives the terminal's answer, if it gives one */
} kvn_user_store_request;
KVN_RECORD_SIZE(kvn_user_store_request, 16, 16);

/** Argument of kvn_delete_user_templete_indexes(). */
typedef struct kvn_user_template_indexes {
    char user_id[64];            /* tag 2: NUL-terminated */
    uint8_t finger_indexes[10];  /* tag 7: the fingers whose templates go */
    int8_t finger_index_count;   /* bytes of finger_indexes sent, 0 to 10 */
} kvn_user_template_indexes;
KVN_RECORD_SIZE(kvn_user_template_indexes, 75, 75);

/** Enrolment: what is sent and what the terminal answers. */
typedef struct kvn_enrollment_request {
    char user_id[64];   /* sent, tag 1: NUL-terminated */
    uint8_t attr_t09;   /* sent, tag 9 */
    uint32_t attr_t02;  /* answer tag 2 */
    uint8_t *data_t03;  /* answer tag 3 is copied here whole; KVN_ENROLLMENT_DATA_SIZE bytes, or NULL to skip */
    uint32_t attr_t04;  /* answer tag 4 */
    uint8_t attr_t08;   /* answer tag 8 */
    uint32_t attr_t05;  /* answer tag 5 */
    uint8_t *data_t06;  /* answer tag 6 is copied here whole; KVN_ENROLLMENT_DATA_SIZE bytes, or NULL to skip */
    uint8_t attr_t07;   /* answer tag 7 */
    char text_t10[64];  /* answer tag 10 (at most 64 bytes), kvn_enrollment_with_duplicate_identify() only */
    uint8_t attr_t11;   /* answer tag 11, kvn_enrollment_with_duplicate_identify() only */
} kvn_enrollment_request;
KVN_RECORD_SIZE(kvn_enrollment_request, 176, 176);

/** Identification: the template or sample sent and the user identified. */
typedef struct kvn_identify_request {
    uint8_t template_data[KVN_USER_TEMPLATE_SIZE];  /* sent, tag 1 */
    uint32_t template_length;                       /* bytes of template_data sent; 0: tag 1 not sent */
    uint8_t sample_data[KVN_IDENTIFY_SAMPLE_SIZE];  /* sent, tag 2 */
    uint32_t sample_length;                         /* bytes of sample_data sent; 0: tag 2 not sent */
    char user_id[64];                               /* answer tag 2: at most 64 bytes */
    uint8_t attr_t03;                               /* answer tag 3 */
    uint32_t attr_t01;                              /* answer tag 1 */
} kvn_identify_request;
KVN_RECORD_SIZE(kvn_identify_request, 206452, 206452);

/** A verification's answer. */
typedef struct kvn_verify_result {
    uint32_t attr_t01;  /* answer tag 1 */
    uint32_t attr_t02;  /* answer tag 2 */
} kvn_verify_result;
KVN_RECORD_SIZE(kvn_verify_result, 8, 8);

/** Verification against a template the caller holds. */
typedef struct kvn_verify_template_request {
    const uint8_t *template_data;  /* sent, tag 3: template_length bytes, sent from where they lie */
    uint32_t template_length;      /* sent, tag 2 (four bytes) */
    uint8_t attr_t01;              /* sent, tag 1 */
    kvn_verify_result result;      /* the answer */
} kvn_verify_template_request;
KVN_RECORD_SIZE(kvn_verify_template_request, 24, 24);

/** Verification against the templates the terminal holds for a user. */
typedef struct kvn_verify_user_id_request {
    char user_id[64];          /* sent, tag 1: NUL-terminated */
    kvn_verify_result result;  /* the answer */
} kvn_verify_user_id_request;
KVN_RECORD_SIZE(kvn_verify_user_id_request, 72, 72);

/** Verification against a user record sent with the request. */
typedef struct kvn_verify_user_record_request {
    kvn_user_record *record;   /* sent, encoded as for a store */
    void *unused;              /* neither read nor written (the place of a store's result) */
    kvn_verify_result result;  /* the answer */
} kvn_verify_user_record_request;
KVN_RECORD_SIZE(kvn_verify_user_record_request, 24, 24);

/** @} */

/** @addtogroup cards
 * @{ */

/** What a smart card holds (16300 bytes). */
typedef struct kvn_smart_card_data {
    uint8_t serial[64];    /* tag 12: at most 64 bytes */
    uint32_t serial_info;  /* tag 11 */
    kvn_user_record user;  /* tag 17: the user record on the card */
} kvn_smart_card_data;
KVN_RECORD_SIZE(kvn_smart_card_data, 16300, 16300);

/** Bytes the caller has encoded for a card, sent as they are. */
typedef struct kvn_smart_card_raw_data {
    const uint8_t *data;  /* the payload, sent from where it lies */
    uint32_t length;      /* bytes of data */
} kvn_smart_card_raw_data;
KVN_RECORD_SIZE(kvn_smart_card_raw_data, 16, 16);

/** The terminal's revoked cards: request and answer. */
typedef struct kvn_revoked_card_list {
    uint8_t request_value_1;  /* sent, tag 27 */
    uint8_t request_value_2;  /* sent, tag 28 */
    uint8_t entry_count;      /* cleared by the call, then one more for every entry received */
    uint8_t entries[KVN_REVOKED_CARD_COUNT][64]; /* tag 12: entry n is the n-th card identifier answered */
} kvn_revoked_card_list;
KVN_RECORD_SIZE(kvn_revoked_card_list, 16387, 16387);

/** @} */

/** @addtogroup users
 * @{ */

/**
 * Stores a user record with its templates.
 * @param[in] conn         open connection.
 * @param[in,out] request  the record to store, and the result filled from an answer with a payload.
 * @par Request: set (0x00010002), command 7.
 * @return 0 on success (an answer without payload), the terminal's status (returned unchanged), or:
 * @retval -14 the answer carried a payload: the store was refused, the details are in the result.
 * @retval -1 null argument; a count or length beyond its array, or a record over 20480 bytes (nothing
 *         is sent); a malformed answer.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_store_user_record(kvn_device_conn *conn, kvn_user_store_request *request);

/**
 * Reads a user record by its user_id. The whole record is cleared once the answer has
 * arrived; attr_t29 and data_t32 therefore read back as zero.
 * @param[in] conn        open connection.
 * @param[in,out] record  user_id names the user; receives the record.
 * @par Request: get (0x00020002), command 7.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 null record, malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_user_record(kvn_device_conn *conn, kvn_user_record *record);

/**
 * Deletes a user by its user_id. An answer with a payload is decoded into the same
 * record, which is not cleared first.
 * @param[in] conn        open connection.
 * @param[in,out] record  user_id names the user.
 * @par Request: reset (0x00030002), command 7.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 null record, malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_delete_user_record(kvn_device_conn *conn, kvn_user_record *record);

/**
 * Reads the number of users.
 * @param[in] conn    open connection.
 * @param[out] count  receives tag 26 of the answer; untouched by an empty answer.
 * @par Request: get (0x00020002), command 8.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 null count, malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_user_count(kvn_device_conn *conn, uint32_t *count);

/**
 * Reads the number of biometric templates.
 * @param[in] conn    open connection.
 * @param[out] count  receives tag 26 of the answer; untouched by an empty answer.
 * @par Request: get (0x00020002), command 508.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 null count, malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_biometric_count(kvn_device_conn *conn, uint32_t *count);

/**
 * Deletes a user's templates of the listed fingers.
 * @param[in] conn     open connection.
 * @param[in] indexes  the user and the finger indexes.
 * @par Request: set (0x00010002), command 505.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 null argument or finger_index_count outside 0 to 10 (nothing is sent); an answer of
 *         20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_delete_user_templete_indexes(kvn_device_conn *conn, const kvn_user_template_indexes *indexes);

/**
 * Asks whether the terminal holds a template of this finger for this user.
 * @param[in] conn          open connection.
 * @param[in] user_id       NUL-terminated user id, sent under tag 1.
 * @param[in] finger_index  sent under tag 2.
 * @par Request: get (0x00020002), command 13.
 * @return 0 when it does, the terminal's status (returned unchanged), or:
 * @retval -1 null user id or a request over 1024 bytes (nothing is sent); an answer of 1024 bytes
 *         or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_user_validate_user_id_finger_index(kvn_device_conn *conn, const char *user_id,
                                                       uint8_t finger_index);

/**
 * Replaces (or adds) the template of one finger of a user. The request is limited to
 * 1024 bytes, so templates of about 1000 bytes and more are refused before sending.
 * @param[in] conn           open connection.
 * @param[in] user_id        NUL-terminated user id, sent under tag 1.
 * @param[in] finger_index   sent under tag 2.
 * @param[in] template_data  the template, sent under tag 3.
 * @param[in] length         bytes of template_data.
 * @par Request: get (0x00020002), command 14.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 null argument or a request over 1024 bytes (nothing is sent); an answer of 1024 bytes
 *         or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_user_update_biometric_template(kvn_device_conn *conn, const char *user_id, uint8_t finger_index,
                                                   const void *template_data, uint32_t length);

/**
 * Enrols a finger of a user (tag 9 of the request) and reads the capture's results.
 * @param[in] conn         open connection.
 * @param[in,out] request  user_id and attr_t09 sent; answer tags 2 to 8 received.
 * @par Request: get (0x00020002), command 1.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 null request, malformed answer, or one of 512000 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_enrollment(kvn_device_conn *conn, kvn_enrollment_request *request);

/**
 * Enrols as kvn_enrollment() does, the terminal first checking that the finger is not
 * another user's; answer tags 10 and 11 name that user.
 * @param[in] conn         open connection.
 * @param[in,out] request  user_id and attr_t09 sent; answer tags 2 to 8, 10 and 11 received.
 * @par Request: get (0x00020002), command 15.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 null request, malformed answer, or one of 512000 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_enrollment_with_duplicate_identify(kvn_device_conn *conn, kvn_enrollment_request *request);

/**
 * Identifies the finger on the terminal's sensor.
 * @param[in] conn          open connection.
 * @param[in,out] request   receives user_id, attr_t03 and attr_t01; nothing is sent.
 * @par Request: get (0x00020002), command 6.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 null request, malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_identify_user(kvn_device_conn *conn, kvn_identify_request *request);

/**
 * Identifies the user a template or sample belongs to. Each is sent only when its
 * length is non-zero, both from where they lie; together they must fit 204800 bytes.
 * @param[in] conn         open connection.
 * @param[in,out] request  template and sample sent; user_id, attr_t03 and attr_t01 received.
 * @par Request: get (0x00020002), command 16.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 null request, a length beyond its array or a request over 204800 bytes (nothing is
 *         sent); a malformed answer, or one of 204800 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_identify_user_with_biometric_template(kvn_device_conn *conn, kvn_identify_request *request);

/**
 * Verifies the finger on the sensor against a template.
 * @param[in] conn         open connection.
 * @param[in,out] request  attr_t01, template_length and the template sent; result received.
 * @par Request: get (0x00020002), command 3.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 null request or template, a request over 20480 bytes (nothing is sent); a malformed
 *         answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_verify_by_template(kvn_device_conn *conn, kvn_verify_template_request *request);

/**
 * Verifies the finger on the sensor against the templates of a stored user.
 * @param[in] conn         open connection.
 * @param[in,out] request  user_id sent; result received.
 * @par Request: get (0x00020002), command 4.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 null request, malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_verify_by_user_id(kvn_device_conn *conn, kvn_verify_user_id_request *request);

/**
 * Verifies the finger on the sensor against a user record sent with the request,
 * encoded as kvn_store_user_record() encodes it.
 * @param[in] conn         open connection.
 * @param[in,out] request  the record sent; result received.
 * @par Request: get (0x00020002), command 5.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 null argument, a count or length beyond its array or a record over 20480 bytes
 *         (nothing is sent); a malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_verify_by_user_record(kvn_device_conn *conn, kvn_verify_user_record_request *request);

/** @} */

/** @addtogroup cards
 * @{ */

/**
 * Secures the smart card presented to the terminal.
 * @param[in] conn  open connection.
 * @par Request: set (0x00010002), command 906, no payload.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_secure_smart_card(kvn_device_conn *conn);

/**
 * Formats the DESFire card presented to the terminal.
 * @param[in] conn  open connection.
 * @par Request: set (0x00010002), command 907, no payload.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_format_desfire_card(kvn_device_conn *conn);

/**
 * Reads the smart card presented to the terminal. The record is not cleared first: a
 * card without a user record leaves data->user as it was.
 * @param[in] conn        open connection.
 * @param[in,out] data    receives the serial, serial_info and the user record.
 * @par Request: get (0x00020002), command 909.
 * @return 0 on success or the last user record's decoding result, the terminal's status
 *         (returned unchanged), or:
 * @retval -1 null data, malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_read_data_on_smart_card(kvn_device_conn *conn, kvn_smart_card_data *data);

/**
 * Writes bytes the caller has encoded to the smart card presented; they are the whole
 * payload, sent from where they lie.
 * @param[in] conn  open connection.
 * @param[in] data  the bytes and their length (0: an empty payload).
 * @par Request: set (0x00010002), command 905.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 null argument, a payload over the frame's bound (nothing is sent), or an answer of
 *         1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_write_data_on_smart_card(kvn_device_conn *conn, const kvn_smart_card_raw_data *data);

/**
 * Writes a user record to the smart card presented. Tags 29 and 32 are not written,
 * attr_t11 and attr_t12 go out as four bytes.
 * @param[in] conn    open connection.
 * @param[in] record  the record; its user_id must consist of ASCII letters and digits.
 * @par Request: set (0x00010002), command 905.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -2020 the user id holds another character (nothing is sent).
 * @retval -1 null record, a count or length beyond its array, or a record over 20480 bytes
 *         (nothing is sent); an answer of 204800 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_write_user_record_on_smart_card(kvn_device_conn *conn, const kvn_user_record *record);

/**
 * Resets the smart card presented to the terminal.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 905, no payload.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_smart_card(kvn_device_conn *conn);

/**
 * Revokes a card.
 * @param[in] conn     open connection.
 * @param[in] card_id  the 64-byte card identifier, sent under tag 12.
 * @par Request: set (0x00010002), command 910.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 null card_id, or an answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_revoke_smart_card(kvn_device_conn *conn, const uint8_t *card_id);

/**
 * Takes a card off the revoked list.
 * @param[in] conn     open connection.
 * @param[in] card_id  the 64-byte card identifier, sent under tag 12.
 * @par Request: reset (0x00030002), command 910.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 null card_id, or an answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_unrevoke_smart_card(kvn_device_conn *conn, const uint8_t *card_id);

/**
 * Reads the number of revoked cards.
 * @param[in] conn    open connection.
 * @param[out] count  receives tag 18 of the answer; untouched by an empty answer.
 * @par Request: get (0x00020002), command 911.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 null count, malformed answer, or one of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_revoked_smart_card_count(kvn_device_conn *conn, uint32_t *count);

/**
 * Reads revoked card identifiers. entry_count is cleared before the request goes out;
 * entries received after the 256th wrap around to the first.
 * @param[in] conn      open connection.
 * @param[in,out] list  request_value_1 and request_value_2 sent; entries received.
 * @par Request: get (0x00020002), command 910.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 null list, malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_revoked_smart_card_list(kvn_device_conn *conn, kvn_revoked_card_list *list);

/** @} */

/* ------------------------------------------------------------------------- */
/* Transaction logs, file and firmware transfer, user groups */
/* ------------------------------------------------------------------------- */

/** @addtogroup logs
 * @{ */

/* Transaction logs (commands 401 to 413). A read answers one tag-1 container per
 * entry; the library does not page by itself: a caller steers further reads with the
 * criteria and marks what it has taken as read. */

/** Entries a kvn_transaction_log_query holds: the one-byte entry counter cannot pass it. */
#define KVN_TRANSACTION_LOG_MAX 256
/** Ids a kvn_transaction_log_id_list holds. */
#define KVN_TRANSACTION_LOG_ID_MAX 255

/** One journal entry (204 bytes, entries packed one after another). */
typedef struct kvn_transaction_log {
    uint32_t log_id;       /* tag 7: the id the mark functions send */
    uint32_t attr_t08;     /* tag 8 */
    uint32_t attr_t09;     /* tag 9 */
    uint32_t attr_t10;     /* tag 10 */
    uint32_t attr_t11;     /* tag 11 */
    uint32_t attr_t21;     /* tag 21 */
    char text_t12[64];     /* tag 12; a longer value fills the array, without a NUL */
    char text_t13[51];     /* tag 13; a longer value fills the array, without a NUL */
    char text_t23[51];     /* tag 23; a longer value fills the array, without a NUL */
    uint8_t attr_t14;      /* tag 14 */
    uint8_t attr_t15;      /* tag 15 */
    uint32_t attr_t16;     /* tag 16 */
    uint8_t attr_t17;      /* tag 17 */
    uint8_t attr_t18;      /* tag 18 */
    uint8_t attr_t19;      /* tag 19 */
    uint32_t attr_t20;     /* tag 20 */
} kvn_transaction_log;
KVN_RECORD_SIZE(kvn_transaction_log, 204, 204);

/** Criteria of a journal read or filtered count, and the entries a read returns. */
typedef struct kvn_transaction_log_query {
    uint8_t attr_t02;      /* tag 2, sent by the reads only, always: read parameter */
    uint8_t attr_t03;      /* tag 3, sent by the reads only, always: read parameter */
    uint32_t attr_t04;     /* tag 4, sent when not 0: criterion */
    uint32_t attr_t05;     /* tag 5, sent when not 0: criterion */
    char text_t12[64];     /* tag 12, sent when not empty, at its own length: criterion */
    char text_t13[51];     /* tag 13, sent when not empty, at its own length: criterion */
    uint32_t attr_t11;     /* tag 11, sent when not 0 (before tags 12 and 13): criterion */
    /** Filtered counts: the count (tag 6). Reads: the low byte counts the entries decoded
     *  (cleared before the request, wrapping after 255); the upper 24 bits are left as set. */
    uint32_t log_count;
    /** Entries decoded by a read, from index 0 (one per tag-1 container). */
    kvn_transaction_log entries[KVN_TRANSACTION_LOG_MAX];
} kvn_transaction_log_query;
KVN_RECORD_SIZE(kvn_transaction_log_query, 52360, 52360);

/** Ids for kvn_mark_transaction_logs_as_read(). */
typedef struct kvn_transaction_log_id_list {
    uint8_t count;                                 /* ids sent, 0 to 255 */
    uint32_t log_ids[KVN_TRANSACTION_LOG_ID_MAX];  /* tag 7 each, in order */
} kvn_transaction_log_id_list;
KVN_RECORD_SIZE(kvn_transaction_log_id_list, 1024, 1024);

/**
 * Reads the number of journal entries.
 * @param[in] conn    open connection.
 * @param[out] count  receives tag 6 of the answer; left as it was when the answer has no payload.
 * @par Request: get (0x00020002), command 405.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_transaction_log_total_count(kvn_device_conn *conn, uint32_t *count);

/**
 * Reads the number of journal entries not marked as read.
 * @param[in] conn    open connection.
 * @param[out] count  receives tag 6 of the answer; left as it was when the answer has no payload.
 * @par Request: get (0x00020002), command 406.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_transaction_log_unread_count(kvn_device_conn *conn, uint32_t *count);

/**
 * Reads the number of journal entries marked as read.
 * @param[in] conn    open connection.
 * @param[out] count  receives tag 6 of the answer; left as it was when the answer has no payload.
 * @par Request: get (0x00020002), command 407.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_transaction_log_read_count(kvn_device_conn *conn, uint32_t *count);

/**
 * Counts the journal entries of a date: the criteria without tags 2 and 3.
 * @param[in] conn       open connection.
 * @param[in,out] query  criteria in; the whole log_count set from tag 6 of the answer.
 * @par Request: get (0x00020002), command 408.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 request did not fit (nothing sent), malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_transaction_log_count_for_date(kvn_device_conn *conn, kvn_transaction_log_query *query);

/**
 * Counts the journal entries that meet the criteria (sent without tags 2 and 3).
 * @param[in] conn       open connection.
 * @param[in,out] query  criteria in; the whole log_count set from tag 6 of the answer.
 * @par Request: get (0x00020002), command 411.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 request did not fit (nothing sent), malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_transaction_log_count_for_criteria(kvn_device_conn *conn, kvn_transaction_log_query *query);

/**
 * Reads journal entries. The criteria go out as tags 2, 3, 4, 5, 11, 12, 13; each tag-1
 * container of the answer fills entries[low byte of log_count], which then goes up by one.
 * @param[in] conn       open connection.
 * @param[in,out] query  criteria in; entries and the low byte of log_count out (entries
 *                       decoded before a malformed element stay).
 * @par Request: get (0x00020002), command 401.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 request did not fit (nothing sent), malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_transaction_logs(kvn_device_conn *conn, kvn_transaction_log_query *query);

/**
 * Reads journal entries not marked as read, as kvn_get_transaction_logs() does.
 * @param[in] conn       open connection.
 * @param[in,out] query  criteria in; entries and the low byte of log_count out.
 * @par Request: get (0x00020002), command 402.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 request did not fit (nothing sent), malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_unread_transaction_logs(kvn_device_conn *conn, kvn_transaction_log_query *query);

/**
 * Reads journal entries marked as read, as kvn_get_transaction_logs() does.
 * @param[in] conn       open connection.
 * @param[in,out] query  criteria in; entries and the low byte of log_count out.
 * @par Request: get (0x00020002), command 403.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 request did not fit (nothing sent), malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_read_transaction_logs(kvn_device_conn *conn, kvn_transaction_log_query *query);

/**
 * Reads the journal entries of a date, as kvn_get_transaction_logs() does.
 * @param[in] conn       open connection.
 * @param[in,out] query  criteria in; entries and the low byte of log_count out.
 * @par Request: get (0x00020002), command 404.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 request did not fit (nothing sent), malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_transaction_logs_for_date(kvn_device_conn *conn, kvn_transaction_log_query *query);

/**
 * Reads the journal entries that meet the criteria, as kvn_get_transaction_logs() does.
 * @param[in] conn       open connection.
 * @param[in,out] query  criteria in; entries and the low byte of log_count out.
 * @par Request: get (0x00020002), command 412.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 request did not fit (nothing sent), malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_transaction_logs_for_criteria(kvn_device_conn *conn, kvn_transaction_log_query *query);

/**
 * Marks one journal entry as read (tag 7, four bytes).
 * @param[in] conn    open connection.
 * @param[in] log_id  the entry's log_id.
 * @par Request: set (0x00010002), command 409.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_mark_transaction_log_as_read(kvn_device_conn *conn, uint32_t log_id);

/**
 * Marks journal entries as read: one tag-7 element per id, in list order; a count of 0
 * sends an empty payload.
 * @param[in] conn  open connection.
 * @param[in] ids   the ids and their count.
 * @par Request: set (0x00010002), command 409.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_mark_transaction_logs_as_read(kvn_device_conn *conn, const kvn_transaction_log_id_list *ids);

/**
 * Marks one journal entry as sent online (tag 7, four bytes); a get request.
 * @param[in] conn    open connection.
 * @param[in] log_id  the entry's log_id.
 * @par Request: get (0x00020002), command 410.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_mark_transaction_log_as_online(kvn_device_conn *conn, uint32_t log_id);

/**
 * Deletes the whole journal. The request announces a payload of 20480 zero bytes.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 413.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_delete_all_transaction_logs(kvn_device_conn *conn);

/** @} */

/** @addtogroup files
 * @{ */

/* File transfer (command 120): a start exchange (request type 4 or 5), then one exchange
 * per packet of at most 65536 bytes (types 1 and 2). Local files are read and created
 * through the C runtime; paths are UTF-8 (wide paths on Windows). */

/** Bytes of file data one packet carries at most. */
#define KVN_FILE_PACKET_SIZE 65536

/** A file to move between a local path and the terminal, or to delete there. */
typedef struct kvn_file_transfer_request {
    uint32_t file_type;      /* tag 4: kind or slot of the file on the terminal */
    const char *local_path;  /* local file read by an upload, created by a download */
    char file_name[256];     /* tag 5, at its own length: the name on the terminal */
} kvn_file_transfer_request;
KVN_RECORD_SIZE(kvn_file_transfer_request, 272, 272);

/**
 * Sends a local file to the terminal: a start packet (tags 4, 5, 6 the size, 7 the packet
 * count), whose answer may replace the transfer id (tag 1), the size (6) and the packet count
 * (7; at most 65536 are sent), then one packet per 64 KiB (tags 1, 3, 8). A packet that fails
 * to go out is not repeated: the next chunk goes under the same packet number
 * (kvn_ext_upload_file() stops instead). Files of 4 GiB or more are refused.
 * @param[in] conn     open connection.
 * @param[in] request  file type, local path and name on the terminal.
 * @par Request: upload (0x00040002), then set (0x00010002) per packet, command 120.
 * @return 0 on success, the status of the last exchange, or:
 * @retval -13 the local file cannot be sized or opened, is 4 GiB or more, or reads short.
 * @retval -1 request did not fit, malformed start answer, or an answer of 204800 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_upload_file(kvn_device_conn *conn, const kvn_file_transfer_request *request);

/**
 * Fetches a file from the terminal into a local file, created before the terminal is asked:
 * a start packet (tags 4, 5), whose answer gives the transfer id, size and packet count, then
 * one request per packet (tags 1, 3). A packet that fails is asked again within the packet
 * count's number of attempts (at most 65536; kvn_ext_download_file() stops instead), so a
 * terminal that falls silent costs one read wait per attempt left; the terminal's packet
 * number (tag 3) decides when the last one has come.
 * @param[in] conn     open connection.
 * @param[in] request  file type, local path and name on the terminal.
 * @par Request: download (0x00050002), then get (0x00020002) per packet, command 120.
 * @return 0 on success, the status of the last exchange, or:
 * @retval -13 the local file cannot be created, or a write is short.
 * @retval -1 request did not fit, malformed answer, a packet of more than 65536 bytes, or an
 *            answer of 204800 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_download_file(kvn_device_conn *conn, const kvn_file_transfer_request *request);

/**
 * Deletes a file on the terminal (tags 4 and 5).
 * @param[in] conn     open connection.
 * @param[in] request  file type and name; the local path is not used.
 * @par Request: reset (0x00030002), command 120.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 request did not fit 1024 bytes (nothing sent), or an answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_delete_file(kvn_device_conn *conn, const kvn_file_transfer_request *request);

/**
 * Asks the terminal to upgrade its firmware from the package it holds (tag 5 = 1).
 * @param[in] conn  open connection.
 * @par Request: set (0x00010002), command 601.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_upgrade_firware(kvn_device_conn *conn);

/**
 * Asks the terminal to restore the backup it holds (tag 7 = 1).
 * @param[in] conn  open connection.
 * @par Request: set (0x00010002), command 601.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_restore_backup_file(kvn_device_conn *conn);

/**
 * Asks the terminal to export its users to a CSV file (tag 8 = 1, tag 10 the name).
 * @param[in] conn  open connection.
 * @param[in] name  NUL-terminated file name on the terminal.
 * @par Request: get (0x00020002), command 601.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 @p name is NULL or does not fit 1024 bytes (nothing sent), or an answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_upgrade_firware_export_csv_file(kvn_device_conn *conn, const char *name);

/**
 * Asks the terminal to import users from a CSV file it holds (tag 9 = 1, tag 10 the name).
 * @param[in] conn  open connection.
 * @param[in] name  NUL-terminated file name on the terminal.
 * @par Request: set (0x00010002), command 601.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 @p name is NULL or does not fit 1024 bytes (nothing sent), or an answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_upgrade_firware_import_csv_file(kvn_device_conn *conn, const char *name);

/** @} */

/** @addtogroup users
 * @{ */

/* User groups (commands 10 to 12) and the users' display image (command 156). */

/** Groups a kvn_user_group_page holds. */
#define KVN_USER_GROUP_PAGE_MAX 50

/** One user group. */
typedef struct kvn_user_group {
    uint32_t group_id;      /* tag 2 */
    char group_name[52];    /* tag 3 at its own length; a read copies at most 50 bytes, adding no NUL */
} kvn_user_group;
KVN_RECORD_SIZE(kvn_user_group, 56, 56);

/** A page of user groups. */
typedef struct kvn_user_group_page {
    uint32_t range_start;   /* tag 4: first position asked for */
    uint32_t range_end;     /* tag 5: the read takes at most range_end - range_start groups (at most 50) */
    /** Groups decoded, from index 0. */
    kvn_user_group groups[KVN_USER_GROUP_PAGE_MAX];
    uint32_t total;         /* tag 6 inside a group: the terminal's number of groups */
} kvn_user_group_page;
KVN_RECORD_SIZE(kvn_user_group_page, 2812, 2812);

/**
 * Stores a user group (tag 2 id, tag 3 name).
 * @param[in] conn   open connection.
 * @param[in] group  the group.
 * @par Request: set (0x00010002), command 10.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_store_user_group(kvn_device_conn *conn, kvn_user_group *group);

/**
 * Deletes a user group; the request carries the whole group, id and name.
 * @param[in] conn   open connection.
 * @param[in] group  the group.
 * @par Request: reset (0x00030002), command 10.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_delete_user_group(kvn_device_conn *conn, kvn_user_group *group);

/**
 * Reads a page of user groups (tags 4 and 5 out; one tag-1 container per group back).
 * Decoding ends with success after range_end - range_start groups (at most 50), even
 * with input left.
 * @param[in] conn      open connection.
 * @param[in,out] page  range in; groups and total out.
 * @par Request: get (0x00020002), command 10.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 204800 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_retrieve_user_group(kvn_device_conn *conn, kvn_user_group_page *page);

/**
 * Reads the number of user groups.
 * @param[in] conn    open connection.
 * @param[out] count  receives tag 1 of the answer; left as it was when the answer has no payload.
 * @par Request: get (0x00020002), command 11.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_total_user_group_count(kvn_device_conn *conn, uint32_t *count);

/**
 * Deletes every user group.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 12.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_delete_all_user_group(kvn_device_conn *conn);

/**
 * Writes the users' display-image setting (tag 4, four bytes).
 * @param[in] conn   open connection.
 * @param[in] value  the setting; its meaning is the terminal's.
 * @par Request: set (0x00010002), command 156.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_store_user_display_image_setting(kvn_device_conn *conn, uint32_t value);

/**
 * Reads the users' display-image setting. The request announces 1024 zero bytes.
 * @param[in] conn    open connection.
 * @param[out] value  receives tag 4 of the answer; left as it was when the answer has no payload.
 * @par Request: get (0x00020002), command 156.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_retrieve_user_display_image_setting(kvn_device_conn *conn, uint32_t *value);

/**
 * Resets the users' display-image setting to the terminal's default.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 156.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_user_display_image_setting(kvn_device_conn *conn);

/** @} */

/** @addtogroup extensions
 * @{ */

/* Library extension: file transfer with progress and cancel. Unlike kvn_upload_file()
 * and kvn_download_file(), any failed packet ends the transfer with its status. */

/** Where a transfer stands, given to the progress callback. */
typedef struct kvn_ext_transfer_progress {
    uint64_t bytes_done;     /* file bytes moved so far */
    uint64_t bytes_total;    /* file size (the terminal's, for a download) */
    uint32_t packets_done;   /* packets moved so far */
    uint32_t packets_total;  /* packets of the transfer (after the start answer) */
} kvn_ext_transfer_progress;
KVN_RECORD_SIZE(kvn_ext_transfer_progress, 24, 24);

/** Progress callback: called after the start answer and after every packet. Returns 0 to go
 *  on; any other value ends the transfer, which then returns that value. */
typedef int32_t (*kvn_ext_progress_fn)(const kvn_ext_transfer_progress *progress, void *context);

/**
 * kvn_upload_file() with progress and cancel; a packet that fails ends the transfer.
 * @param[in] conn      open connection.
 * @param[in] request   file type, local path and name on the terminal.
 * @param[in] progress  called after the start answer and each packet; may be NULL.
 * @param[in] context   passed to every call of @p progress.
 * @par Request: upload (0x00040002), then set (0x00010002) per packet, command 120.
 * @return 0 on success, the first failing exchange's status, the callback's non-zero value, or:
 * @retval -13 the local file cannot be sized or opened, is 4 GiB or more, or reads short.
 * @retval -1 request did not fit, malformed start answer, or an answer of 204800 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_ext_upload_file(kvn_device_conn *conn, const kvn_file_transfer_request *request,
                                    kvn_ext_progress_fn progress, void *context);

/**
 * kvn_download_file() with progress and cancel; a packet that fails ends the transfer.
 * @param[in] conn      open connection.
 * @param[in] request   file type, local path and name on the terminal.
 * @param[in] progress  called after the start answer and each packet; may be NULL.
 * @param[in] context   passed to every call of @p progress.
 * @par Request: download (0x00050002), then get (0x00020002) per packet, command 120.
 * @return 0 on success, the first failing exchange's status, the callback's non-zero value, or:
 * @retval -13 the local file cannot be created, or a write is short.
 * @retval -1 request did not fit, malformed answer, a packet of more than 65536 bytes, or an
 *            answer of 204800 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_ext_download_file(kvn_device_conn *conn, const kvn_file_transfer_request *request,
                                      kvn_ext_progress_fn progress, void *context);

/** @} */

/* ------------------------------------------------------------------------- */
/* Card reading and layouts, card server and preference, Wiegand formats and ports */
/* ------------------------------------------------------------------------- */

/** @addtogroup cards
 * @{ */

/* Every function of this section works in a 1024-byte buffer: an answer of 1024 bytes
 * or more gives -1. Reads store only the fields the answer carries and never clear the
 * record first. */

/** Bytes of a card serial number (kvn_card_serial_number::serial, the proximity read's buffer). */
#define KVN_CARD_SERIAL_SIZE 64
/** Bytes of a MIFARE or HID layout block. */
#define KVN_CARD_LAYOUT_SIZE 255
/** Bytes of the SRL server text. */
#define KVN_SRL_SERVER_SIZE 1024

/** @} */

/** @addtogroup wiegand
 * @{ */

/** Parity definitions of each kind a Wiegand format holds. */
#define KVN_WIEGAND_PARITY_MAX 4
/** Formats a kvn_wiegand_format_list holds. */
#define KVN_WIEGAND_FORMAT_LIST_MAX 20
/** Input settings a kvn_multi_wiegand_input_setting carries. */
#define KVN_MULTI_WIEGAND_INPUTS 5

/** @} */

/** @addtogroup cards
 * @{ */

/** The card at the reader (command 901). */
typedef struct kvn_card_serial_number {
    uint8_t serial[KVN_CARD_SERIAL_SIZE]; /* tag 12: up to 64 bytes as the terminal reports them, not terminated */
    uint32_t serial_info;    /* tag 11 */
} kvn_card_serial_number;
KVN_RECORD_SIZE(kvn_card_serial_number, 68, 68);

/** Card serial number (CSN) settings (command 902). */
typedef struct kvn_csn_setting {
    uint32_t csn_value_1;    /* tag 1 */
    uint32_t csn_value_2;    /* tag 2 */
} kvn_csn_setting;
KVN_RECORD_SIZE(kvn_csn_setting, 8, 8);

/** Smart-card access keys (command 903): written, never read back. */
typedef struct kvn_smart_card_access_keys {
    uint8_t key_1[16];       /* tag 6 */
    uint8_t key_2[16];       /* tag 3 */
    uint8_t key_3[16];       /* tag 4 */
    uint8_t key_4[16];       /* tag 16 */
} kvn_smart_card_access_keys;
KVN_RECORD_SIZE(kvn_smart_card_access_keys, 64, 64);

/* A layout value longer than its block stores only its first byte into the block's
 * first byte; the rest of the block keeps what it held. */
/** MIFARE 1K and 4K card layouts (command 904). */
typedef struct kvn_mifare_cards_layout {
    uint8_t mifare1k_layout[KVN_CARD_LAYOUT_SIZE]; /* tag 7: sent whole when mifare1k_flag is not 0 */
    uint8_t mifare4k_layout[KVN_CARD_LAYOUT_SIZE]; /* tag 9: sent whole when mifare4k_flag is not 0 */
    uint8_t mifare1k_flag;        /* tag 8: 0 keeps tags 8 and 7 back */
    uint8_t mifare4k_flag;        /* tag 10: 0 keeps tags 10 and 9 back */
} kvn_mifare_cards_layout;
KVN_RECORD_SIZE(kvn_mifare_cards_layout, 512, 512);

/** HID card layouts (command 913). */
typedef struct kvn_hid_cards_layout {
    uint8_t hid_layout_1[KVN_CARD_LAYOUT_SIZE]; /* tag 29: sent whole when hid_layout_1_flag is not 0 */
    uint8_t hid_layout_2[KVN_CARD_LAYOUT_SIZE]; /* tag 31: sent whole when hid_layout_2_flag is not 0 */
    uint8_t hid_value[8];         /* tag 33: a read copies a value of up to 7 bytes; 8 or more set only byte 0 */
    uint8_t hid_layout_1_flag;    /* tag 30: 0 keeps tags 30 and 29 back */
    uint8_t hid_layout_2_flag;    /* tag 32: 0 keeps tags 32 and 31 back */
    uint8_t hid_value_flag;       /* tag 34: 0 keeps tags 34 and 33 back */
} kvn_hid_cards_layout;
KVN_RECORD_SIZE(kvn_hid_cards_layout, 521, 521);

/** DESFire settings (command 908). */
typedef struct kvn_desfire_settings {
    uint32_t desfire_value_1;     /* tag 13 */
    uint8_t desfire_value_2;      /* tag 14 */
    uint32_t desfire_value_3;     /* tag 15 */
} kvn_desfire_settings;
KVN_RECORD_SIZE(kvn_desfire_settings, 12, 12);

/** Key manipulation flags (command 912), sent in the order 5, 20, 19. */
typedef struct kvn_key_manipulation_flags {
    uint32_t flags_1;             /* tag 5 */
    uint32_t flags_2;             /* tag 20 */
    uint32_t flags_3;             /* tag 19 */
} kvn_key_manipulation_flags;
KVN_RECORD_SIZE(kvn_key_manipulation_flags, 12, 12);

/** SRL server settings (command 141), sent in the order 1, 3, 2. */
typedef struct kvn_srl_server_settings {
    uint32_t srl_value_1;         /* tag 1 */
    uint32_t srl_value_2;         /* tag 3 */
    char server[KVN_SRL_SERVER_SIZE]; /* tag 2: sent up to its NUL, even empty; a read copies up to 1024 bytes, not terminated */
} kvn_srl_server_settings;
KVN_RECORD_SIZE(kvn_srl_server_settings, 1032, 1032);

/** @} */

/** @addtogroup wiegand
 * @{ */

/** A Wiegand format (commands 701 and 704). Which fields go out depends on wiegand_type. */
typedef struct kvn_wiegand_format {
    uint8_t format_id;            /* tag 3: the format's id on the terminal; type 0 sets it to 1 */
    uint32_t wiegand_type;        /* tag 2: 0, 1 or 2 */
    char format_name[51];         /* tag 4: types 1 and 2, sent up to its NUL */
    uint16_t attr_t19;            /* tag 19: types 1 and 2 */
    uint8_t attr_t05;             /* tag 5: type 0 only */
    uint8_t parity_count_t24;     /* parity_masks_t24 entries sent by type 2, 0 to 4 */
    uint8_t parity_count_t25;     /* parity_masks_t25 entries sent by type 2, 0 to 4 */
    uint8_t mask_t06[64];         /* tag 6: types 1 and 2 */
    uint8_t mask_t20[64];         /* tag 20: type 2 */
    uint8_t mask_t21[64];         /* tag 21: type 2 */
    uint8_t mask_t22[64];         /* tag 22: type 2 */
    uint8_t mask_t23[64];         /* tag 23: type 2 */
    uint8_t parity_masks_t24[KVN_WIEGAND_PARITY_MAX][64]; /* tag 24, one element each: type 2 */
    uint8_t parity_masks_t25[KVN_WIEGAND_PARITY_MAX][64]; /* tag 25, one element each: type 2, sent before the tag-24 ones */
} kvn_wiegand_format;
KVN_RECORD_SIZE(kvn_wiegand_format, 900, 900);

/** The Wiegand formats the terminal holds (command 702). */
typedef struct kvn_wiegand_format_list {
    uint8_t count;                /* formats stored; cleared by the read before it sends */
    uint8_t format_ids[KVN_WIEGAND_FORMAT_LIST_MAX]; /* tag 3 of each format */
    char format_names[KVN_WIEGAND_FORMAT_LIST_MAX][51]; /* tag 4 of each format: at most 50 bytes, no NUL added */
} kvn_wiegand_format_list;
KVN_RECORD_SIZE(kvn_wiegand_format_list, 1041, 1041);

/** Wiegand input settings (command 123), sent in the order 3, 9, 29, 1. */
typedef struct kvn_wiegand_input_setting {
    uint8_t attr_t03;             /* tag 3 */
    uint32_t attr_t09;            /* tag 9 */
    uint32_t attr_t29;            /* tag 29 */
    uint8_t attr_t01;             /* tag 1 */
} kvn_wiegand_input_setting;
KVN_RECORD_SIZE(kvn_wiegand_input_setting, 16, 16);

/** Wiegand output settings (command 124). */
typedef struct kvn_wiegand_output_setting {
    uint32_t attr_t10;            /* tag 10 */
    uint32_t attr_t26;            /* tag 26: a read copies at most 4 bytes, a shorter value changes only the low bytes */
    uint8_t attr_t11;             /* tag 11 */
    uint8_t attr_t12;             /* tag 12 */
    uint8_t attr_t13;             /* tag 13 */
    uint8_t attr_t14;             /* tag 14 */
    uint8_t attr_t15;             /* tag 15 */
    uint8_t attr_t16;             /* tag 16 */
    uint8_t attr_t17;             /* tag 17 */
    uint8_t attr_t18;             /* tag 18 */
    uint8_t attr_t27;             /* tag 27 */
    uint8_t attr_t28;             /* tag 28 */
} kvn_wiegand_output_setting;
KVN_RECORD_SIZE(kvn_wiegand_output_setting, 20, 20);

/** Wiegand pulse settings (command 130). */
typedef struct kvn_wiegand_pulse_setting {
    uint8_t attr_t07;             /* tag 7 */
    uint16_t attr_t08;            /* tag 8 */
} kvn_wiegand_pulse_setting;
KVN_RECORD_SIZE(kvn_wiegand_pulse_setting, 4, 4);

/* A read copies each value as it is, at most the field's width: a shorter value changes
 * only the field's low bytes. */
/** Multi-input Wiegand settings (command 165): three values and five input settings. */
typedef struct kvn_multi_wiegand_input_setting {
    uint32_t attr_t32;            /* tag 32 */
    uint32_t attr_t33;            /* tag 33 */
    uint32_t attr_t34;            /* tag 34 */
    /** One tag-31 container each, in array order; a read fills them in the answer's order. */
    kvn_wiegand_input_setting inputs[KVN_MULTI_WIEGAND_INPUTS];
} kvn_multi_wiegand_input_setting;
KVN_RECORD_SIZE(kvn_multi_wiegand_input_setting, 92, 92);

/** @} */

/** @addtogroup cards
 * @{ */

/**
 * Reads the serial number of the card at the reader.
 * @param[in] conn   open connection.
 * @param[out] card  receives tag 12 (at most 64 bytes) and tag 11.
 * @par Request: get (0x00020002), command 901.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_read_card_serial_number(kvn_device_conn *conn, kvn_card_serial_number *card);

/**
 * Reads the serial number of the proximity card at the reader.
 * @param[in] conn     open connection.
 * @param[out] serial  KVN_CARD_SERIAL_SIZE bytes; receives tag 2, at most 64 bytes, not terminated.
 * @par Request: get (0x00020002), command 703.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_read_prox_card_serial_number(kvn_device_conn *conn, uint8_t *serial /* [KVN_CARD_SERIAL_SIZE] */);

/**
 * Writes the card serial number (CSN) settings.
 * @param[in] conn     open connection.
 * @param[in] setting  the settings.
 * @par Request: set (0x00010002), command 902.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_csn_setting(kvn_device_conn *conn, const kvn_csn_setting *setting);

/**
 * Reads the card serial number (CSN) settings.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 902.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_csn_setting(kvn_device_conn *conn, kvn_csn_setting *setting);

/**
 * Resets the card serial number (CSN) settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 902.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_csn_setting(kvn_device_conn *conn);

/**
 * Writes the PACS setting under tag 41.
 * @param[in] conn   open connection.
 * @param[in] value  the setting.
 * @par Request: set (0x00010002), command 917.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_pacs_setting(kvn_device_conn *conn, uint32_t value);

/**
 * Reads the PACS setting from tag 1 of the answer (a set writes tag 41).
 * @param[in] conn    open connection.
 * @param[out] value  receives tag 1; untouched when the answer lacks it.
 * @par Request: get (0x00020002), command 917.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_pacs_setting(kvn_device_conn *conn, uint32_t *value);

/**
 * Resets the PACS setting to the terminal's default.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 917.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_pacs_setting(kvn_device_conn *conn);

/**
 * Writes the smart-card access keys (tags 6, 3, 4, 16); they cannot be read back.
 * @param[in] conn  open connection.
 * @param[in] keys  the four 16-byte keys.
 * @par Request: set (0x00010002), command 903.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_smart_card_access_keys(kvn_device_conn *conn, const kvn_smart_card_access_keys *keys);

/**
 * Resets the smart-card access keys to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 903.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_smart_card_access_keys(kvn_device_conn *conn);

/**
 * Writes the MIFARE layouts whose flag is not 0, each flag before its block;
 * with both flags 0 the request goes out empty.
 * @param[in] conn    open connection.
 * @param[in] layout  the layouts and their flags.
 * @par Request: set (0x00010002), command 904.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_mifare_cards_layout(kvn_device_conn *conn, const kvn_mifare_cards_layout *layout);

/**
 * Reads the MIFARE layouts; a layout value longer than 255 bytes stores only its first byte.
 * @param[in] conn     open connection.
 * @param[out] layout  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 904.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_mifare_cards_layout(kvn_device_conn *conn, kvn_mifare_cards_layout *layout);

/**
 * Resets the MIFARE 1K layout (tag 11 = 8).
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 904.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_mifare1k_card_layout(kvn_device_conn *conn);

/**
 * Resets the MIFARE 4K layout (tag 11 = 24).
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 904.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_mifare4k_card_layout(kvn_device_conn *conn);

/**
 * Writes the HID layouts and value whose flag is not 0, each flag before its block.
 * @param[in] conn    open connection.
 * @param[in] layout  the layouts, the value and their flags.
 * @par Request: set (0x00010002), command 913.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_hid_cards_layout(kvn_device_conn *conn, const kvn_hid_cards_layout *layout);

/**
 * Reads the HID layouts; a layout value longer than 255 bytes, or a hid_value of 8
 * bytes or more, stores only its first byte.
 * @param[in] conn     open connection.
 * @param[out] layout  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 913.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_hid_cards_layout(kvn_device_conn *conn, kvn_hid_cards_layout *layout);

/**
 * Resets the HID layouts to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 913.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_hid_card_layout(kvn_device_conn *conn);

/**
 * Writes the DESFire settings.
 * @param[in] conn     open connection.
 * @param[in] setting  the settings.
 * @par Request: set (0x00010002), command 908.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_desfire_settings(kvn_device_conn *conn, const kvn_desfire_settings *setting);

/**
 * Reads the DESFire settings.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 908.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_desfire_settings(kvn_device_conn *conn, kvn_desfire_settings *setting);

/**
 * Resets the DESFire settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 908.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_desfire_settings(kvn_device_conn *conn);

/**
 * Writes the key manipulation flags.
 * @param[in] conn   open connection.
 * @param[in] flags  the flags.
 * @par Request: set (0x00010002), command 912.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_key_manipulation_flags(kvn_device_conn *conn, const kvn_key_manipulation_flags *flags);

/**
 * Reads the key manipulation flags.
 * @param[in] conn    open connection.
 * @param[out] flags  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 912.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_key_manipulation_flags(kvn_device_conn *conn, kvn_key_manipulation_flags *flags);

/**
 * Resets the key manipulation flags to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 912.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_key_manipulation_flags(kvn_device_conn *conn);

/**
 * Writes the SRL server settings.
 * @param[in] conn     open connection.
 * @param[in] setting  the settings.
 * @par Request: set (0x00010002), command 141.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 server text too long for the request (nothing is sent), or an answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_srl_server_settings(kvn_device_conn *conn, const kvn_srl_server_settings *setting);

/**
 * Reads the SRL server settings.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 141.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_srl_server_settings(kvn_device_conn *conn, kvn_srl_server_settings *setting);

/**
 * Resets the SRL server settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 141.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_srl_server_settings(kvn_device_conn *conn);

/**
 * Writes the card preference (tag 40, two bytes).
 * @param[in] conn        open connection.
 * @param[in] preference  the preference.
 * @par Request: set (0x00010002), command 916.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_card_preference_settings(kvn_device_conn *conn, const uint16_t *preference);

/**
 * Reads the card preference. A 1-byte value changes only the low byte.
 * @param[in] conn         open connection.
 * @param[out] preference  receives tag 40; untouched when the value is longer than 2 bytes.
 * @par Request: get (0x00020002), command 916.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1010 tag 40 longer than 2 bytes; the rest of the answer is still read.
 * @retval -1 malformed answer, or one of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_card_preference_settings(kvn_device_conn *conn, uint16_t *preference);

/**
 * Resets the card preference to the terminal's default.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 916.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_card_preference_settings(kvn_device_conn *conn);

/** @} */

/** @addtogroup wiegand
 * @{ */

/**
 * Uploads a Wiegand format, encoded by its type: type 0 sends tags 2, 3, 5 and first
 * sets format_id to 1 in @p format; type 1 tags 2, 3, 19, 4, 6; type 2 tags 2, 3, 19,
 * 4, 6, 20 to 23, then parity_count_t25 tag-25 and parity_count_t24 tag-24 elements.
 * @param[in] conn        open connection.
 * @param[in,out] format  the format; type 0 changes its format_id to 1.
 * @par Request: set (0x00010002), command 701.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -10 wiegand_type is not 0, 1 or 2; nothing is sent.
 * @retval -11 type 2 with a parity count above 4; nothing is sent.
 * @retval -1 answer as long as the request or longer.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_upload_wiegand_format(kvn_device_conn *conn, kvn_wiegand_format *format);

/**
 * Deletes a Wiegand format from the terminal (tag 3).
 * @param[in] conn       open connection.
 * @param[in] format_id  the format's id.
 * @par Request: set (0x00010002), command 704.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer as long as the request (3 bytes) or longer.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_delete_wiegand_format(kvn_device_conn *conn, uint8_t format_id);

/**
 * Lists the terminal's Wiegand formats: count is cleared before the request goes out,
 * then each tag-1 container of the answer fills the next entry; those beyond
 * KVN_WIEGAND_FORMAT_LIST_MAX are dropped.
 * @param[in] conn   open connection.
 * @param[out] list  receives the count and the formats' ids and names.
 * @par Request: get (0x00020002), command 702.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_wiegand_format_list(kvn_device_conn *conn, kvn_wiegand_format_list *list);

/**
 * Writes the Wiegand input settings.
 * @param[in] conn     open connection.
 * @param[in] setting  the settings.
 * @par Request: set (0x00010002), command 123.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_wiegand_input_setting(kvn_device_conn *conn, const kvn_wiegand_input_setting *setting);

/**
 * Reads the Wiegand input settings.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 123.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_wiegand_input_setting(kvn_device_conn *conn, kvn_wiegand_input_setting *setting);

/**
 * Resets the Wiegand input settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 123.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_wiegand_input_setting(kvn_device_conn *conn);

/**
 * Writes the Wiegand output settings.
 * @param[in] conn     open connection.
 * @param[in] setting  the settings.
 * @par Request: set (0x00010002), command 124.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_wiegand_output_setting(kvn_device_conn *conn, const kvn_wiegand_output_setting *setting);

/**
 * Reads the Wiegand output settings.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 124.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_wiegand_output_setting(kvn_device_conn *conn, kvn_wiegand_output_setting *setting);

/**
 * Resets the Wiegand output settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 124.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_wiegand_output_setting(kvn_device_conn *conn);

/**
 * Writes the Wiegand pulse settings.
 * @param[in] conn     open connection.
 * @param[in] setting  the settings.
 * @par Request: set (0x00010002), command 130.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_wiegand_pulse_setting(kvn_device_conn *conn, const kvn_wiegand_pulse_setting *setting);

/**
 * Reads the Wiegand pulse settings.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 130.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_wiegand_pulse_setting(kvn_device_conn *conn, kvn_wiegand_pulse_setting *setting);

/**
 * Resets the Wiegand pulse settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 130.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_wiegand_pulse_setting(kvn_device_conn *conn);

/**
 * Writes the multi-input Wiegand settings: tags 32, 33, 34 and five tag-31 containers
 * (138 bytes), whatever the inputs hold.
 * @param[in] conn     open connection.
 * @param[in] setting  the settings.
 * @par Request: set (0x00010002), command 165.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_set_multi_wiegand_input_setting(kvn_device_conn *conn, const kvn_multi_wiegand_input_setting *setting);

/**
 * Reads the multi-input Wiegand settings; containers after the fifth are skipped.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 165.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_get_multi_wiegand_input_setting(kvn_device_conn *conn, kvn_multi_wiegand_input_setting *setting);

/**
 * Resets the multi-input Wiegand settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 165.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @kvn_link_errors
 */
KVN_API int32_t kvn_reset_multi_wiegand_input_setting(kvn_device_conn *conn);


/** @} */

#pragma pack(pop)

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* KVNSDK2_H */
