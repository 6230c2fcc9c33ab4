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
 * Status codes of the command functions:
 * - 0: success. A set whose answer carries a payload also returns 0.
 * - -1 ("TLV buffer overflow"): a record too large for the request (nothing is sent), an
 *   answer at least as long as the function's buffer, or a malformed answer.
 * - -2, -3: read or write failure or timeout; -6: CRC mismatch; -12: the answer does not
 *   start with the sync word. The link may then hold unread bytes: close and reopen it.
 * - any other value is the terminal's status for the request, returned unchanged.
 *
 * Given a null connection they return -3, given a null record -1, sending nothing. A failed
 * read leaves the record as it was, except for fields decoded before a malformed element.
 * Reads store only the fields the answer carries; a text takes at most the field's size
 * and no NUL is added, so clear a record before reading into it.
 */
#ifndef KVNSDK2_H
#define KVNSDK2_H

#include <stddef.h>
#include <stdint.h>
#include <wchar.h>

#if defined(_WIN32) || defined(__CYGWIN__)
#  if defined(KVN_STATIC)
#    define KVN_API
#  elif defined(KVN_BUILDING_LIBRARY)
#    define KVN_API __declspec(dllexport)
#  else
#    define KVN_API __declspec(dllimport)
#  endif
#else
#  if defined(KVN_BUILDING_LIBRARY)
#    define KVN_API __attribute__((visibility("default")))
#  else
#    define KVN_API
#  endif
#endif

#ifdef __cplusplus
extern "C" {
#endif

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
/** conn_type of a serial line. */
#define KVN_CONN_SERIAL 0u
/** conn_type of a TCP connection (any value other than 0 selects TCP). */
#define KVN_CONN_TCP 1u

/* Transport block, filled by kvn_open_device_conn(). */
/** Transport block inside kvn_device_conn; the raw movers take its address. */
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

/* The caller's connection record. */
/** The caller's connection record: where the terminal is, and the open link. */
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
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
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

/* ------------------------------------------------------------------------- */
/* Library extensions (kvn_ext_*): process-wide options of this library.     */
/* They are not terminal commands. Set them before opening connections.      */
/* ------------------------------------------------------------------------- */

/* Per-chunk waits of TCP reads and writes and the TCP connect wait, in milliseconds.
 * Defaults: read 120000, write 60000, connect 0 (0 = the platform's own connect behaviour).
 * A negative value leaves that setting as it is. Always returns 0. */
/**
 * Sets the TCP waits of every connection, in milliseconds; a negative value keeps that one.
 * @param[in] read_ms     wait for each chunk of a read (default 120000).
 * @param[in] write_ms    wait for each chunk of a write (default 60000).
 * @param[in] connect_ms  limit of a connect (default 0: the platform's own behaviour).
 * @par Request: none (a library option).
 * @return always 0.
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

/* Receives the library's diagnostic lines (each as printf would have printed it).
 * NULL restores the default, which prints to standard output. */
/** Receiver of diagnostic lines: the context given with it, and one line. */
typedef void (*kvn_ext_diagnostic_fn)(void *context, const char *line);

/**
 * Sends the library's diagnostic lines to @p sink instead of standard output.
 * @param[in] sink     the receiver, or NULL for standard output again.
 * @param[in] context  passed to every call of @p sink.
 * @par Request: none (a library option).
 */
KVN_API void kvn_ext_set_diagnostic_sink(kvn_ext_diagnostic_fn sink, void *context);

/* @@FAMILIES@@ Command families are declared below, one section each. */

/* ------------------------------------------------------------------------- */
/* Indication: LED, buzzer, audio, images, LCD, device notification          */
/* ------------------------------------------------------------------------- */

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

/** One audio entry (command 110). */
typedef struct kvn_audio_setting {
    uint32_t index;        /* tag 3: 1-based entry number */
    char short_text[51];   /* tag 4 */
    char long_text[256];   /* tag 6; a read fills at most its first 51 bytes */
    uint8_t flag;          /* tag 5 */
    uint32_t value;        /* tag 8 in the single-entry set, 7 otherwise */
} kvn_audio_setting;

/** What kvn_play_audio() plays; empty texts are not sent. */
typedef struct kvn_audio_play_request {
    char short_text[51];   /* tag 4 */
    char long_text[256];   /* tag 6 */
    uint32_t value;        /* tag 8 */
} kvn_audio_play_request;

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

/** An audio or image list, rebuilt by every read the terminal answers. */
typedef struct kvn_media_list {
    uint32_t count;   /* entries stored */
    uint32_t total;   /* entries the terminal reported */
    /** The entries; the first `count` are valid. */
    kvn_media_list_entry entries[KVN_MEDIA_LIST_MAX];
} kvn_media_list;

/** The image kvn_display_image() shows. */
typedef struct kvn_display_image_request {
    char name[51];         /* tag 3 */
} kvn_display_image_request;

/** LCD settings (command 149). */
typedef struct kvn_lcd_setting {
    uint32_t value;        /* tag 1 */
    char short_text[51];   /* tag 2 */
} kvn_lcd_setting;

/** Device notification settings (command 507). */
typedef struct kvn_device_notification_setting {
    uint8_t flag;          /* tag 1 */
    char text_a[129];      /* tag 2 */
    char text_b[51];       /* tag 3 */
    char text_c[51];       /* tag 4 */
    uint32_t value;        /* tag 5 */
} kvn_device_notification_setting;

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
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_set_single_led_setting(kvn_device_conn *conn, const kvn_led_setting *leds, uint32_t entry);

/**
 * Writes all LED entries.
 * @param[in] conn  open connection.
 * @param[in] leds  KVN_LED_COUNT entries, sent in array order.
 * @par Request: set (0x00010002), command 104.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_set_all_led_setting(kvn_device_conn *conn, const kvn_led_setting *leds /* [KVN_LED_COUNT] */);

/**
 * Reads the LED entries.
 * @param[in] conn   open connection.
 * @param[out] leds  KVN_LED_COUNT entries, each updated from the answer's entry of its number.
 * @par Request: get (0x00020002), command 104.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_led_setting(kvn_device_conn *conn, kvn_led_setting *leds /* [KVN_LED_COUNT] */);

/**
 * Resets the LED settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 104.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
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
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_set_single_buzzer_setting(kvn_device_conn *conn, const kvn_led_setting *buzzers, uint32_t entry);

/**
 * Writes all buzzer entries.
 * @param[in] conn     open connection.
 * @param[in] buzzers  KVN_BUZZER_COUNT entries, sent in array order.
 * @par Request: set (0x00010002), command 111.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
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
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_buzzer_setting(kvn_device_conn *conn, kvn_led_setting *buzzers /* [KVN_BUZZER_COUNT] */);

/**
 * Resets the buzzer settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 111.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
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
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_set_single_audio_setting(kvn_device_conn *conn, const kvn_audio_setting *audio, uint32_t entry);

/**
 * Writes all audio entries: texts at their own length, value under tag 7.
 * @param[in] conn   open connection.
 * @param[in] audio  KVN_AUDIO_COUNT entries, sent in array order.
 * @par Request: set (0x00010002), command 110.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_set_all_audio_setting(kvn_device_conn *conn, const kvn_audio_setting *audio /* [KVN_AUDIO_COUNT] */);

/**
 * Reads the audio entries; each text receives at most 51 bytes.
 * @param[in] conn    open connection.
 * @param[out] audio  KVN_AUDIO_COUNT entries, each updated from the answer's entry of its number.
 * @par Request: get (0x00020002), command 110.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_audio_setting(kvn_device_conn *conn, kvn_audio_setting *audio /* [KVN_AUDIO_COUNT] */);

/**
 * Resets the audio settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 110.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_reset_audio_setting(kvn_device_conn *conn);

/**
 * Plays audio on the terminal.
 * @param[in] conn     open connection.
 * @param[in] request  what to play.
 * @par Request: set (0x00010002), command 801.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_play_audio(kvn_device_conn *conn, const kvn_audio_play_request *request);

/**
 * Stops audio playback. The request carries 20480 zero bytes, which the terminal ignores.
 * @param[in] conn  open connection.
 * @par Request: set (0x00010002), command 802.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_stop_audio(kvn_device_conn *conn);

/**
 * Reads the list of audio files (names under tag 11, texts under tag 12).
 * @param[in] conn   open connection.
 * @param[out] list  rebuilt from the answer; entries past KVN_MEDIA_LIST_MAX are only counted.
 * @par Request: get (0x00020002), command 803.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_retrieve_audio_list(kvn_device_conn *conn, kvn_media_list *list);

/**
 * Reads the list of images (names under tag 1, texts under tag 2).
 * @param[in] conn   open connection.
 * @param[out] list  rebuilt from the answer; entries past KVN_MEDIA_LIST_MAX are only counted.
 * @par Request: get (0x00020002), command 140.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_retrieve_image_list(kvn_device_conn *conn, kvn_media_list *list);

/**
 * Shows an image on the terminal's display.
 * @param[in] conn     open connection.
 * @param[in] request  the image's name.
 * @par Request: set (0x00010002), command 205.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_display_image(kvn_device_conn *conn, const kvn_display_image_request *request);

/**
 * Writes the LCD settings.
 * @param[in] conn     open connection.
 * @param[in] setting  the settings; an empty text is not sent.
 * @par Request: set (0x00010002), command 149.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_set_lcd_settings(kvn_device_conn *conn, const kvn_lcd_setting *setting);

/**
 * Reads the LCD settings.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 149.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_lcd_settings(kvn_device_conn *conn, kvn_lcd_setting *setting);

/**
 * Resets the LCD settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 149.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_reset_lcd_settings(kvn_device_conn *conn);

/**
 * Writes the device notification settings.
 * @param[in] conn     open connection.
 * @param[in] setting  the settings; empty texts are not sent.
 * @par Request: set (0x00010002), command 507.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_set_device_notification_setting(kvn_device_conn *conn, const kvn_device_notification_setting *setting);

/**
 * Reads the device notification settings.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 507.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_device_notification_setting(kvn_device_conn *conn, kvn_device_notification_setting *setting);

/**
 * Resets the device notification settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 507.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
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

/** One group of the multi-user verification settings. */
typedef struct kvn_verification_group {
    uint32_t group_value_a;  /* tag 5 */
    char group_text[64];     /* tag 6 */
    uint32_t group_value_b;  /* tag 7 */
} kvn_verification_group;

/** Multi-user verification settings (command 139). */
typedef struct kvn_multi_user_verification_setting {
    uint32_t value;          /* tag 1 */
    uint8_t flag;            /* tag 2 */
    kvn_verification_group groups[3];  /* tag 3 each, position under tag 4 */
} kvn_multi_user_verification_setting;

/**
 * Writes the biometric settings; every field is sent.
 * @param[in] conn     open connection.
 * @param[in] setting  the settings.
 * @par Request: set (0x00010002), command 108.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_set_biometric_setting(kvn_device_conn *conn, const kvn_biometric_setting *setting);

/**
 * Reads the biometric settings.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 108.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_biometric_setting(kvn_device_conn *conn, kvn_biometric_setting *setting);

/**
 * Resets the biometric settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 108.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_reset_biometric_setting(kvn_device_conn *conn);

/**
 * Writes the multi-user verification settings; all three groups are sent.
 * @param[in] conn     open connection.
 * @param[in] setting  the settings.
 * @par Request: set (0x00010002), command 139.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
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
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_multi_user_verification_setting(kvn_device_conn *conn, kvn_multi_user_verification_setting *setting);

/**
 * Resets the multi-user verification settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 139.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
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

/** Proximity sensor settings (command 304). */
typedef struct kvn_proximity_sensor_setting {
    uint32_t value_a;  /* tag 5 */
    uint32_t value_b;  /* tag 4 */
    uint32_t value_c;  /* tag 8 */
} kvn_proximity_sensor_setting;

/** Next-sensor settings (command 166); value_b is sent first. */
typedef struct kvn_next_sensor_setting {
    uint32_t value_a;  /* tag 2 */
    uint32_t value_b;  /* tag 1 */
} kvn_next_sensor_setting;

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

/**
 * Runs the fingerprint sensor's self-test and stores the data it answers with.
 * @param[in] conn      open connection.
 * @param[in,out] test  test_value is sent; data and data_length receive the answer's tag 6,
 *                      at most KVN_FINGERPRINT_TEST_DATA_MAX bytes.
 * @par Request: get (0x00020002) with a payload, command 301.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 no memory for the 1 MiB exchange buffer (nothing is sent), a malformed answer, or one of 1048576 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_test_fingerprint_sensor(kvn_device_conn *conn, kvn_fingerprint_sensor_test *test);

/**
 * Resets the fingerprint sensor.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 302.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_reset_fingerprint_sensor(kvn_device_conn *conn);

/**
 * Writes the fingerprint sensor's automatic power-on status.
 * @param[in] conn    open connection.
 * @param[in] status  the status, sent under tag 1.
 * @par Request: set (0x00010002), command 303.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_set_fingerprint_sensor_autoon_status(kvn_device_conn *conn, uint32_t status);

/**
 * Reads the fingerprint sensor's automatic power-on status.
 * @param[in] conn     open connection.
 * @param[out] status  receives tag 1 of the answer.
 * @par Request: get (0x00020002), command 303.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_fingerprint_sensor_autoon_status(kvn_device_conn *conn, uint32_t *status);

/**
 * Resets the fingerprint sensor's automatic power-on status to the terminal's default.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 303.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_reset_fingerprint_sensor_autoon_status(kvn_device_conn *conn);

/**
 * Writes the proximity sensor settings.
 * @param[in] conn     open connection.
 * @param[in] setting  the settings.
 * @par Request: set (0x00010002), command 304.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_set_proximity_sensor_settings(kvn_device_conn *conn, const kvn_proximity_sensor_setting *setting);

/**
 * Reads the proximity sensor settings.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 304.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_proximity_sensor_settings(kvn_device_conn *conn, kvn_proximity_sensor_setting *setting);

/**
 * Resets the proximity sensor settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 304.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_reset_proximity_sensor_settings(kvn_device_conn *conn);

/**
 * Writes the next-sensor settings.
 * @param[in] conn     open connection.
 * @param[in] setting  the settings.
 * @par Request: set (0x00010002), command 166.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_set_next_sensor_settings(kvn_device_conn *conn, const kvn_next_sensor_setting *setting);

/**
 * Reads the next-sensor settings.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 166.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_next_sensor_settings(kvn_device_conn *conn, kvn_next_sensor_setting *setting);

/* Resets the next-sensor settings (command 166). */
/**
 * Resets the next-sensor settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 166.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_next_sensor_settings(kvn_device_conn *conn);

/**
 * Writes the anti-shock alarm settings.
 * @param[in] conn     open connection.
 * @param[in] setting  the settings.
 * @par Request: set (0x00010002), command 306.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_set_antishock_settings(kvn_device_conn *conn, const kvn_antishock_setting *setting);

/**
 * Reads the anti-shock alarm settings.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 306.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_antishock_settings(kvn_device_conn *conn, kvn_antishock_setting *setting);

/**
 * Resets the anti-shock alarm settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 306.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_reset_antishock_settings(kvn_device_conn *conn);

/**
 * Clears the anti-shock alarm and arms it again (tag 1 = 1).
 * @param[in] conn  open connection.
 * @par Request: set (0x00010002), command 306.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_clear_reenable_antishock_alarm(kvn_device_conn *conn);

/**
 * Writes the fire alarm state.
 * @param[in] conn   open connection.
 * @param[in] state  the state, sent under tag 7.
 * @par Request: set (0x00010002), command 305.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_set_fire_alarm_state(kvn_device_conn *conn, uint32_t state);

/**
 * Reads the fire alarm state.
 * @param[in] conn    open connection.
 * @param[out] state  receives tag 7 of the answer.
 * @par Request: get (0x00020002), command 305.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_fire_alarm_state(kvn_device_conn *conn, uint32_t *state);

/**
 * Resets the fire alarm state to the terminal's default.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 305.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_reset_fire_alarm_state(kvn_device_conn *conn);

/**
 * Clears the fire alarm and arms it again (tag 9 = 1).
 * @param[in] conn  open connection.
 * @par Request: set (0x00010002), command 305.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
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

/**
 * Writes the DAC settings; door_open_time is not sent.
 * @param[in] conn     open connection.
 * @param[in] setting  the settings.
 * @par Request: set (0x00010002), command 115.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer as long as the request (63 bytes) or longer.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_set_dac_settings(kvn_device_conn *conn, const kvn_dac_setting *setting);

/**
 * Reads the DAC settings, door_open_time included.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 115.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer (an empty element counts), or one of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_dac_settings(kvn_device_conn *conn, kvn_dac_setting *setting);

/**
 * Resets the DAC settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 115.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
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
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_open_door_for_time(kvn_device_conn *conn, uint32_t open_time, int32_t option);

/**
 * Closes the door: kvn_open_door_for_time() with time 0 and option 0.
 * @param[in] conn  open connection.
 * @par Request: set (0x00010002), command 115.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer as long as the request (12 bytes) or longer.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_close_door(kvn_device_conn *conn);

/**
 * Clears the door-forced-open alarm (tag 15 = 1).
 * @param[in] conn  open connection.
 * @par Request: set (0x00010002), command 115.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer as long as the request (6 bytes) or longer.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_clear_door_force_open_alarm(kvn_device_conn *conn);

/* ------------------------------------------------------------------------- */
/* Network and device management: wired and serial network, device information and maintenance, wireless, SSL, notifications, Ethernet security, VPN and certificates */
/* ------------------------------------------------------------------------- */

/* @@NETWORK@@ (end of section) */

/* ------------------------------------------------------------------------- */
/* Specific-purpose I/O, time attendance, job codes, VoIP and schedules */
/* ------------------------------------------------------------------------- */

/* @@TABLES@@ (end of section) */

/* ------------------------------------------------------------------------- */
/* Users, enrolment, identification, verification and smart-card operations */
/* ------------------------------------------------------------------------- */

/* @@USERS@@ (end of section) */

/* ------------------------------------------------------------------------- */
/* Transaction logs, file and firmware transfer, user groups */
/* ------------------------------------------------------------------------- */

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

/** Ids for kvn_mark_transaction_logs_as_read(). */
typedef struct kvn_transaction_log_id_list {
    uint8_t count;                                 /* ids sent, 0 to 255 */
    uint32_t log_ids[KVN_TRANSACTION_LOG_ID_MAX];  /* tag 7 each, in order */
} kvn_transaction_log_id_list;

/**
 * Reads the number of journal entries.
 * @param[in] conn    open connection.
 * @param[out] count  receives tag 6 of the answer; left as it was when the answer has no payload.
 * @par Request: get (0x00020002), command 405.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_transaction_log_total_count(kvn_device_conn *conn, uint32_t *count);

/**
 * Reads the number of journal entries not marked as read.
 * @param[in] conn    open connection.
 * @param[out] count  receives tag 6 of the answer; left as it was when the answer has no payload.
 * @par Request: get (0x00020002), command 406.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_transaction_log_unread_count(kvn_device_conn *conn, uint32_t *count);

/**
 * Reads the number of journal entries marked as read.
 * @param[in] conn    open connection.
 * @param[out] count  receives tag 6 of the answer; left as it was when the answer has no payload.
 * @par Request: get (0x00020002), command 407.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_transaction_log_read_count(kvn_device_conn *conn, uint32_t *count);

/**
 * Counts the journal entries of a date: the criteria without tags 2 and 3.
 * @param[in] conn       open connection.
 * @param[in,out] query  criteria in; the whole log_count set from tag 6 of the answer.
 * @par Request: get (0x00020002), command 408.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 request did not fit (nothing sent), malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_transaction_log_count_for_date(kvn_device_conn *conn, kvn_transaction_log_query *query);

/**
 * Counts the journal entries that meet the criteria (sent without tags 2 and 3).
 * @param[in] conn       open connection.
 * @param[in,out] query  criteria in; the whole log_count set from tag 6 of the answer.
 * @par Request: get (0x00020002), command 411.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 request did not fit (nothing sent), malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
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
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_transaction_logs(kvn_device_conn *conn, kvn_transaction_log_query *query);

/**
 * Reads journal entries not marked as read, as kvn_get_transaction_logs() does.
 * @param[in] conn       open connection.
 * @param[in,out] query  criteria in; entries and the low byte of log_count out.
 * @par Request: get (0x00020002), command 402.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 request did not fit (nothing sent), malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_unread_transaction_logs(kvn_device_conn *conn, kvn_transaction_log_query *query);

/**
 * Reads journal entries marked as read, as kvn_get_transaction_logs() does.
 * @param[in] conn       open connection.
 * @param[in,out] query  criteria in; entries and the low byte of log_count out.
 * @par Request: get (0x00020002), command 403.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 request did not fit (nothing sent), malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_read_transaction_logs(kvn_device_conn *conn, kvn_transaction_log_query *query);

/**
 * Reads the journal entries of a date, as kvn_get_transaction_logs() does.
 * @param[in] conn       open connection.
 * @param[in,out] query  criteria in; entries and the low byte of log_count out.
 * @par Request: get (0x00020002), command 404.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 request did not fit (nothing sent), malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_transaction_logs_for_date(kvn_device_conn *conn, kvn_transaction_log_query *query);

/**
 * Reads the journal entries that meet the criteria, as kvn_get_transaction_logs() does.
 * @param[in] conn       open connection.
 * @param[in,out] query  criteria in; entries and the low byte of log_count out.
 * @par Request: get (0x00020002), command 412.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 request did not fit (nothing sent), malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_transaction_logs_for_criteria(kvn_device_conn *conn, kvn_transaction_log_query *query);

/**
 * Marks one journal entry as read (tag 7, four bytes).
 * @param[in] conn    open connection.
 * @param[in] log_id  the entry's log_id.
 * @par Request: set (0x00010002), command 409.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
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
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_mark_transaction_logs_as_read(kvn_device_conn *conn, const kvn_transaction_log_id_list *ids);

/**
 * Marks one journal entry as sent online (tag 7, four bytes); a get request.
 * @param[in] conn    open connection.
 * @param[in] log_id  the entry's log_id.
 * @par Request: get (0x00020002), command 410.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_mark_transaction_log_as_online(kvn_device_conn *conn, uint32_t log_id);

/**
 * Deletes the whole journal. The request announces a payload of 20480 zero bytes.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 413.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_delete_all_transaction_logs(kvn_device_conn *conn);

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
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
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
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_download_file(kvn_device_conn *conn, const kvn_file_transfer_request *request);

/**
 * Deletes a file on the terminal (tags 4 and 5).
 * @param[in] conn     open connection.
 * @param[in] request  file type and name; the local path is not used.
 * @par Request: reset (0x00030002), command 120.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 request did not fit 1024 bytes (nothing sent), or an answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_delete_file(kvn_device_conn *conn, const kvn_file_transfer_request *request);

/**
 * Asks the terminal to upgrade its firmware from the package it holds (tag 5 = 1).
 * @param[in] conn  open connection.
 * @par Request: set (0x00010002), command 601.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_upgrade_firware(kvn_device_conn *conn);

/**
 * Asks the terminal to restore the backup it holds (tag 7 = 1).
 * @param[in] conn  open connection.
 * @par Request: set (0x00010002), command 601.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_restore_backup_file(kvn_device_conn *conn);

/**
 * Asks the terminal to export its users to a CSV file (tag 8 = 1, tag 10 the name).
 * @param[in] conn  open connection.
 * @param[in] name  NUL-terminated file name on the terminal.
 * @par Request: get (0x00020002), command 601.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 @p name is NULL or does not fit 1024 bytes (nothing sent), or an answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_upgrade_firware_export_csv_file(kvn_device_conn *conn, const char *name);

/**
 * Asks the terminal to import users from a CSV file it holds (tag 9 = 1, tag 10 the name).
 * @param[in] conn  open connection.
 * @param[in] name  NUL-terminated file name on the terminal.
 * @par Request: set (0x00010002), command 601.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 @p name is NULL or does not fit 1024 bytes (nothing sent), or an answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_upgrade_firware_import_csv_file(kvn_device_conn *conn, const char *name);

/* User groups (commands 10 to 12) and the users' display image (command 156). */

/** Groups a kvn_user_group_page holds. */
#define KVN_USER_GROUP_PAGE_MAX 50

/** One user group. */
typedef struct kvn_user_group {
    uint32_t group_id;      /* tag 2 */
    char group_name[52];    /* tag 3 at its own length; a read copies at most 50 bytes, adding no NUL */
} kvn_user_group;

/** A page of user groups. */
typedef struct kvn_user_group_page {
    uint32_t range_start;   /* tag 4: first position asked for */
    uint32_t range_end;     /* tag 5: the read takes at most range_end - range_start groups (at most 50) */
    /** Groups decoded, from index 0. */
    kvn_user_group groups[KVN_USER_GROUP_PAGE_MAX];
    uint32_t total;         /* tag 6 inside a group: the terminal's number of groups */
} kvn_user_group_page;

/**
 * Stores a user group (tag 2 id, tag 3 name).
 * @param[in] conn   open connection.
 * @param[in] group  the group.
 * @par Request: set (0x00010002), command 10.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_store_user_group(kvn_device_conn *conn, kvn_user_group *group);

/**
 * Deletes a user group; the request carries the whole group, id and name.
 * @param[in] conn   open connection.
 * @param[in] group  the group.
 * @par Request: reset (0x00030002), command 10.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
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
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_retrieve_user_group(kvn_device_conn *conn, kvn_user_group_page *page);

/**
 * Reads the number of user groups.
 * @param[in] conn    open connection.
 * @param[out] count  receives tag 1 of the answer; left as it was when the answer has no payload.
 * @par Request: get (0x00020002), command 11.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_total_user_group_count(kvn_device_conn *conn, uint32_t *count);

/**
 * Deletes every user group.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 12.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_delete_all_user_group(kvn_device_conn *conn);

/**
 * Writes the users' display-image setting (tag 4, four bytes).
 * @param[in] conn   open connection.
 * @param[in] value  the setting; its meaning is the terminal's.
 * @par Request: set (0x00010002), command 156.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_store_user_display_image_setting(kvn_device_conn *conn, uint32_t value);

/**
 * Reads the users' display-image setting. The request announces 1024 zero bytes.
 * @param[in] conn    open connection.
 * @param[out] value  receives tag 4 of the answer; left as it was when the answer has no payload.
 * @par Request: get (0x00020002), command 156.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_retrieve_user_display_image_setting(kvn_device_conn *conn, uint32_t *value);

/**
 * Resets the users' display-image setting to the terminal's default.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 156.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_reset_user_display_image_setting(kvn_device_conn *conn);

/* Library extension: file transfer with progress and cancel. Unlike kvn_upload_file()
 * and kvn_download_file(), any failed packet ends the transfer with its status. */

/** Where a transfer stands, given to the progress callback. */
typedef struct kvn_ext_transfer_progress {
    uint64_t bytes_done;     /* file bytes moved so far */
    uint64_t bytes_total;    /* file size (the terminal's, for a download) */
    uint32_t packets_done;   /* packets moved so far */
    uint32_t packets_total;  /* packets of the transfer (after the start answer) */
} kvn_ext_transfer_progress;

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
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
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
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_ext_download_file(kvn_device_conn *conn, const kvn_file_transfer_request *request,
                                      kvn_ext_progress_fn progress, void *context);

/* @@LOGS@@ (end of section) */

/* ------------------------------------------------------------------------- */
/* Card reading and layouts, card server and preference, Wiegand formats and ports */
/* ------------------------------------------------------------------------- */

/* @@CARDS@@ (end of section) */

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* KVNSDK2_H */
