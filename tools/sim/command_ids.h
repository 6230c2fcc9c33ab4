// The command ids the simulated terminal answers, by name. This is the only place
// where an id is written as a number: the command table (command_table.cpp) gives
// each one its family, handler and request types, and every other file names a
// command through this enum.
#pragma once

#include <cstdint>

namespace kvnsim {

enum class Cmd : uint32_t {
    // Users, enrolment, identification and verification.
    Enrol = 1,
    VerifyTemplate = 3,
    VerifyUserId = 4,
    VerifyRecord = 5,
    Identify = 6,
    UserRecord = 7,
    UserCount = 8,
    UserGroup = 10,
    UserGroupCount = 11,
    UserGroupsClear = 12,
    FingerCheck = 13,
    TemplateUpdate = 14,
    EnrolUnique = 15,
    IdentifyTemplate = 16,

    // Settings groups and device operations.
    Ethernet = 101,
    Serial = 102,
    UsbAuxiliary = 103,
    Led = 104,
    AccessSchedules = 105,
    HolidaySchedules = 106,
    BiometricSchedule = 107,
    Biometric = 108,
    TimeAttendance = 109,
    Audio = 110,
    Buzzer = 111,
    InputPurpose = 112,
    OutputPurpose = 113,
    Dac = 115,
    ProductInfo = 116,
    AccessScheduleNames = 119,
    File = 120,
    RebootForced = 121,
    FactoryDefault = 122,
    WiegandInput = 123,
    WiegandOutput = 124,
    SystemNotification = 125,
    DateTime = 126,
    Ssl = 127,
    DeviceSecurity = 128,
    DebugLog = 129,
    WiegandPulse = 130,
    RebootGraceful = 131,
    SslCertList = 133,
    Vnc = 134,
    WifiStatus = 135,
    WifiScan = 136,
    WifiConnect = 137,
    WifiInfo = 138,
    MultiUser = 139,
    ImageList = 140,
    SrlServer = 141,
    Voip = 142,
    VoipContacts = 145,
    JobCodes = 146,
    VoipDefaultContact = 147,
    Lcd = 149,
    DoorOpenSchedule = 155,
    UserDisplayImage = 156,
    EthernetSecurity = 163,
    MultiWiegandInput = 165,
    NextSensor = 166,

    // Device information, status and image display.
    DeviceInfo = 201,
    DeviceStatus = 202,
    DisplayImage = 205,

    // Sensors and alarms.
    SensorTest = 301,
    SensorReset = 302,
    SensorAutoOn = 303,
    ProximitySensor = 304,
    FireAlarm = 305,
    AntiShock = 306,

    // Transaction logs.
    LogsAll = 401,
    LogsUnread = 402,
    LogsRead = 403,
    LogsForDate = 404,
    LogCountTotal = 405,
    LogCountUnread = 406,
    LogCountRead = 407,
    LogCountForDate = 408,
    LogMarkRead = 409,
    LogMarkOnline = 410,
    LogCountForCriteria = 411,
    LogsForCriteria = 412,
    LogsDeleteAll = 413,

    // Template indexes, device notification, biometric counts.
    TemplatesDelete = 505,
    DeviceNotification = 507,
    BiometricCount = 508,

    // Firmware upgrade, backup restore, CSV user lists.
    FileAction = 601,

    // Wiegand formats and the proximity card number.
    WiegandFormatUpload = 701,
    WiegandFormatList = 702,
    ProxCardSerial = 703,
    WiegandFormatDelete = 704,

    // Audio playback.
    AudioPlay = 801,
    AudioStop = 802,
    AudioList = 803,

    // Cards and smart cards.
    CardSerial = 901,
    Csn = 902,
    AccessKeys = 903,
    MifareLayout = 904,
    SmartCardWrite = 905,
    SmartCardSecure = 906,
    DesfireFormat = 907,
    Desfire = 908,
    SmartCardRead = 909,
    RevokedCards = 910,
    RevokedCount = 911,
    KeyFlags = 912,
    HidLayout = 913,
    CardPreference = 916,
    Pacs = 917,

    // VPN and certificates.
    VpnProfile = 1001,
    VpnStatus = 1002,
    UserCertList = 1003,
    CaCertList = 1004,
    CertInstall = 1005,
    CertUninstall = 1006,
    UploadedCertList = 1007,
};

constexpr uint32_t id_of(Cmd c) { return static_cast<uint32_t>(c); }

}  // namespace kvnsim
