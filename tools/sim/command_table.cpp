// The command table. Rows are in id order; a command keeps its settings group
// under its own id.
#include "command_table.h"

#include <algorithm>

#include "handlers.h"

namespace kvnsim {
namespace {

using F = Family;
namespace set = settings;

// Request type sets.
constexpr uint8_t S = bit(kSet), G = bit(kGet), R = bit(kReset);
constexpr uint8_t SGR = S | G | R;
constexpr uint8_t kTransfer = bit(kUpload) | bit(kDownload);

constexpr Command kTable[] = {
    {Cmd::Enrol, F::biometrics, G, biometrics::enrol, nullptr},
    {Cmd::VerifyTemplate, F::biometrics, G, biometrics::verify_template, nullptr},
    {Cmd::VerifyUserId, F::biometrics, G, biometrics::verify_user_id, nullptr},
    {Cmd::VerifyRecord, F::biometrics, G, biometrics::verify_record, nullptr},
    {Cmd::Identify, F::biometrics, G, biometrics::identify, nullptr},
    {Cmd::UserRecord, F::users, SGR, users::record, nullptr},
    {Cmd::UserCount, F::users, G, users::count, nullptr},
    {Cmd::UserGroup, F::user_groups, SGR, user_groups::group, nullptr},
    {Cmd::UserGroupCount, F::user_groups, G, user_groups::count, nullptr},
    {Cmd::UserGroupsClear, F::user_groups, R, user_groups::clear, nullptr},
    {Cmd::FingerCheck, F::biometrics, G, biometrics::finger_check, nullptr},
    {Cmd::TemplateUpdate, F::biometrics, G, biometrics::template_update, nullptr},
    {Cmd::EnrolUnique, F::biometrics, G, biometrics::enrol_unique, nullptr},
    {Cmd::IdentifyTemplate, F::biometrics, G, biometrics::identify_template, nullptr},

    {Cmd::Ethernet, F::network, SGR, network::ethernet, &network::kEthernet},
    {Cmd::Serial, F::network, SGR, set::plain, &network::kSerial},
    {Cmd::UsbAuxiliary, F::network, SGR, set::plain, &network::kUsbAuxiliary},
    {Cmd::Led, F::indication, SGR, set::plain, &indication::kLed},
    {Cmd::AccessSchedules, F::schedules, SGR, schedules::indexed, &schedules::kAccess},
    {Cmd::HolidaySchedules, F::schedules, SGR, schedules::indexed, &schedules::kHoliday},
    {Cmd::BiometricSchedule, F::schedules, SGR, set::plain, &schedules::kWeek},
    {Cmd::Biometric, F::sensors, SGR, set::plain, &sensors::kBiometric},
    {Cmd::TimeAttendance, F::io, SGR, set::plain, &io::kTimeAttendance},
    {Cmd::Audio, F::indication, SGR, indication::audio, &indication::kAudio},
    {Cmd::Buzzer, F::indication, SGR, set::plain, &indication::kBuzzer},
    {Cmd::InputPurpose, F::io, SGR, set::plain, &io::kInputPurpose},
    {Cmd::OutputPurpose, F::io, SGR, set::plain, &io::kOutputPurpose},
    {Cmd::Dac, F::door, SGR, door::dac, &door::kDac},
    {Cmd::ProductInfo, F::device, SGR, set::plain, &device::kProductInfo},
    {Cmd::AccessScheduleNames, F::schedules, G, schedules::names, nullptr},
    {Cmd::File, F::files, SGR | kTransfer, files::transfer, nullptr},
    {Cmd::RebootForced, F::device, R, device::reboot_forced, nullptr},
    {Cmd::FactoryDefault, F::device, R, device::factory_default, nullptr},
    {Cmd::WiegandInput, F::wiegand, SGR, set::plain, &wiegand::kInput},
    {Cmd::WiegandOutput, F::wiegand, SGR, set::plain, &wiegand::kOutput},
    {Cmd::SystemNotification, F::wireless, SGR, set::plain, &wireless::kSystemNotification},
    {Cmd::DateTime, F::device, S | G, device::clock, &device::kDateTime},
    {Cmd::Ssl, F::wireless, SGR, set::plain, &wireless::kSsl},
    {Cmd::DeviceSecurity, F::device, SGR, set::plain, &device::kSecurity},
    {Cmd::DebugLog, F::device, SGR, set::plain, &device::kDebugLog},
    {Cmd::WiegandPulse, F::wiegand, SGR, set::plain, &wiegand::kPulse},
    {Cmd::RebootGraceful, F::device, R, device::reboot_graceful, nullptr},
    {Cmd::SslCertList, F::certificates, G, certificates::ssl_list, nullptr},
    {Cmd::Vnc, F::device, SGR, set::plain, &device::kVnc},
    {Cmd::WifiStatus, F::wireless, SGR, set::plain, &wireless::kWifiStatus},
    {Cmd::WifiScan, F::wireless, G, wireless::scan, nullptr},
    {Cmd::WifiConnect, F::wireless, S | R, wireless::connect, nullptr},
    {Cmd::WifiInfo, F::wireless, G, wireless::info, nullptr},
    {Cmd::MultiUser, F::sensors, SGR, set::plain, &sensors::kMultiUser},
    {Cmd::ImageList, F::indication, G, indication::image_list, nullptr},
    {Cmd::SrlServer, F::cards, SGR, set::plain, &cards::kSrlServer},
    {Cmd::Voip, F::voip, SGR, set::plain, &voip::kVoip},
    {Cmd::VoipContacts, F::voip, SGR, voip::contacts, &voip::kContacts},
    {Cmd::JobCodes, F::io, SGR, io::job_codes, &io::kJobCodes},
    {Cmd::VoipDefaultContact, F::voip, G, voip::default_contact, nullptr},
    {Cmd::Lcd, F::indication, SGR, set::plain, &indication::kLcd},
    {Cmd::DoorOpenSchedule, F::schedules, SGR, set::plain, &schedules::kWeek},
    {Cmd::UserDisplayImage, F::user_groups, SGR, set::plain, &user_groups::kDisplayImage},
    {Cmd::EthernetSecurity, F::wireless, SGR, set::plain, &wireless::kEthernetSecurity},
    {Cmd::MultiWiegandInput, F::wiegand, SGR, set::plain, &wiegand::kMultiInput},
    {Cmd::NextSensor, F::sensors, SGR, set::plain, &sensors::kNextSensor},

    {Cmd::DeviceInfo, F::device, G, device::info, nullptr},
    {Cmd::DeviceStatus, F::device, G, device::status, nullptr},
    {Cmd::DisplayImage, F::indication, S, indication::display_image, nullptr},

    {Cmd::SensorTest, F::sensors, G, sensors::test, nullptr},
    {Cmd::SensorReset, F::sensors, R, sensors::reset, nullptr},
    {Cmd::SensorAutoOn, F::sensors, SGR, set::plain, &sensors::kAutoOn},
    {Cmd::ProximitySensor, F::sensors, SGR, set::plain, &sensors::kProximity},
    {Cmd::FireAlarm, F::sensors, SGR, sensors::fire_alarm, &sensors::kFireAlarm},
    {Cmd::AntiShock, F::sensors, SGR, sensors::antishock, &sensors::kAntiShock},

    {Cmd::LogsAll, F::logs, G, logs::read_all, nullptr},
    {Cmd::LogsUnread, F::logs, G, logs::read_unread, nullptr},
    {Cmd::LogsRead, F::logs, G, logs::read_read, nullptr},
    {Cmd::LogsForDate, F::logs, G, logs::read_for_date, nullptr},
    {Cmd::LogCountTotal, F::logs, G, logs::count_total, nullptr},
    {Cmd::LogCountUnread, F::logs, G, logs::count_unread, nullptr},
    {Cmd::LogCountRead, F::logs, G, logs::count_read, nullptr},
    {Cmd::LogCountForDate, F::logs, G, logs::count_for_date, nullptr},
    {Cmd::LogMarkRead, F::logs, S, logs::mark_read, nullptr},
    {Cmd::LogMarkOnline, F::logs, G, logs::mark_online, nullptr},
    {Cmd::LogCountForCriteria, F::logs, G, logs::count_for_criteria, nullptr},
    {Cmd::LogsForCriteria, F::logs, G, logs::read_for_criteria, nullptr},
    {Cmd::LogsDeleteAll, F::logs, R, logs::delete_all, nullptr},

    {Cmd::TemplatesDelete, F::biometrics, S, biometrics::templates_delete, nullptr},
    {Cmd::DeviceNotification, F::indication, SGR, set::plain, &indication::kDeviceNotification},
    {Cmd::BiometricCount, F::biometrics, G, biometrics::template_count, nullptr},

    {Cmd::FileAction, F::files, S | G, files::action, nullptr},

    {Cmd::WiegandFormatUpload, F::wiegand, S, wiegand::upload, nullptr},
    {Cmd::WiegandFormatList, F::wiegand, G, wiegand::list, nullptr},
    {Cmd::ProxCardSerial, F::cards, G, cards::prox_serial, nullptr},
    {Cmd::WiegandFormatDelete, F::wiegand, S, wiegand::remove, nullptr},

    {Cmd::AudioPlay, F::indication, S, indication::audio_play, nullptr},
    {Cmd::AudioStop, F::indication, S, indication::audio_stop, nullptr},
    {Cmd::AudioList, F::indication, G, indication::audio_list, nullptr},

    {Cmd::CardSerial, F::cards, G, cards::serial, nullptr},
    {Cmd::Csn, F::cards, SGR, set::plain, &cards::kCsn},
    {Cmd::AccessKeys, F::cards, S | R, set::plain, &cards::kAccessKeys},
    {Cmd::MifareLayout, F::cards, SGR, cards::mifare, &cards::kMifare},
    {Cmd::SmartCardWrite, F::cards, S | R, cards::write, nullptr},
    {Cmd::SmartCardSecure, F::cards, S, cards::secure, nullptr},
    {Cmd::DesfireFormat, F::cards, S, cards::format, nullptr},
    {Cmd::Desfire, F::cards, SGR, set::plain, &cards::kDesfire},
    {Cmd::SmartCardRead, F::cards, G, cards::read, nullptr},
    {Cmd::RevokedCards, F::cards, SGR, cards::revoked, nullptr},
    {Cmd::RevokedCount, F::cards, G, cards::revoked_count, nullptr},
    {Cmd::KeyFlags, F::cards, SGR, set::plain, &cards::kKeyFlags},
    {Cmd::HidLayout, F::cards, SGR, set::plain, &cards::kHid},
    {Cmd::CardPreference, F::cards, SGR, set::plain, &cards::kPreference},
    {Cmd::Pacs, F::cards, SGR, cards::pacs, &cards::kPacs},

    {Cmd::VpnProfile, F::certificates, SGR, set::plain, &certificates::kVpnProfile},
    {Cmd::VpnStatus, F::certificates, G, certificates::vpn_status, nullptr},
    {Cmd::UserCertList, F::certificates, G, certificates::user_list, nullptr},
    {Cmd::CaCertList, F::certificates, G, certificates::ca_list, nullptr},
    {Cmd::CertInstall, F::certificates, S, certificates::install, nullptr},
    {Cmd::CertUninstall, F::certificates, S, certificates::uninstall, nullptr},
    {Cmd::UploadedCertList, F::certificates, G, certificates::uploaded_list, nullptr},
};

}  // namespace

const Group& Call::group() const { return *cmd.group; }

std::span<const Command> command_table() { return kTable; }

const Command* find_command(uint32_t id) {
    const Command* end = std::end(kTable);
    const Command* it = std::lower_bound(std::begin(kTable), end, id,
                                         [](const Command& row, uint32_t x) { return id_of(row.id) < x; });
    return it != end && id_of(it->id) == id ? it : nullptr;
}

const Group* group_of(Cmd id) {
    const Command* row = find_command(id_of(id));
    return row ? row->group : nullptr;
}

}  // namespace kvnsim
