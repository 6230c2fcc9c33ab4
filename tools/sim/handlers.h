// The handlers of every family and the settings groups each family owns. The
// command table binds them to command ids; a handler answers one request under
// the terminal's lock and never tells commands apart by their id: the id it is
// called with only names the group it keeps (Call::cmd).
#pragma once

#include <vector>

#include "command_table.h"
#include "setting_groups.h"
#include "state.h"

namespace kvnsim {

// An IPv4 address as the wire carries it: a·2^24 + b·2^16 + c·2^8 + d.
constexpr uint32_t ip(int a, int b, int c, int d) {
    return uint32_t(a) << 24 | uint32_t(b) << 16 | uint32_t(c) << 8 | uint32_t(d);
}

// The plain settings pattern that most groups follow (settings.cpp): set checks
// the elements against the group's fields and stores them (merging keyed
// entries), get answers what is held, reset restores the defaults.
namespace settings {
Reply plain(Call& c);
Reply get(Call& c);
Reply reset(Call& c);
// Parses a set against the group's fields and checks its keys; 0 or a status.
int32_t parse_set(Call& c, std::vector<Node>* in);
// Stores parsed elements as a plain set does, and saves the group.
Reply store(Call& c, std::vector<Node>&& in);
}  // namespace settings

namespace users {  // users.cpp
Reply record(Call& c);
Reply count(Call& c);
}  // namespace users

namespace biometrics {  // biometrics.cpp
Reply enrol(Call& c);
Reply enrol_unique(Call& c);
Reply identify(Call& c);
Reply identify_template(Call& c);
Reply verify_template(Call& c);
Reply verify_user_id(Call& c);
Reply verify_record(Call& c);
Reply finger_check(Call& c);
Reply template_update(Call& c);
Reply templates_delete(Call& c);
Reply template_count(Call& c);
}  // namespace biometrics

namespace user_groups {  // user_groups.cpp
extern const Group kDisplayImage;
Reply group(Call& c);
Reply count(Call& c);
Reply clear(Call& c);
}  // namespace user_groups

namespace indication {  // indication.cpp
extern const Group kLed, kBuzzer, kAudio, kLcd, kDeviceNotification;
Reply audio(Call& c);
Reply audio_play(Call& c);
Reply audio_stop(Call& c);
Reply audio_list(Call& c);
Reply image_list(Call& c);
Reply display_image(Call& c);
}  // namespace indication

namespace sensors {  // sensors.cpp
extern const Group kBiometric, kMultiUser, kNextSensor, kAutoOn, kProximity, kFireAlarm, kAntiShock;
Reply test(Call& c);
Reply reset(Call& c);
Reply fire_alarm(Call& c);
Reply antishock(Call& c);
}  // namespace sensors

namespace door {  // door.cpp
extern const Group kDac;
Reply dac(Call& c);
}  // namespace door

namespace network {  // network.cpp
constexpr char kMac[] = "00:1A:2B:3C:4D:5E";  // the Ethernet MAC, fixed
extern const Group kEthernet, kSerial, kUsbAuxiliary;
Reply ethernet(Call& c);
}  // namespace network

namespace device {  // device.cpp
extern const Group kProductInfo, kDateTime, kSecurity, kDebugLog, kVnc;
Reply clock(Call& c);
Reply info(Call& c);
Reply status(Call& c);
Reply reboot_forced(Call& c);
Reply reboot_graceful(Call& c);
Reply factory_default(Call& c);
}  // namespace device

namespace wireless {  // wireless.cpp
extern const Group kSystemNotification, kSsl, kWifiStatus, kEthernetSecurity;
Reply scan(Call& c);
Reply connect(Call& c);
Reply info(Call& c);
}  // namespace wireless

namespace certificates {  // certificates.cpp
constexpr uint32_t kVpnAddress = ip(10, 8, 0, 2);  // the terminal's address while the VPN is up
// The VPN is up while the profile's value 17 is non-zero.
bool vpn_up(State& st);
extern const Group kVpnProfile;
Reply ssl_list(Call& c);
Reply user_list(Call& c);
Reply ca_list(Call& c);
Reply uploaded_list(Call& c);
Reply install(Call& c);
Reply uninstall(Call& c);
Reply vpn_status(Call& c);
}  // namespace certificates

namespace io {  // io.cpp
extern const Group kInputPurpose, kOutputPurpose, kTimeAttendance, kJobCodes;
Reply job_codes(Call& c);
}  // namespace io

namespace voip {  // voip.cpp
extern const Group kVoip, kContacts;
Reply contacts(Call& c);
Reply default_contact(Call& c);
}  // namespace voip

namespace logs {  // logs.cpp
Reply read_all(Call& c);
Reply read_unread(Call& c);
Reply read_read(Call& c);
Reply read_for_date(Call& c);
Reply read_for_criteria(Call& c);
Reply count_total(Call& c);
Reply count_unread(Call& c);
Reply count_read(Call& c);
Reply count_for_date(Call& c);
Reply count_for_criteria(Call& c);
Reply mark_read(Call& c);
Reply mark_online(Call& c);
Reply delete_all(Call& c);
}  // namespace logs

namespace files {  // files.cpp
Reply transfer(Call& c);
Reply action(Call& c);
}  // namespace files

namespace schedules {  // schedules.cpp
extern const Group kWeek, kHoliday, kAccess;
Reply indexed(Call& c);
Reply names(Call& c);
}  // namespace schedules

namespace cards {  // cards.cpp
extern const Group kCsn, kAccessKeys, kMifare, kDesfire, kKeyFlags, kHid, kPreference, kPacs, kSrlServer;
Reply serial(Call& c);
Reply prox_serial(Call& c);
Reply pacs(Call& c);
Reply mifare(Call& c);
Reply write(Call& c);
Reply secure(Call& c);
Reply format(Call& c);
Reply read(Call& c);
Reply revoked(Call& c);
Reply revoked_count(Call& c);
}  // namespace cards

namespace wiegand {  // wiegand.cpp
extern const Group kInput, kOutput, kPulse, kMultiInput;
Reply upload(Call& c);
Reply list(Call& c);
Reply remove(Call& c);
}  // namespace wiegand

}  // namespace kvnsim
