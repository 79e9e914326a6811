// The list: a call with plausible arguments, and the request that it must send.
#include "tests/commands/every_command.h"

#include "include/zop.h"

namespace test {

using O = Outputs&;

static uint32_t* u(int32_t& value) { return static_cast<uint32_t*>(static_cast<void*>(&value)); }
static char* text(O o) { return static_cast<char*>(static_cast<void*>(o.bytes)); }

static const uint8_t PIN[8] = {'1', '2', '3', '4'};
static const uint8_t TIME[14] = {0x31, 0x32, 0x33, 0x34};
static const uint8_t NEW_PIN[8] = {'5', '6', '7', '8'};

#define ONE(function, type) [](O o) { return function(type(o.a)); }
#define SIGNED(x) &x

const std::vector<Command>& every_command() {
  constexpr auto PLAIN = Command::PLAIN;
  constexpr auto DIRECT = Command::DIRECT;
  constexpr auto BLIND = Command::BLIND;
  constexpr auto NONE = Command::NONE;
  constexpr auto BYTE3 = Command::BYTE3;
  static const std::vector<Command> list = {
      // Network
      {"roaming", ONE(zop_get_roaming_status, u), "cf 21 00", 3},
      {"home", [](O) { return zop_try_to_use_home_network(); }, "cf 22 00", 3, PLAIN, BYTE3},
      {"dsm", ONE(zop_get_data_service_mode, SIGNED), "cf 24 00", 3},
      {"uarfcn", ONE(zop_get_uarfcn, u), "cf 25 00", 3},
      {"call", ONE(zop_get_call_status, u), "cf 26 00", 3},
      {"rac", ONE(zop_get_rac, u), "cf 2f 00", 3},
      {"mcc", [](O o) { return zop_get_mcc(o.bytes, &o.size); }, "cf 30 00", 3, PLAIN, NONE, true},
      {"mnc", [](O o) { return zop_get_mnc(o.bytes, &o.size); }, "cf 31 00", 3, PLAIN, NONE, true},
      {"lai", [](O o) { return zop_get_location_area_id(o.bytes, &o.size); }, "cf 32 00", 3, PLAIN,
       NONE, true},
      {"cell", ONE(zop_get_cell_id, u), "cf 33 00", 3},
      {"name", [](O o) { return zop_get_network_name(o.bytes, &o.size); }, "cf 3a 00", 3, PLAIN,
       NONE, true},
      {"service", ONE(zop_get_service_status, SIGNED), "cf 3b 00", 3},
      {"registration", ONE(zop_get_registration_status, u), "cf 3c 00", 3},
      {"orig", [](O o) { return zop_get_info_event_orig(o.bytes); }, "cf 3e 00", 3, PLAIN, BYTE3},
      {"act", [](O o) { return zop_get_info_event_act(o.bytes); }, "cf 3f 00", 3, PLAIN, BYTE3},
      {"deact", [](O o) { return zop_get_info_event_deact(o.bytes); }, "cf 40 00", 3, PLAIN, BYTE3},
      {"end", [](O o) { return zop_get_info_event_end(o.bytes); }, "cf 41 00", 3, PLAIN, BYTE3},
      {"band", ONE(zop_get_band, SIGNED), "cf 51 00", 3, PLAIN, BYTE3},
      {"opmode", ONE(zop_get_network_op_mode, SIGNED), "cf 52 00", 3, PLAIN, BYTE3},
      {"mm attach", [](O o) { return zop_get_mm_attach_state(&o.a, &o.b); }, "cf 53 00", 3, PLAIN,
       BYTE3},
      {"gmm attach", [](O o) { return zop_get_gmm_attach_state(&o.a, &o.b); }, "cf 54 00", 3, PLAIN,
       BYTE3},
      {"mfrm", ONE(zop_get_mfrm, SIGNED), "cf 55 00", 3, PLAIN, BYTE3},
      {"gmm", ONE(zop_get_gmm_state, SIGNED), "cf 56 00", 3, PLAIN, BYTE3},
      {"pdp", [](O o) { return zop_get_pdp_state(&o.a, &o.b); }, "cf 57 00", 3, PLAIN, BYTE3},
      {"pmm", ONE(zop_get_pmm_mode, SIGNED), "cf 58 00", 3, PLAIN, BYTE3},
      {"drx", ONE(zop_get_drx, u), "cf 59 00", 3, PLAIN, BYTE3},
      {"hsdpa", [](O o) { return zop_get_hsdpa_status(&o.a, &o.b); }, "cf 5a 00", 3, PLAIN, BYTE3},
      {"egprs", ONE(zop_get_egprs_indication, SIGNED), "cf 5e 00", 3, PLAIN, BYTE3},
      {"lu", [](O o) { return zop_get_mm_lu_state(&o.a, &o.b); }, "cf 65 00", 3, PLAIN, BYTE3},
      {"rau", [](O o) { return zop_get_gmm_rau_state(&o.a, &o.b); }, "cf 66 00", 3, PLAIN, BYTE3},
      {"powerup", ONE(zop_get_powerup_flag, u), "cf 6d 00", 3, PLAIN, BYTE3},
      {"rau type", ONE(zop_get_rau_type, u), "cf 6e 00", 3, PLAIN, BYTE3},
      {"carrier", ONE(zop_get_carrier, SIGNED), "cf 6f 00", 3, PLAIN, BYTE3},
      {"time", [](O o) { return zop_get_network_time(o.bytes); }, "cf 14 00", 3, PLAIN, BYTE3},
      {"mode", ONE(zop_get_system_mode, u), "cf 1f 00", 3},
      // Identity
      {"imei", [](O o) { return zop_get_imei(o.bytes, &o.size); }, "cf 67 00", 3, PLAIN, NONE,
       true},
      {"imsi", [](O o) { return zop_get_imsi(o.bytes, &o.size); }, "cf 68 00", 3, PLAIN, NONE,
       true},
      {"iccid", [](O o) { return zop_get_iccid(o.bytes, &o.size); }, "cf 23 00", 3, PLAIN, BYTE3,
       true},
      {"phone", [](O o) { return zop_get_radio_phone_number(text(o), &o.size); }, "cf 07 00", 3,
       PLAIN, NONE, true},
      {"hardware", [](O o) { return zop_get_hardware_version(o.bytes, &o.size); }, "cf 48 00", 3,
       PLAIN, NONE, true},
      {"firmware", [](O o) { return zop_get_firmware_version(o.bytes, &o.size); }, "cf 5d 00", 3,
       PLAIN, NONE, true},
      {"esn", [](O o) { return zop_get_radio_serial_number(o.bytes, &o.size); }, "01", 1, PLAIN,
       NONE, true},
      {"card", ONE(zop_get_card_mode, SIGNED), "cf 4a 00", 3},
      // SIM
      {"sim", [](O o) { return zop_simcard_status(u(o.a), u(o.b), u(o.c)); }, "d2 00 00", 3, PLAIN,
       BYTE3},
      {"verify", [](O o) { return zop_simcard_verify(PIN, 4, u(o.a)); },
       "d2 01 00 00 00 00 00 00 00 00 00 31 32 33 34", 19, PLAIN, Command::SIM_RESULT},
      {"change", [](O o) { return zop_simcard_change(PIN, 4, NEW_PIN, 4, u(o.a)); },
       "d2 02 00 00 00 00 00 00 00 00 00 31 32 33 34 00 00 00 00 35 36 37 38", 27, PLAIN,
       Command::SIM_RESULT},
      {"disable", [](O o) { return zop_simcard_disable(PIN, 4, u(o.a)); },
       "d2 03 00 00 00 00 00 00 00 00 00 31 32 33 34", 19, PLAIN, Command::SIM_RESULT},
      {"enable", [](O o) { return zop_simcard_enable(PIN, 4, u(o.a)); },
       "d2 04 00 00 00 00 00 00 00 00 00 31 32 33 34", 19, PLAIN, Command::SIM_RESULT},
      {"unblock", [](O o) { return zop_simcard_unblock(PIN, 4, NEW_PIN, 4, u(o.a)); },
       "d2 05 00 00 00 00 00 00 00 00 00 31 32 33 34 00 00 00 00 35 36 37 38", 27, PLAIN,
       Command::SIM_RESULT},
      {"pin write", [](O o) { return zop_simcard_pin_write(PIN, 4, u(o.a)); },
       "27 2d 41 31 32 33 34", 133},
      {"pin read", [](O o) { return zop_simcard_pin_read(o.bytes, 0, u(o.a)); }, "26 2d 41", 133},
      {"vsim", [](O) { return zop_vsim_status_change(0x101); }, "d5 28 00 01", 4, PLAIN, BYTE3},
      // PLMN lists
      {"oplmn", [](O o) { return zop_get_uim_data_oplmn(o.bytes); }, "cf 5f 00", 3, PLAIN, BYTE3},
      {"hplmn", [](O o) { return zop_get_uim_data_hplmn(o.bytes); }, "cf 60 00", 3, PLAIN, BYTE3},
      {"rplmn", [](O o) { return zop_get_uim_data_rplmn(o.bytes); }, "cf 61 00", 3, PLAIN, BYTE3},
      {"fplmn", [](O o) { return zop_get_uim_data_fplmn(o.bytes); }, "cf 62 00", 3},
      {"uplmn", [](O o) { return zop_get_uim_data_uplmn(o.bytes); }, "cf 69 00", 3, PLAIN, BYTE3},
      {"set uplmn",
       [](O) {
         return zop_set_uim_data_uplmn({{1, '0', '0', '1'}});
       },
       "cf 6a 00 01 30 30 31", 124, PLAIN, BYTE3},
      {"oplmn block", [](O o) { return zop_get_uim_data_oplmn_partial(256, u(o.a), o.bytes); },
       "cf 6b 00 00", 4, PLAIN, BYTE3},
      {"hplmn block", [](O o) { return zop_get_uim_data_hplmn_partial(21, u(o.a), o.bytes); },
       "cf 6c 00 15", 4, PLAIN, BYTE3},
      {"sim file", [](O o) { return zop_get_uim_data(0x6F7B, 0x01020304, o.bytes, u(o.a)); },
       "cf 4b 00 7b 6f 00 00 04 03 02 01", 11, PLAIN, BYTE3},
      // NV items
      {"nv read", [](O o) { return zop_nv_read(4711, o.bytes, 128, u(o.a)); }, "26 67 12", 133},
      {"nv write", [](O o) { return zop_nv_write(4711, PIN, 4, u(o.a)); }, "27 67 12 31 32 33 34",
       133},
      {"set pref mode", [](O) { return zop_set_pref_mode(0x102); }, "27 0a 00 00 02", 133, PLAIN,
       Command::NV},
      {"pref mode", ONE(zop_get_pref_mode, u), "26 0a 00", 133, PLAIN, Command::NV},
      {"domain", ONE(zop_get_pref_service_domain, u), "26 52 03", 133, PLAIN, Command::NV},
      {"set mgrf", [](O) { return zop_set_mgrf_supported(1); }, "27 07 17 01", 133, PLAIN,
       Command::NV},
      {"mgrf", ONE(zop_get_mgrf_supported, u), "26 07 17", 133, PLAIN, Command::NV},
      {"set order", [](O) { return zop_set_acq_band_order(3); }, "27 2f 41 03", 133, PLAIN,
       Command::NV},
      {"order", ONE(zop_get_acq_band_order, u), "26 2f 41", 133, PLAIN, Command::NV},
      // Configuration
      {"diag port", [](O) { return zop_set_diag_port(1); }, "cf 43 00 01", 4, PLAIN, BYTE3},
      {"reset", [](O) { return zop_set_reset(); }, "cf 44 00 00", 4, PLAIN, BYTE3},
      {"error fatal", [](O) { return zop_set_error_fatal(); }, "cf 45 00 00", 4, PLAIN, BYTE3},
      {"factory test", [](O) { return zop_enable_factory_test(1); }, "cf 49 00 01", 4, PLAIN,
       BYTE3},
      {"set band", [](O) { return zop_set_band(84); }, "cf 42 00 54", 4, PLAIN, BYTE3},
      {"mode change", [](O) { return zop_mode_change(255); }, "29 ff 00", 3},
      {"search order", [](O) { return zop_set_network_search_order(3, 48); }, "29 30 00", 3},
      {"backup status", [](O o) { return zop_get_backup_status(u(o.a), u(o.b)); }, "cf 4c 00", 3,
       DIRECT, BYTE3},
      {"backup 1", [](O) { return zop_set_backup(1); }, "d8", 1, DIRECT, Command::INVERTED},
      {"backup 2", [](O) { return zop_set_backup(2); }, "d6", 1, DIRECT, Command::INVERTED},
      {"backup 4", [](O) { return zop_set_backup(4); }, "d7", 1, DIRECT, Command::INVERTED},
      {"backup 5", [](O) { return zop_set_backup(5); }, "d9", 1, DIRECT, Command::INVERTED},
      {"profiles", [](O o) { return zop_read_pdp_profile(o.bytes); }, "cf 46 00 01", 4, PLAIN,
       BYTE3},
      {"write profile",
       [](O) {
         return zop_write_pdp_profile({{1, 2, 3}});
       },
       "cf 1b 00 01 02 03", 106, PLAIN, BYTE3},
      // Radio
      {"rssi", ONE(zop_get_rssi, SIGNED), "cf 20 00", 3, Command::COMPARES},
      {"rscp", ONE(zop_get_rscp, SIGNED), "cf 27 00", 3},
      {"tx power", ONE(zop_get_txpower, SIGNED), "cf 28 00", 3},
      {"active", [](O o) { return zop_get_active_set_list(o.bytes, &o.size); }, "cf 29 00", 3},
      {"monitored", [](O o) { return zop_get_monitored_set_list(o.bytes, &o.size); }, "cf 2a 00",
       3},
      {"detected", [](O o) { return zop_get_detected_set_list(o.bytes, &o.size); }, "cf 2b 00", 3},
      {"neighbours", [](O o) { return zop_get_neighbor_cell_list(o.bytes); }, "cf 2c 00", 3},
      {"best six", [](O o) { return zop_get_best_six_cell_list(o.bytes); }, "cf 2d 00", 3},
      {"path loss", ONE(zop_get_pathloss, SIGNED), "cf 39 00", 3},
      {"screen", [](O o) { return zop_get_field_information(o.bytes); }, "cf 34 00", 3},
      {"bars", ONE(zop_get_bars, SIGNED), "cf 34 00", 3},
      // Tests, calls, messages
      {"originate", [](O) { return zop_originate_call_test(0, "0"); }, "cf 63 00 01 30", 37},
      {"end call", [](O) { return zop_end_call_test(); }, "cf 64 00", 3, BLIND},
      {"vendor test", [](O) { return zop_test(0x103); }, "cf 70 00 03", 4, DIRECT,
       Command::INVERTED},
      {"error log", [](O o) { return zop_get_err_log(o.bytes); }, "2a", 1},
      {"clear error", [](O) { return zop_get_err_clr(255); }, "2b ff", 2},
      {"debug mode", [](O) { return zop_debug_mode_start(); }, "cf 4d 00 00", 4, PLAIN,
       Command::WORD},
      {"set time", [](O o) { return zop_set_module_time(TIME, &o.size); }, "cf 13 00 31 32 33 34",
       17},
  };
  return list;
}

}  // namespace test
