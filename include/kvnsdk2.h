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

#if defined(_WIN32)
typedef uintptr_t kvn_socket_t; /* SOCKET */
typedef void *kvn_handle_t;     /* HANDLE */
#else
typedef int kvn_socket_t;       /* file descriptor */
typedef int kvn_handle_t;       /* file descriptor */
#endif

/* conn_type values: 0 is a serial line, any other value is TCP. */
#define KVN_CONN_SERIAL 0u
#define KVN_CONN_TCP 1u

/* Transport block, filled by kvn_open_device_conn(): file descriptors on POSIX, a
 * SOCKET and a HANDLE on Windows. The open stores one in every case (-1 or
 * INVALID_HANDLE_VALUE when nothing stayed open), so closing after a failed open is
 * safe. A record that never went through kvn_open_device_conn() must not be closed:
 * zero-filled, it holds descriptor 0 on POSIX, and closing it would close the
 * process's standard input.
 * Layout: Linux x86-64 16 bytes (socket at 4, serial_handle at 12); Windows x64
 * 32 bytes (socket at 8, serial_handle at 24). */
typedef struct kvn_conn_link {
    uint32_t conn_type;
    kvn_socket_t socket;
    uint32_t reserved;
    kvn_handle_t serial_handle;
} kvn_conn_link;
KVN_RECORD_SIZE(kvn_conn_link, 16, 32);

/* The caller's connection record. Layout: ip_address at 8, port at 16, serial_port at
 * 24, baud_rate at 32; link at 44 of 64 bytes on Linux x86-64, at 48 of 80 on Windows x64. */
typedef struct kvn_device_conn {
    uint32_t header_id;          /* copied into word 1 of every request frame */
    const char *ip_address;      /* dotted IPv4 text, TCP */
    uint16_t port;               /* TCP port, host byte order */
    const wchar_t *serial_port;  /* device name, serial (for example L"/dev/ttyUSB0" or L"\\\\.\\COM3") */
    uint32_t baud_rate;          /* serial line speed in bits per second */
    uint32_t reserved[2];
    kvn_conn_link link;
} kvn_device_conn;
KVN_RECORD_SIZE(kvn_device_conn, 64, 80);

KVN_API int32_t kvn_open_device_conn(kvn_device_conn *conn);
KVN_API int32_t kvn_close_device_conn(kvn_device_conn *conn);
/* Raw byte movers; pass &conn->link, not the whole record. */
KVN_API int32_t kvn_send_data(kvn_conn_link *link, const uint8_t *data, uint32_t count);
KVN_API int32_t kvn_receive_data(kvn_conn_link *link, uint8_t *buffer, uint32_t count);

/* ------------------------------------------------------------------------- */
/* Frames                                                                    */
/* ------------------------------------------------------------------------- */

#define KVN_SYNC_WORD 0xAABBCCDDu
#define KVN_REQ_SET 1u
#define KVN_REQ_GET 2u
#define KVN_REQ_RESET 3u
#define KVN_REQ_UPLOAD 4u
#define KVN_REQ_DOWNLOAD 5u
/* Request word: request type in the high 16 bits, 2 in the low 16 bits. */
#define KVN_REQUEST_WORD(type) ((uint32_t)(((uint32_t)(type) << 16) | 2u))
/* Largest request payload that fits one request frame. */
#define KVN_MAX_REQUEST_PAYLOAD 511972u

KVN_API int32_t kvn_send_command(kvn_device_conn *conn, const uint32_t *request_word, uint32_t command_id,
                                 const uint8_t *payload, uint32_t payload_length);
/* *length holds the buffer's capacity on entry and the received payload length on return.
 * A payload as long as the capacity or longer is refused with -1 (one byte always stays spare). */
KVN_API int32_t kvn_receive_response(kvn_device_conn *conn, uint8_t *buffer, uint32_t *length);
KVN_API int32_t kvn_send_reset_command(kvn_device_conn *conn, uint32_t command_id);
/* CRC-32 of a 20-byte request header (words 1 to 4 and the payload length). */
KVN_API uint32_t kvn_calculate_req_header_crc(const uint8_t *header20);

/* ------------------------------------------------------------------------- */
/* TLV primitives: each takes a cursor and a remaining count and moves both.  */
/* ------------------------------------------------------------------------- */

KVN_API int32_t kvn_set_tlv_tag(uint8_t tag, uint8_t **cursor, uint32_t *remaining);
KVN_API int32_t kvn_set_tlv_length(uint32_t length, uint8_t **cursor, uint32_t *remaining);
KVN_API int32_t kvn_set_tlv_4byte_length(uint32_t length, uint8_t **cursor, uint32_t *remaining);
KVN_API int32_t kvn_set_tlv_data(const void *value, uint32_t length, uint8_t **cursor, uint32_t *remaining);
/* Returns 0, -1, or 65535 when the length form does not fit (tag stays written). */
KVN_API int32_t kvn_create_tlv(uint8_t tag, const void *value, uint32_t length, uint8_t **cursor, uint32_t *remaining);
KVN_API int32_t kvn_skip_tlv_length(uint32_t count, uint8_t **cursor, uint32_t *remaining);
KVN_API int32_t kvn_read_tlv_length(uint8_t **cursor, uint32_t *remaining);
KVN_API int32_t kvn_read_tlv_tag(uint8_t **cursor, uint32_t *remaining);
/* On a match the cursor is left on the value and *remaining counts the bytes after it. */
KVN_API int32_t kvn_serch_tlv_tag(uint8_t **cursor, uint32_t *remaining, uint8_t tag);

/* ------------------------------------------------------------------------- */
/* Status codes                                                              */
/* ------------------------------------------------------------------------- */

/* Every status code with its message, X(code, NAME, "message"). */
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

enum kvn_status {
#define KVN_STATUS_ENUM_(code, name, text) KVN_E_##name = (code),
    KVN_STATUS_LIST(KVN_STATUS_ENUM_)
#undef KVN_STATUS_ENUM_
    KVN_SUCCESS = 0
};

/* Longest message plus its NUL; "Error : <code>" for codes without one fits too. */
#define KVN_STATUS_TEXT_MAX 93

/* ------------------------------------------------------------------------- */
/* Utilities                                                                 */
/* ------------------------------------------------------------------------- */

/* Writes the message of code (or "Error : <code>") into text; give it KVN_STATUS_TEXT_MAX bytes. */
KVN_API int32_t kvn_utils_get_status_code_string(int32_t code, char *text);
KVN_API const char *kvn_get_sdk2_version(void);
KVN_API int32_t kvn_utils_validate_alphanumeric_string(const char *text, int32_t count);
KVN_API int32_t kvn_convert_ip_string_to_int(const char *text, uint32_t *address);
/* text needs 16 bytes. Returns the number of characters written. */
KVN_API int32_t kvn_convert_ip_int_to_string(uint32_t address, char *text);

/* ------------------------------------------------------------------------- */
/* Library extensions (kvn_ext_*): process-wide options of this library.     */
/* They are not terminal commands. Set them before opening connections.      */
/* ------------------------------------------------------------------------- */

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

/**
 * Sets where the library's diagnostic lines go (each as printf would have printed it).
 * Lines are delivered one at a time: a sink needs no locking of its own, and once this
 * function has returned, the previous sink and context are not used any more. A sink
 * may call library functions; it should return promptly, since other threads'
 * diagnostics wait for it.
 * @param sink receives each line with the context; NULL restores the default, standard output
 * @param context passed to the sink unchanged
 */
typedef void (KVN_CALL *kvn_ext_diagnostic_fn)(void *context, const char *line);
KVN_API void kvn_ext_set_diagnostic_sink(kvn_ext_diagnostic_fn sink, void *context);

/* @@FAMILIES@@ Command families are declared below, one section each. */

/* ------------------------------------------------------------------------- */
/* Indication: LED, buzzer, audio, images, LCD, device notification          */
/* ------------------------------------------------------------------------- */

#define KVN_LED_COUNT 17
#define KVN_BUZZER_COUNT 18
#define KVN_AUDIO_COUNT 18

/* One LED entry; also one buzzer entry. */
typedef struct kvn_led_setting {
    uint32_t index;        /* tag 3: 1-based entry number */
    uint8_t enable;        /* tag 2 */
    uint32_t option;       /* tag 13 */
    uint32_t matrix[3][3]; /* [row][column]: tag 4 + 3 * row + column */
} kvn_led_setting;
KVN_RECORD_SIZE(kvn_led_setting, 48, 48);

/* Texts read from the terminal are copied as they arrive: a text of the field's
 * size or longer fills the field without a terminating NUL (marked "unterminated"). */
typedef struct kvn_audio_setting {
    uint32_t index;        /* tag 3: 1-based entry number */
    char short_text[51];   /* tag 4; read: may be unterminated */
    char long_text[256];   /* tag 6; a read fills at most its first 51 bytes, unterminated when all 51 */
    uint8_t flag;          /* tag 5 */
    uint32_t value;        /* tag 8 in the single-entry set, 7 otherwise */
} kvn_audio_setting;
KVN_RECORD_SIZE(kvn_audio_setting, 316, 316);

typedef struct kvn_audio_play_request {
    char short_text[51];   /* tag 4 */
    char long_text[256];   /* tag 6 */
    uint32_t value;        /* tag 8 */
} kvn_audio_play_request;
KVN_RECORD_SIZE(kvn_audio_play_request, 312, 312);

/* Lists read by kvn_retrieve_audio_list (tags 11 and 12) and kvn_retrieve_image_list
 * (tags 1 and 2): the k-th element of each tag fills entry k. Entries beyond
 * KVN_MEDIA_LIST_MAX are counted in `total` but not stored. */
#define KVN_MEDIA_LIST_MAX 64
typedef struct kvn_media_list_entry {
    char name[51];
    char text[51];
} kvn_media_list_entry;
KVN_RECORD_SIZE(kvn_media_list_entry, 102, 102);

typedef struct kvn_media_list {
    uint32_t count;   /* entries stored */
    uint32_t total;   /* entries the terminal reported */
    kvn_media_list_entry entries[KVN_MEDIA_LIST_MAX];
} kvn_media_list;
KVN_RECORD_SIZE(kvn_media_list, 6536, 6536);

typedef struct kvn_display_image_request {
    char name[51];         /* tag 3 */
} kvn_display_image_request;
KVN_RECORD_SIZE(kvn_display_image_request, 51, 51);

typedef struct kvn_lcd_setting {
    uint32_t value;        /* tag 1 */
    char short_text[51];   /* tag 2; read: may be unterminated */
} kvn_lcd_setting;
KVN_RECORD_SIZE(kvn_lcd_setting, 56, 56);

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
KVN_API int32_t kvn_set_single_led_setting(kvn_device_conn *conn, const kvn_led_setting *leds, uint32_t entry);
KVN_API int32_t kvn_set_all_led_setting(kvn_device_conn *conn, const kvn_led_setting *leds /* [KVN_LED_COUNT] */);
KVN_API int32_t kvn_get_led_setting(kvn_device_conn *conn, kvn_led_setting *leds /* [KVN_LED_COUNT] */);
KVN_API int32_t kvn_reset_led_setting(kvn_device_conn *conn);
KVN_API int32_t kvn_set_single_buzzer_setting(kvn_device_conn *conn, const kvn_led_setting *buzzers, uint32_t entry);
KVN_API int32_t kvn_set_all_buzzer_setting(kvn_device_conn *conn, const kvn_led_setting *buzzers /* [KVN_BUZZER_COUNT] */);
KVN_API int32_t kvn_get_buzzer_setting(kvn_device_conn *conn, kvn_led_setting *buzzers /* [KVN_BUZZER_COUNT] */);
KVN_API int32_t kvn_reset_buzzer_setting(kvn_device_conn *conn);
KVN_API int32_t kvn_set_single_audio_setting(kvn_device_conn *conn, const kvn_audio_setting *audio, uint32_t entry);
KVN_API int32_t kvn_set_all_audio_setting(kvn_device_conn *conn, const kvn_audio_setting *audio /* [KVN_AUDIO_COUNT] */);
KVN_API int32_t kvn_get_audio_setting(kvn_device_conn *conn, kvn_audio_setting *audio /* [KVN_AUDIO_COUNT] */);
KVN_API int32_t kvn_reset_audio_setting(kvn_device_conn *conn);
KVN_API int32_t kvn_play_audio(kvn_device_conn *conn, const kvn_audio_play_request *request);
KVN_API int32_t kvn_stop_audio(kvn_device_conn *conn);
KVN_API int32_t kvn_retrieve_audio_list(kvn_device_conn *conn, kvn_media_list *list);
KVN_API int32_t kvn_retrieve_image_list(kvn_device_conn *conn, kvn_media_list *list);
KVN_API int32_t kvn_display_image(kvn_device_conn *conn, const kvn_display_image_request *request);
KVN_API int32_t kvn_set_lcd_settings(kvn_device_conn *conn, const kvn_lcd_setting *setting);
KVN_API int32_t kvn_get_lcd_settings(kvn_device_conn *conn, kvn_lcd_setting *setting);
KVN_API int32_t kvn_reset_lcd_settings(kvn_device_conn *conn);
KVN_API int32_t kvn_set_device_notification_setting(kvn_device_conn *conn, const kvn_device_notification_setting *setting);
KVN_API int32_t kvn_get_device_notification_setting(kvn_device_conn *conn, kvn_device_notification_setting *setting);
KVN_API int32_t kvn_reset_device_notification_setting(kvn_device_conn *conn);

/* ------------------------------------------------------------------------- */
/* Biometric and multi-user verification settings                            */
/* ------------------------------------------------------------------------- */

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

typedef struct kvn_verification_group {
    uint32_t group_value_a;  /* tag 5 */
    char group_text[64];     /* tag 6 */
    uint32_t group_value_b;  /* tag 7 */
} kvn_verification_group;
KVN_RECORD_SIZE(kvn_verification_group, 72, 72);

typedef struct kvn_multi_user_verification_setting {
    uint32_t value;          /* tag 1 */
    uint8_t flag;            /* tag 2 */
    kvn_verification_group groups[3];  /* tag 3 each, position under tag 4 */
} kvn_multi_user_verification_setting;
KVN_RECORD_SIZE(kvn_multi_user_verification_setting, 224, 224);

KVN_API int32_t kvn_set_biometric_setting(kvn_device_conn *conn, const kvn_biometric_setting *setting);
KVN_API int32_t kvn_get_biometric_setting(kvn_device_conn *conn, kvn_biometric_setting *setting);
KVN_API int32_t kvn_reset_biometric_setting(kvn_device_conn *conn);
KVN_API int32_t kvn_set_multi_user_verification_setting(kvn_device_conn *conn, const kvn_multi_user_verification_setting *setting);
KVN_API int32_t kvn_get_multi_user_verification_setting(kvn_device_conn *conn, kvn_multi_user_verification_setting *setting);
KVN_API int32_t kvn_reset_multi_user_verification_setting(kvn_device_conn *conn);

/* ------------------------------------------------------------------------- */
/* Sensors and alarms                                                        */
/* ------------------------------------------------------------------------- */

#define KVN_FINGERPRINT_TEST_DATA_MAX 98560

typedef struct kvn_fingerprint_sensor_test {
    uint32_t test_value;                            /* tag 7, sent */
    uint8_t data[KVN_FINGERPRINT_TEST_DATA_MAX];    /* tag 6, received */
    uint32_t data_length;                           /* bytes stored in data */
} kvn_fingerprint_sensor_test;
KVN_RECORD_SIZE(kvn_fingerprint_sensor_test, 98568, 98568);

typedef struct kvn_proximity_sensor_setting {
    uint32_t value_a;  /* tag 5 */
    uint32_t value_b;  /* tag 4 */
    uint32_t value_c;  /* tag 8 */
} kvn_proximity_sensor_setting;
KVN_RECORD_SIZE(kvn_proximity_sensor_setting, 12, 12);

typedef struct kvn_next_sensor_setting {
    uint32_t value_a;  /* tag 2 */
    uint32_t value_b;  /* tag 1 */
} kvn_next_sensor_setting;
KVN_RECORD_SIZE(kvn_next_sensor_setting, 8, 8);

typedef struct kvn_antishock_setting {
    uint32_t value_1;  /* tags 2 to 8 */
    uint32_t value_2;
    uint32_t value_3;
    uint32_t value_4;
    uint32_t value_5;
    uint32_t value_6;
    uint32_t value_7;
} kvn_antishock_setting;
KVN_RECORD_SIZE(kvn_antishock_setting, 28, 28);

KVN_API int32_t kvn_test_fingerprint_sensor(kvn_device_conn *conn, kvn_fingerprint_sensor_test *test);
KVN_API int32_t kvn_reset_fingerprint_sensor(kvn_device_conn *conn);
KVN_API int32_t kvn_set_fingerprint_sensor_autoon_status(kvn_device_conn *conn, uint32_t status);
KVN_API int32_t kvn_get_fingerprint_sensor_autoon_status(kvn_device_conn *conn, uint32_t *status);
KVN_API int32_t kvn_reset_fingerprint_sensor_autoon_status(kvn_device_conn *conn);
KVN_API int32_t kvn_set_proximity_sensor_settings(kvn_device_conn *conn, const kvn_proximity_sensor_setting *setting);
KVN_API int32_t kvn_get_proximity_sensor_settings(kvn_device_conn *conn, kvn_proximity_sensor_setting *setting);
KVN_API int32_t kvn_reset_proximity_sensor_settings(kvn_device_conn *conn);
KVN_API int32_t kvn_set_next_sensor_settings(kvn_device_conn *conn, const kvn_next_sensor_setting *setting);
KVN_API int32_t kvn_get_next_sensor_settings(kvn_device_conn *conn, kvn_next_sensor_setting *setting);
/* Resets the next-sensor settings (command 166). */
KVN_API int32_t kvn_next_sensor_settings(kvn_device_conn *conn);
KVN_API int32_t kvn_set_antishock_settings(kvn_device_conn *conn, const kvn_antishock_setting *setting);
KVN_API int32_t kvn_get_antishock_settings(kvn_device_conn *conn, kvn_antishock_setting *setting);
KVN_API int32_t kvn_reset_antishock_settings(kvn_device_conn *conn);
KVN_API int32_t kvn_clear_reenable_antishock_alarm(kvn_device_conn *conn);
KVN_API int32_t kvn_set_fire_alarm_state(kvn_device_conn *conn, uint32_t state);
KVN_API int32_t kvn_get_fire_alarm_state(kvn_device_conn *conn, uint32_t *state);
KVN_API int32_t kvn_reset_fire_alarm_state(kvn_device_conn *conn);
KVN_API int32_t kvn_clear_reenable_fire_alarm(kvn_device_conn *conn);

/* ------------------------------------------------------------------------- */
/* Door and DAC                                                              */
/* ------------------------------------------------------------------------- */

/* Fields are named by the tag that carries them. */
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

KVN_API int32_t kvn_set_dac_settings(kvn_device_conn *conn, const kvn_dac_setting *setting);
KVN_API int32_t kvn_get_dac_settings(kvn_device_conn *conn, kvn_dac_setting *setting);
KVN_API int32_t kvn_reset_dac_settings(kvn_device_conn *conn);
KVN_API int32_t kvn_open_door_for_time(kvn_device_conn *conn, uint32_t open_time, int32_t option);
KVN_API int32_t kvn_close_door(kvn_device_conn *conn);
KVN_API int32_t kvn_clear_door_force_open_alarm(kvn_device_conn *conn);

#pragma pack(pop)

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* KVNSDK2_H */
