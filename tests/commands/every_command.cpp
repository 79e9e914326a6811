// The list: a call with plausible arguments, the request that it must send, and for a query an
// answer and the expected output.
#include "tests/commands/every_command.h"

#include "include/zop.h"
#include "tests/support/world.h"

namespace test {

using O = Outputs&;

static uint32_t* u(int32_t& value) { return static_cast<uint32_t*>(static_cast<void*>(&value)); }

static const uint8_t PIN[8] = {'1', '2', '3', '4'};
static const uint8_t TIME[14] = {0x31, 0x32, 0x33, 0x34};
static const uint8_t NEW_PIN[8] = {'5', '6', '7', '8'};

// Calls a query with the outputs of its type.
static unsigned call(unsigned (*query)(), O) { return query(); }
static unsigned call(unsigned (*query)(int32_t*), O o) { return query(&o.a); }
static unsigned call(unsigned (*query)(int32_t*, int32_t*), O o) { return query(&o.a, &o.b); }
static unsigned call(unsigned (*query)(uint32_t*), O o) { return query(u(o.a)); }
static unsigned call(unsigned (*query)(uint32_t*, uint32_t*), O o) { return query(u(o.a), u(o.b)); }
static unsigned call(unsigned (*query)(uint32_t*, uint32_t*, uint32_t*), O o) {
  return query(u(o.a), u(o.b), u(o.c));
}
static unsigned call(unsigned (*query)(uint8_t*), O o) { return query(o.bytes); }
static unsigned call(unsigned (*query)(uint8_t*, uint32_t*), O o) {
  return query(o.bytes, &o.size);
}
static unsigned call(unsigned (*query)(char*, uint32_t*), O o) {
  return query(static_cast<char*>(static_cast<void*>(o.bytes)), &o.size);
}
#define CALL(query) #query, [](O o) { return call(query, o); }

// Bytes 0x01, 0x02 ... as hex, followed by zeros.
static std::string counting(uint8_t count, size_t zeros = 0) {
  Bytes bytes(count + zeros);
  for (uint8_t i = 0; i < count; ++i) bytes[i] = static_cast<uint8_t>(i + 1);
  return to_hex(bytes);
}

const std::vector<Command>& every_command() {
  using enum Command::Kind;
  using enum Command::Status;
  static const std::vector<Command> list = {
      // Network
      {CALL(zop_get_roaming_status), "cf 21 00", 3, PLAIN, NONE, "ff", "255"},
      {CALL(zop_try_to_use_home_network), "cf 22 00", 3, PLAIN, BYTE3},
      {CALL(zop_get_data_service_mode), "cf 24 00", 3, PLAIN, NONE, "ff", "-1"},
      {CALL(zop_get_uarfcn), "cf 25 00", 3, PLAIN, NONE, "fe ff", "65534"},
      {CALL(zop_get_call_status), "cf 26 00", 3, PLAIN, NONE, "ff", "255"},
      {CALL(zop_get_rac), "cf 2f 00", 3, PLAIN, NONE, "ff", "255"},
      {CALL(zop_get_mcc), "cf 30 00", 3, CLEARS, NONE, "33 31 30 34", "33 31 30"},
      {CALL(zop_get_mnc), "cf 31 00", 3, CLEARS, NONE, "34 31 30 34", "34 31 30"},
      {CALL(zop_get_location_area_id), "cf 32 00", 3, CLEARS, NONE, counting(20), counting(14)},
      {CALL(zop_get_cell_id), "cf 33 00", 3, PLAIN, NONE, "78 56 34 f2", "-231451016"},
      {CALL(zop_get_network_name), "cf 3a 00", 3, CLEARS, NONE, counting(60, 195),
       counting(60, 195)},
      {CALL(zop_get_service_status), "cf 3b 00", 3, PLAIN, NONE, "ff", "-1"},
      {CALL(zop_get_registration_status), "cf 3c 00", 3, PLAIN, NONE, "ff", "255"},
      {CALL(zop_get_info_event_orig), "cf 3e 00", 3, PLAIN, BYTE3, counting(100), counting(89)},
      {CALL(zop_get_info_event_act), "cf 3f 00", 3, PLAIN, BYTE3, counting(60), counting(47)},
      {CALL(zop_get_info_event_deact), "cf 40 00", 3, PLAIN, BYTE3, "05 06", "05"},
      {CALL(zop_get_info_event_end), "cf 41 00", 3, PLAIN, BYTE3, "05 06 07 08", "05 06 07"},
      {CALL(zop_get_band), "cf 51 00", 3, PLAIN, BYTE3, "54 ff", "-172"},
      {CALL(zop_get_network_op_mode), "cf 52 00", 3, PLAIN, BYTE3, "ff ff", "-1"},
      {CALL(zop_get_mm_attach_state), "cf 53 00", 3, PLAIN, BYTE3, "01 80 ff ff", "-32767 -1"},
      {CALL(zop_get_gmm_attach_state), "cf 54 00", 3, PLAIN, BYTE3, "01 00 6f 00", "1 111"},
      {CALL(zop_get_mfrm), "cf 55 00", 3, PLAIN, BYTE3, "ff ff", "-1"},
      {CALL(zop_get_gmm_state), "cf 56 00", 3, PLAIN, BYTE3, "03 00", "3"},
      {CALL(zop_get_pdp_state), "cf 57 00", 3, PLAIN, BYTE3, "02 00 ff ff", "2 -1"},
      {CALL(zop_get_pmm_mode), "cf 58 00", 3, PLAIN, BYTE3, "ff ff", "-1"},
      {CALL(zop_get_drx), "cf 59 00", 3, PLAIN, BYTE3, "ff ff", "65535"},
      {CALL(zop_get_hsdpa_status), "cf 5a 00", 3, PLAIN, BYTE3, "01 00 ff ff", "1 -1"},
      {CALL(zop_get_egprs_indication), "cf 5e 00", 3, PLAIN, BYTE3, "ff ff", "-1"},
      {CALL(zop_get_mm_lu_state), "cf 65 00", 3, PLAIN, BYTE3, "0d 00 00 80", "13 -32768"},
      {CALL(zop_get_gmm_rau_state), "cf 66 00", 3, PLAIN, BYTE3, "06 00 6f 00", "6 111"},
      {CALL(zop_get_powerup_flag), "cf 6d 00", 3, PLAIN, BYTE3, "01", "1"},
      {CALL(zop_get_rau_type), "cf 6e 00", 3, PLAIN, BYTE3, "ff", "255"},
      {CALL(zop_get_carrier), "cf 6f 00", 3, PLAIN, BYTE3, "ff", "-1"},
      {CALL(zop_get_network_time), "cf 14 00", 3, PLAIN, BYTE3, counting(30), counting(19)},
      {CALL(zop_get_system_mode), "cf 1f 00", 3, PLAIN, NONE, "07", "7"},
      // Identity
      {CALL(zop_get_imei), "cf 67 00", 3, CLEARS, NONE, counting(20), counting(16, 4)},
      {CALL(zop_get_imsi), "cf 68 00", 3, CLEARS, NONE, counting(20), counting(16, 4)},
      {CALL(zop_get_iccid), "cf 23 00", 3, CLEARS, BYTE3, counting(30), counting(20)},
      {CALL(zop_get_radio_phone_number), "cf 07 00", 3, CLEARS, NONE, counting(50), counting(36)},
      {CALL(zop_get_hardware_version), "cf 48 00", 3, CLEARS, NONE, counting(30), counting(20)},
      {CALL(zop_get_firmware_version), "cf 5d 00", 3, CLEARS, NONE, counting(30), counting(20)},
      {CALL(zop_get_radio_serial_number), "01", 1, CLEARS, NONE},
      {CALL(zop_get_card_mode), "cf 4a 00", 3, PLAIN, NONE, "ff ff", "-1"},
      // SIM
      {CALL(zop_simcard_status), "d2 00 00", 3, PLAIN, BYTE3, "00 02 01 03", "2 1 3"},
      {"zop_simcard_verify", [](O o) { return zop_simcard_verify(PIN, 4, u(o.a)); },
       "d2 01 00 00 00 00 00 00 00 00 00 31 32 33 34", 19, PLAIN, SIM_RESULT},
      {"zop_simcard_change", [](O o) { return zop_simcard_change(PIN, 4, NEW_PIN, 4, u(o.a)); },
       "d2 02 00 00 00 00 00 00 00 00 00 31 32 33 34 00 00 00 00 35 36 37 38", 27, PLAIN,
       SIM_RESULT},
      {"zop_simcard_disable", [](O o) { return zop_simcard_disable(PIN, 4, u(o.a)); },
       "d2 03 00 00 00 00 00 00 00 00 00 31 32 33 34", 19, PLAIN, SIM_RESULT},
      {"zop_simcard_enable", [](O o) { return zop_simcard_enable(PIN, 4, u(o.a)); },
       "d2 04 00 00 00 00 00 00 00 00 00 31 32 33 34", 19, PLAIN, SIM_RESULT},
      {"zop_simcard_unblock", [](O o) { return zop_simcard_unblock(PIN, 4, NEW_PIN, 4, u(o.a)); },
       "d2 05 00 00 00 00 00 00 00 00 00 31 32 33 34 00 00 00 00 35 36 37 38", 27, PLAIN,
       SIM_RESULT},
      {"zop_simcard_pin_write", [](O o) { return zop_simcard_pin_write(PIN, 4, u(o.a)); },
       "27 2d 41 31 32 33 34", 133},
      {"zop_simcard_pin_read", [](O o) { return zop_simcard_pin_read(o.bytes, 0, u(o.a)); },
       "26 2d 41", 133},
      {"zop_vsim_status_change", [](O) { return zop_vsim_status_change(0x101); }, "d5 28 00 01", 4,
       PLAIN, BYTE3},
      // PLMN lists
      {CALL(zop_get_uim_data_oplmn), "cf 5f 00", 3, PLAIN, BYTE3},
      {CALL(zop_get_uim_data_hplmn), "cf 60 00", 3, PLAIN, BYTE3},
      {CALL(zop_get_uim_data_rplmn), "cf 61 00", 3, PLAIN, BYTE3},
      {CALL(zop_get_uim_data_fplmn), "cf 62 00", 3},
      {CALL(zop_get_uim_data_uplmn), "cf 69 00", 3, PLAIN, BYTE3},
      {"zop_set_uim_data_uplmn",
       [](O) {
         return zop_set_uim_data_uplmn({{1, '0', '0', '1'}});
       },
       "cf 6a 00 01 30 30 31", 124, PLAIN, BYTE3},
      {"zop_get_uim_data_oplmn_partial",
       [](O o) { return zop_get_uim_data_oplmn_partial(256, u(o.a), o.bytes); }, "cf 6b 00 00", 4,
       PLAIN, BYTE3},
      {"zop_get_uim_data_hplmn_partial",
       [](O o) { return zop_get_uim_data_hplmn_partial(21, u(o.a), o.bytes); }, "cf 6c 00 15", 4,
       PLAIN, BYTE3},
      {"zop_get_uim_data",
       [](O o) { return zop_get_uim_data(0x6F7B, 0x01020304, o.bytes, u(o.a)); },
       "cf 4b 00 7b 6f 00 00 04 03 02 01", 11, PLAIN, BYTE3},
      // NV items
      {"zop_nv_read", [](O o) { return zop_nv_read(4711, o.bytes, 128, u(o.a)); }, "26 67 12", 133},
      {"zop_nv_write", [](O o) { return zop_nv_write(4711, PIN, 4, u(o.a)); },
       "27 67 12 31 32 33 34", 133},
      {"zop_set_pref_mode", [](O) { return zop_set_pref_mode(0x102); }, "27 0a 00 00 02", 133,
       PLAIN, NV},
      {CALL(zop_get_pref_mode), "26 0a 00", 133, PLAIN, NV},
      {CALL(zop_get_pref_service_domain), "26 52 03", 133, PLAIN, NV},
      {"zop_set_mgrf_supported", [](O) { return zop_set_mgrf_supported(1); }, "27 07 17 01", 133,
       PLAIN, NV},
      {CALL(zop_get_mgrf_supported), "26 07 17", 133, PLAIN, NV},
      {"zop_set_acq_band_order", [](O) { return zop_set_acq_band_order(3); }, "27 2f 41 03", 133,
       PLAIN, NV},
      {CALL(zop_get_acq_band_order), "26 2f 41", 133, PLAIN, NV},
      // Configuration
      {"zop_set_diag_port", [](O) { return zop_set_diag_port(1); }, "cf 43 00 01", 4, PLAIN, BYTE3},
      {CALL(zop_set_reset), "cf 44 00 00", 4, PLAIN, BYTE3},
      {CALL(zop_set_error_fatal), "cf 45 00 00", 4, PLAIN, BYTE3},
      {"zop_enable_factory_test", [](O) { return zop_enable_factory_test(1); }, "cf 49 00 01", 4,
       PLAIN, BYTE3},
      {"zop_set_band", [](O) { return zop_set_band(84); }, "cf 42 00 54", 4, PLAIN, BYTE3},
      {"zop_mode_change", [](O) { return zop_mode_change(255); }, "29 ff 00", 3},
      {"zop_set_network_search_order", [](O) { return zop_set_network_search_order(3, 48); },
       "29 30 00", 3},
      {CALL(zop_get_backup_status), "cf 4c 00", 3, DIRECT, BYTE3, "01 02", "1 2"},
      {"zop_set_backup step 1", [](O) { return zop_set_backup(1); }, "d8", 1, DIRECT, INVERTED},
      {"zop_set_backup step 2", [](O) { return zop_set_backup(2); }, "d6", 1, DIRECT, INVERTED},
      {"zop_set_backup step 4", [](O) { return zop_set_backup(4); }, "d7", 1, DIRECT, INVERTED},
      {"zop_set_backup step 5", [](O) { return zop_set_backup(5); }, "d9", 1, DIRECT, INVERTED},
      {CALL(zop_read_pdp_profile), "cf 46 00 01", 4, PLAIN, BYTE3},
      {"zop_write_pdp_profile",
       [](O) {
         return zop_write_pdp_profile({{1, 2, 3}});
       },
       "cf 1b 00 01 02 03", 106, PLAIN, BYTE3},
      // Radio
      {CALL(zop_get_rssi), "cf 20 00", 3, COMPARES, NONE, "b5 ff", "-75"},
      {CALL(zop_get_rscp), "cf 27 00", 3, PLAIN, NONE, "b5 ff", "-75"},
      {CALL(zop_get_txpower), "cf 28 00", 3, PLAIN, NONE, "b5 ff", "-75"},
      {CALL(zop_get_active_set_list), "cf 29 00", 3},
      {CALL(zop_get_monitored_set_list), "cf 2a 00", 3},
      {CALL(zop_get_detected_set_list), "cf 2b 00", 3},
      {CALL(zop_get_neighbor_cell_list), "cf 2c 00", 3},
      {CALL(zop_get_best_six_cell_list), "cf 2d 00", 3},
      {CALL(zop_get_pathloss), "cf 39 00", 3, PLAIN, NONE, "b5 ff", "-75"},
      {CALL(zop_get_field_information), "cf 34 00", 3},
      {CALL(zop_get_bars), "cf 34 00", 3},
      // Tests, calls, messages
      {"zop_originate_call_test", [](O) { return zop_originate_call_test(0, "0"); },
       "cf 63 00 01 30", 37},
      {CALL(zop_end_call_test), "cf 64 00", 3, BLIND},
      {"zop_test", [](O) { return zop_test(0x103); }, "cf 70 00 03", 4, DIRECT, INVERTED},
      {CALL(zop_get_err_log), "2a", 1},
      {"zop_get_err_clr", [](O) { return zop_get_err_clr(255); }, "2b ff", 2},
      {CALL(zop_debug_mode_start), "cf 4d 00 00", 4, PLAIN, WORD},
      {"zop_set_module_time", [](O o) { return zop_set_module_time(TIME, &o.size); },
       "cf 13 00 31 32 33 34", 17},
  };
  return list;
}

}  // namespace test
