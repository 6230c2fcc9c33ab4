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

/** Serial port settings (command 102); the values are the terminal's. */
typedef struct kvn_serial_setting {
    uint32_t value_1; /* tag 1 */
    uint32_t value_2; /* tag 2 */
    uint32_t value_3; /* tag 3 */
    uint32_t value_4; /* tag 4 */
} kvn_serial_setting;

/** USB auxiliary port setting (command 103). */
typedef struct kvn_usb_auxiliary_setting {
    uint32_t value; /* tag 1 */
} kvn_usb_auxiliary_setting;

/**
 * Writes the Ethernet settings: tag 1, tag 3 when the port is not 0, then (unless the
 * address mode is 1) the five addresses under tags 2, 4, 5, 6 and 7. The MAC is never sent.
 * @param[in] conn     open connection.
 * @param[in] setting  the settings.
 * @par Request: set (0x00010002), command 101.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -15 an address that is not a dotted quad; nothing is sent.
 * @retval -1 answer of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_set_ethernet_setting(kvn_device_conn *conn, const kvn_ethernet_setting *setting);

/**
 * Reads the Ethernet settings, the MAC address included; addresses come back as dotted quads.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 101.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_ethernet_setting(kvn_device_conn *conn, kvn_ethernet_setting *setting);

/**
 * Resets the Ethernet settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 101.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_reset_ethernet_setting(kvn_device_conn *conn);

/**
 * Writes the serial port settings (tags 1 to 4).
 * @param[in] conn     open connection.
 * @param[in] setting  the settings.
 * @par Request: set (0x00010002), command 102.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_set_serial_setting(kvn_device_conn *conn, const kvn_serial_setting *setting);

/**
 * Reads the serial port settings.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 102.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_serial_setting(kvn_device_conn *conn, kvn_serial_setting *setting);

/**
 * Resets the serial port settings to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 102.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_reset_serial_setting(kvn_device_conn *conn);

/**
 * Writes the USB auxiliary port setting (tag 1).
 * @param[in] conn     open connection.
 * @param[in] setting  the setting.
 * @par Request: set (0x00010002), command 103.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_set_usb_auxiliary_setting(kvn_device_conn *conn, const kvn_usb_auxiliary_setting *setting);

/**
 * Reads the USB auxiliary port setting.
 * @param[in] conn      open connection.
 * @param[out] setting  receives tag 1 of the answer.
 * @par Request: get (0x00020002), command 103.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_usb_auxiliary_setting(kvn_device_conn *conn, kvn_usb_auxiliary_setting *setting);

/**
 * Resets the USB auxiliary port setting to the terminal's default.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 103.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
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

/** Product information (command 116). */
typedef struct kvn_product_info {
    uint32_t value; /* tag 1 */
    char text[50];  /* tag 2: sent at its own length when not empty; a read takes at most 50 bytes */
} kvn_product_info;

/** Debug log setting (command 129). */
typedef struct kvn_device_debug_log {
    uint32_t value_1; /* tag 1: sent, never read back */
    uint32_t value_2; /* tag 2 */
} kvn_device_debug_log;

/** Device security setting (command 128). */
typedef struct kvn_device_security {
    uint32_t value; /* tag 1 */
    char text[11];  /* tag 2: sent at its own length when not empty; a read takes at most 11 bytes */
} kvn_device_security;

/** Device status (command 202), read like kvn_device_security. */
typedef struct kvn_device_status {
    uint32_t value; /* tag 1 */
    char text[11];  /* tag 2: at most 11 bytes */
} kvn_device_status;

/** Date and time (command 126). */
typedef struct kvn_device_date_time {
    uint32_t value_1; /* tag 1 */
    uint32_t value_2; /* tag 2 */
    char text[1024];  /* tag 5: always sent, empty too; a read fills all 1024 bytes, the value's first */
    uint32_t value_6; /* tag 6 */
} kvn_device_date_time;

/** VNC setting (command 134). */
typedef struct kvn_device_vnc_setting {
    uint8_t value; /* tag 2 */
    char text[21]; /* tag 3: sent at its own length when not empty; a read takes at most 21 bytes */
} kvn_device_vnc_setting;

/**
 * Reads the device information. Each value is taken from a cleared scratch area, so a
 * short integer is zero-extended; tags 33, 34 and 40 onwards are ignored.
 * @param[in] conn   open connection.
 * @param[out] info  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 201.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_device_info(kvn_device_conn *conn, kvn_device_info *info);

/**
 * Writes the product information: tag 1, and tag 2 when the text is not empty.
 * @param[in] conn  open connection.
 * @param[in] info  the product information.
 * @par Request: set (0x00010002), command 116.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_set_product_info(kvn_device_conn *conn, const kvn_product_info *info);

/**
 * Reads the product information.
 * @param[in] conn   open connection.
 * @param[out] info  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 116.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_product_info(kvn_device_conn *conn, kvn_product_info *info);

/**
 * Resets the product information to the terminal's defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 116.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_reset_product_info(kvn_device_conn *conn);

/**
 * Writes the debug log setting (tags 1 and 2).
 * @param[in] conn  open connection.
 * @param[in] log   the setting.
 * @par Request: set (0x00010002), command 129.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_set_device_debug_log(kvn_device_conn *conn, const kvn_device_debug_log *log);

/**
 * Reads the debug log setting: value_2 only; value_1 is left as it was.
 * @param[in] conn  open connection.
 * @param[out] log  receives tag 2 of the answer.
 * @par Request: get (0x00020002), command 129.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_device_debug_log(kvn_device_conn *conn, kvn_device_debug_log *log);

/**
 * Resets the debug log setting to the terminal's default.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 129.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
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
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_device_reboot_gracefully(kvn_device_conn *conn);

/**
 * Writes the device security setting: tag 1, and tag 2 when the text is not empty.
 * @param[in] conn      open connection.
 * @param[in] security  the setting.
 * @par Request: set (0x00010002), command 128.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_set_device_security(kvn_device_conn *conn, const kvn_device_security *security);

/**
 * Reads the device security setting.
 * @param[in] conn       open connection.
 * @param[out] security  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 128.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_device_security(kvn_device_conn *conn, kvn_device_security *security);

/**
 * Resets the device security setting to the terminal's default.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 128.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_reset_device_security(kvn_device_conn *conn);

/**
 * Writes the date and time: tags 1, 2, 5 (even when the text is empty) and 6.
 * @param[in] conn       open connection.
 * @param[in] date_time  the date and time.
 * @par Request: set (0x00010002), command 126.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_set_device_date_time(kvn_device_conn *conn, const kvn_device_date_time *date_time);

/**
 * Reads the date and time.
 * @param[in] conn        open connection.
 * @param[out] date_time  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 126.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_device_date_time(kvn_device_conn *conn, kvn_device_date_time *date_time);

/**
 * Reads the device status (tag 1 value, tag 2 text of at most 11 bytes).
 * @param[in] conn     open connection.
 * @param[out] status  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 202.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_device_status(kvn_device_conn *conn, kvn_device_status *status);

/**
 * Restores the terminal's factory defaults.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 122.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_device_factory_default(kvn_device_conn *conn);

/**
 * Writes the VNC setting: tag 2, and tag 3 when the text is not empty.
 * @param[in] conn     open connection.
 * @param[in] setting  the setting.
 * @par Request: set (0x00010002), command 134.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_set_device_vnc_setting(kvn_device_conn *conn, const kvn_device_vnc_setting *setting);

/**
 * Reads the VNC setting.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 134.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_device_vnc_setting(kvn_device_conn *conn, kvn_device_vnc_setting *setting);

/**
 * Resets the VNC setting to the terminal's default.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 134.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
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

/** Names a kvn_ssl_cert_list or kvn_vpn_cert_list holds: every value of its 8-bit count. */
#define KVN_CERT_LIST_MAX 256

/* A read appends at `count` and never clears it: set count to 0 before the first read.
 * After 255 names the count wraps to 0 and the next name lands in entry 0 again. */
/** SSL certificate names (command 133). */
typedef struct kvn_ssl_cert_list {
    uint8_t count;                      /* names stored; the next name goes to entry `count` */
    char names[KVN_CERT_LIST_MAX][51];  /* tag 4: at most 50 bytes each, the rest of the entry kept */
} kvn_ssl_cert_list;

/** System notification setting (command 125). */
typedef struct kvn_system_notification_setting {
    uint32_t value;   /* tag 1 */
    char text[1024];  /* tag 2: always sent, empty too; a set has room for about 1014 bytes */
} kvn_system_notification_setting;

/** Wi-Fi status (command 135). */
typedef struct kvn_wifi_status {
    uint8_t value; /* tag 2 */
} kvn_wifi_status;

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

/** One network of a Wi-Fi scan (a tag-1 container). */
typedef struct kvn_wifi_scan_entry {
    char name[32];     /* inner tag 3: at most 32 bytes */
    char text[100];    /* inner tag 4: at most 100 bytes */
    uint32_t value_5;  /* inner tag 5 */
} kvn_wifi_scan_entry;

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

/**
 * Writes the SSL setting: tag 3, then tag 6 alone when value_6 is not 0, otherwise the
 * name (tag 4) and the secret (tag 5), both sent even when empty.
 * @param[in] conn     open connection.
 * @param[in] setting  the setting.
 * @par Request: set (0x00010002), command 127.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_set_ssl_setting(kvn_device_conn *conn, const kvn_ssl_setting *setting);

/**
 * Reads the SSL setting; the secret is never read back and keeps what it held.
 * @param[in] conn      open connection.
 * @param[out] setting  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 127.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_ssl_setting(kvn_device_conn *conn, kvn_ssl_setting *setting);

/**
 * Resets the SSL setting to the terminal's default.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 127.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_reset_ssl_setting(kvn_device_conn *conn);

/**
 * Reads the SSL certificate names, appending each tag 4 at list->count.
 * @param[in] conn       open connection.
 * @param[in,out] list   count: where the first name goes (0 for a fresh list); names: filled.
 * @par Request: get (0x00020002), command 133.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_ssl_cert_list(kvn_device_conn *conn, kvn_ssl_cert_list *list);

/**
 * Writes the system notification setting: tag 1, and tag 2 even when the text is empty.
 * @param[in] conn     open connection.
 * @param[in] setting  the setting.
 * @par Request: set (0x00010002), command 125.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 a text too long for the 1024-byte request (nothing is sent), or an answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
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
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_system_notification_setting(kvn_device_conn *conn, kvn_system_notification_setting *setting);

/**
 * Resets the system notification setting to the terminal's default.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 125.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_reset_system_notification_setting(kvn_device_conn *conn);

/**
 * Writes the Wi-Fi status (tag 2).
 * @param[in] conn    open connection.
 * @param[in] status  the status.
 * @par Request: set (0x00010002), command 135.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_set_wifi_status(kvn_device_conn *conn, const kvn_wifi_status *status);

/**
 * Reads the Wi-Fi status.
 * @param[in] conn     open connection.
 * @param[out] status  receives tag 2 of the answer.
 * @par Request: get (0x00020002), command 135.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_wifi_status(kvn_device_conn *conn, kvn_wifi_status *status);

/**
 * Resets the Wi-Fi status to the terminal's default.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 135.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
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
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
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
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_connect_wifi(kvn_device_conn *conn, const kvn_wifi_connect_setting *setting);

/**
 * Leaves a Wi-Fi network: tag 3 with the name when it is not empty, else an empty payload.
 * @param[in] conn  open connection.
 * @param[in] name  the network's name, NUL-terminated.
 * @par Request: reset (0x00030002), command 137.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 a name too long for the 1024-byte request (nothing is sent), or an answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_disconnect_wifi(kvn_device_conn *conn, const char *name);

/**
 * Reads the Wi-Fi network information.
 * @param[in] conn   open connection.
 * @param[out] info  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 138.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 20480 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
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
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
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
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_ethernet_security_setting(kvn_device_conn *conn, kvn_ethernet_security_setting *setting);

/**
 * Resets the Ethernet security setting to the terminal's default.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 163.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
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

/** VPN status (command 1002). */
typedef struct kvn_vpn_status {
    uint32_t state;   /* tag 28 */
    char address[16]; /* tag 29: dotted quad */
} kvn_vpn_status;

/* A read appends at `count` and never clears it: set count to 0 before the first read. */
/** VPN certificate names (commands 1003, 1004, 1007). */
typedef struct kvn_vpn_cert_list {
    uint8_t count;                      /* names stored; the next name goes to entry `count` */
    char names[KVN_CERT_LIST_MAX][51];  /* tags 14, 15, 21 (also inside tag-20 containers): at most 50 bytes each */
} kvn_vpn_cert_list;

/** An uploaded certificate to install (command 1005). */
typedef struct kvn_vpn_certificate_install {
    char name[51];    /* tag 21: sent even when empty */
    char secret[960]; /* tag 22: sent even when empty */
} kvn_vpn_certificate_install;

/**
 * Writes the VPN profile: all sixteen elements in record order (tags 17, 2, 3, 4 to 9, 10,
 * 11 to 16), texts at their own length even when empty.
 * @param[in] conn     open connection.
 * @param[in] profile  the profile.
 * @par Request: set (0x00010002), command 1001.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 a profile too long for the 1024-byte request (nothing is sent), or an answer as long as the request or longer.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_set_vpn_profile(kvn_device_conn *conn, const kvn_vpn_profile *profile);

/**
 * Reads the VPN profile.
 * @param[in] conn      open connection.
 * @param[out] profile  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 1001.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_vpn_profile(kvn_device_conn *conn, kvn_vpn_profile *profile);

/**
 * Resets the VPN profile to the terminal's default.
 * @param[in] conn  open connection.
 * @par Request: reset (0x00030002), command 1001.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_reset_vpn_profile(kvn_device_conn *conn);

/**
 * Reads the VPN status.
 * @param[in] conn     open connection.
 * @param[out] status  receives the fields the answer carries.
 * @par Request: get (0x00020002), command 1002.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer, or one of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
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
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_user_cert_list(kvn_device_conn *conn, kvn_vpn_cert_list *list);

/**
 * Reads the CA certificate names, as kvn_get_user_cert_list() does.
 * @param[in] conn      open connection.
 * @param[in,out] list  count: where the first name goes (0 for a fresh list); names: filled.
 * @par Request: get (0x00020002), command 1004.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer or container, or an answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_ca_cert_list(kvn_device_conn *conn, kvn_vpn_cert_list *list);

/**
 * Reads the names of the uploaded certificates, as kvn_get_user_cert_list() does.
 * @param[in] conn      open connection.
 * @param[in,out] list  count: where the first name goes (0 for a fresh list); names: filled.
 * @par Request: get (0x00020002), command 1007.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 malformed answer or container, or an answer of 1024 bytes or more.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_get_uploaded_cert_list(kvn_device_conn *conn, kvn_vpn_cert_list *list);

/**
 * Installs an uploaded certificate: tag 21 the name, tag 22 the secret, both sent even when empty.
 * @param[in] conn     open connection.
 * @param[in] install  the certificate's name and secret.
 * @par Request: set (0x00010002), command 1005.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 answer as long as the request or longer.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_install_uploaded_certificate(kvn_device_conn *conn, const kvn_vpn_certificate_install *install);

/**
 * Uninstalls a user certificate: tag 14 with the name, sent even when empty.
 * @param[in] conn  open connection.
 * @param[in] name  the certificate's name, NUL-terminated.
 * @par Request: set (0x00010002), command 1006.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 a name too long for the 1024-byte request (nothing is sent), or an answer as long as the request or longer.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_uninstall_user_certificate(kvn_device_conn *conn, const char *name);

/**
 * Uninstalls a CA certificate: tag 15 with the name, sent even when empty.
 * @param[in] conn  open connection.
 * @param[in] name  the certificate's name, NUL-terminated.
 * @par Request: set (0x00010002), command 1006.
 * @return 0 on success, the terminal's status (returned unchanged), or:
 * @retval -1 a name too long for the 1024-byte request (nothing is sent), or an answer as long as the request or longer.
 * @retval -2/-3/-6/-12 read or write failure, CRC mismatch, bad sync word.
 */
KVN_API int32_t kvn_uninstall_ca_certificate(kvn_device_conn *conn, const char *name);

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

/* @@LOGS@@ (end of section) */

/* ------------------------------------------------------------------------- */
/* Card reading and layouts, card server and preference, Wiegand formats and ports */
/* ------------------------------------------------------------------------- */

/* @@CARDS@@ (end of section) */

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* KVNSDK2_H */
