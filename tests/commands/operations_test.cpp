// What single commands do beyond the common exchange: argument rules, packed lists, series of
// exchanges, bars, alarms. Bounds on what the caller passes as well as on what the modem sends.
#include <signal.h>

#include <cstring>

#include "commands/exchange.h"
#include "core/bytes.h"
#include "include/zop_diag_info.h"
#include "link/event_listener.h"
#include "tests/support/link_test.h"
#include "tests/support/other_exchange.h"

using namespace test;

class Operations : public OpenLinkTest {
 protected:
  void SetUp() override {
    OpenLinkTest::SetUp();
    THREAD_STATUS = 0;
  }
  void TearDown() override {
    THREAD_STATUS = 0;
    OpenLinkTest::TearDown();
  }
  // Answers the next request with payload, zeros up to size.
  void answer(const std::string& payload, size_t size = 0) {
    Bytes bytes = hex(payload);
    if (size > bytes.size()) bytes.resize(size);
    modem.answers.push_back({{frame(bytes)}});
  }
  Bytes request(size_t i) const { return unframe(modem.requests.at(i)); }

  uint32_t result = 4711;
};

// A capacity one below the minimum returns the minimum, on a closed link too, and sends nothing.
TEST_F(Operations, texts_want_the_minimum_capacity) {
  diag_close();
  struct {
    unsigned (*command)(uint8_t*, uint32_t*);
    uint32_t minimum;
  } rows[] = {{zop_get_mcc, 3},
              {zop_get_mnc, 3},
              {zop_get_imei, 20},
              {zop_get_imsi, 20},
              {zop_get_iccid, 20},
              {zop_get_location_area_id, 14},
              {zop_get_network_name, 255},
              {zop_get_hardware_version, 20},
              {zop_get_firmware_version, 20},
              {zop_get_radio_serial_number, 8},
              {zop_get_tq2_version, 17}};
  for (auto& row : rows) {
    for (uint32_t capacity : {row.minimum - 1, 0u, 0xFFFFFFFFu}) {
      uint8_t canvas[300];
      memset(canvas, 0xEE, sizeof canvas);
      uint32_t size = capacity;
      EXPECT_EQ(row.command(canvas, &size), ZOP_ERR_BUFFER_TOO_SMALL);
      EXPECT_EQ(size, row.minimum);
      EXPECT_EQ(canvas[0], 0xEE);
    }
    uint8_t text[300];
    uint32_t size = row.minimum;
    unsigned enough = row.command == zop_get_tq2_version ? ZOP_SUCCESS : ZOP_ERR_NOT_OPEN;
    EXPECT_EQ(row.command(text, &size), enough) << row.minimum;
  }
  uint32_t size = 35;
  char number[64];
  EXPECT_EQ(zop_get_radio_phone_number(number, &size), ZOP_ERR_BUFFER_TOO_SMALL);
  EXPECT_EQ(size, 36u);
  EXPECT_EQ(zop_get_radio_phone_number(number, &size), ZOP_ERR_NOT_OPEN);
  EXPECT_TRUE(world.written.empty());
}

TEST_F(Operations, home_network) {
  for (auto [refusal, expected] : {std::pair{"cf 22 00 00 00 01", ZOP_SUCCESS},
                                   {"cf 22 00 00 00 00", ZOP_ERR_HOME_NETWORK_REFUSED}}) {
    answer(refusal);
    EXPECT_EQ(zop_try_to_use_home_network(), expected) << refusal;
  }
}

TEST_F(Operations, a_powerup_flag_above_1_is_a_failure) {
  answer("cf 6d 00 00 00 02");
  EXPECT_EQ(zop_get_powerup_flag(&result), ZOP_ERR_MODEM_FAILURE);
  EXPECT_EQ(result, 4711u);
}

TEST_F(Operations, serial_number_is_hexadecimal_most_significant_first) {
  uint8_t number[9] = "........";
  uint32_t size = 8;
  answer("01 01 02 03 fa");
  EXPECT_EQ(zop_get_radio_serial_number(number, &size), ZOP_SUCCESS);
  EXPECT_EQ(memcmp(number, "FA030201", 9), 0);
}

TEST_F(Operations, library_version_needs_no_link) {
  diag_close();
  uint8_t version[17];
  uint32_t size = 17;
  EXPECT_EQ(zop_get_tq2_version(version, &size), ZOP_SUCCESS);
  EXPECT_EQ(memcmp(version, "REV_3.0 20100419", 17), 0);
}

static const uint8_t CODE[16] = "123456789ABCDEF";

TEST_F(Operations, pins_are_bounded_by_their_rules) {
  EXPECT_EQ(zop_simcard_verify(CODE, 9, &result), ZOP_ERR_PIN_TOO_LONG);
  EXPECT_EQ(zop_simcard_disable(CODE, 9, &result), ZOP_ERR_PIN_TOO_LONG);
  EXPECT_EQ(zop_simcard_enable(CODE, 0xFFFFFFFF, &result), ZOP_ERR_PIN_TOO_LONG);
  EXPECT_EQ(zop_simcard_change(CODE, 9, CODE, 4, &result), ZOP_ERR_PIN_TOO_LONG);
  EXPECT_EQ(zop_simcard_unblock(CODE, 9, CODE, 8, &result), ZOP_ERR_PIN_TOO_LONG);
  EXPECT_EQ(zop_simcard_unblock(CODE, 8, CODE, 9, &result), ZOP_ERR_PIN_TOO_LONG);
  EXPECT_TRUE(modem.requests.empty());
  // Verify sends 8 bytes whatever the length.
  answer("d2 01 00", 9);
  EXPECT_EQ(zop_simcard_verify(CODE, 4, &result), ZOP_SUCCESS);
  EXPECT_EQ(to_hex(request(0)), "d2 01 00 00 00 00 00 00 00 00 00 31 32 33 34 35 36 37 38");
  // A ninth byte of a new PIN is not sent.
  answer("d2 02 00", 9);
  answer("27", 133);
  EXPECT_EQ(zop_simcard_change(CODE, 4, CODE, 9, &result), ZOP_SUCCESS);
  EXPECT_EQ(request(1).size(), 27u);
  EXPECT_EQ(to_hex(request(1)).substr(57), "31 32 33 34 35 36 37 38");
}

TEST_F(Operations, an_accepted_pin_reaches_its_copy) {
  answer("d2 04 00", 9);
  answer("27 2d 41", 133);
  EXPECT_EQ(zop_simcard_enable(CODE, 4, &result), ZOP_SUCCESS);
  EXPECT_EQ(result, 0u);
  EXPECT_EQ(to_hex(request(1)).substr(0, 23), "27 2d 41 31 32 33 34 00");
  // A failure of the copy is ignored.
  answer("d2 02 00", 9);
  EXPECT_EQ(zop_simcard_change(CODE, 4, CODE + 4, 4, &result), ZOP_SUCCESS);
  EXPECT_EQ(result, 0u);
  EXPECT_EQ(to_hex(request(3)).substr(0, 23), "27 2d 41 35 36 37 38 00");
}

TEST_F(Operations, a_refused_pin_does_not) {
  for (const char* refusal :
       {"d2 04 00 00 00 00 00 00 01", "d2 04 00 01 00 00 00 00 00", "d2 04 00 00 01 00 00 00 00"}) {
    answer(refusal);
    EXPECT_EQ(zop_simcard_enable(CODE, 4, &result), ZOP_SUCCESS);
    EXPECT_EQ(result, 1u) << refusal;
  }
  answer("d2 03 00", 9);
  EXPECT_EQ(zop_simcard_disable(CODE, 4, &result), ZOP_SUCCESS);
  EXPECT_EQ(modem.requests.size(), 4u);
}

TEST_F(Operations, pin_copy) {
  uint8_t pin[8] = {};
  answer("26 2d 41 31 32 33 34", 133);
  EXPECT_EQ(zop_simcard_pin_read(pin, 0, &result), ZOP_SUCCESS);
  EXPECT_EQ(result, 0u);
  EXPECT_EQ(memcmp(pin, "1234\0\0\0\0", 8), 0);
  Bytes refused(133, 0x35);
  modem.answers.push_back({{frame(refused)}});
  EXPECT_EQ(zop_simcard_pin_read(pin, 0, &result), ZOP_SUCCESS);
  EXPECT_EQ(result, 1u);
  EXPECT_EQ(pin[0], '1');
}

TEST_F(Operations, nv_items_never_pass_the_buffers) {
  Bytes data(5000, 0xAB);
  answer("27", 133);
  EXPECT_EQ(zop_nv_write(1, data.data(), 5000, &result), ZOP_SUCCESS);
  EXPECT_EQ(request(0).size(), 133u);
  answer("26 01 00 ab", 133);
  EXPECT_EQ(zop_nv_read(1, data.data(), 5000, &result), ZOP_SUCCESS);
  EXPECT_EQ(data[1], 0);
  EXPECT_EQ(data[400], 0xAB);
  // An NV status leaves the data unchanged and is not a failure.
  Bytes refused(133, 0);
  refused[131] = 5;
  modem.answers.push_back({{frame(refused)}});
  data[0] = 0x77;
  EXPECT_EQ(zop_nv_read(1, data.data(), 1, &result), ZOP_SUCCESS);
  EXPECT_EQ(result, 5u);
  EXPECT_EQ(data[0], 0x77);
}

TEST_F(Operations, nv_values) {
  answer("26 0a 00 00 02", 133);
  EXPECT_EQ(zop_get_pref_mode(&result), ZOP_SUCCESS);
  EXPECT_EQ(result, 2u);
  answer("26 07 17 01", 133);
  EXPECT_EQ(zop_get_mgrf_supported(&result), ZOP_SUCCESS);
  EXPECT_EQ(result, 1u);
  EXPECT_EQ(zop_set_mgrf_supported(2), ZOP_ERR_INVALID_ARGUMENT);
  EXPECT_EQ(modem.requests.size(), 2u);
}

TEST_F(Operations, arguments_outside_their_range_send_nothing) {
  uint8_t block[161];
  struct {
    const char* name;
    unsigned open, closed;  // result on an open and on a closed link
    unsigned (*call)(uint8_t*, uint32_t*);
  } rows[] = {
      {"band", 9, 9, [](uint8_t*, uint32_t*) { return zop_set_band(45); }},
      {"diag port", 9, 9, [](uint8_t*, uint32_t*) { return zop_set_diag_port(2); }},
      {"factory test", 9, 1, [](uint8_t*, uint32_t*) { return zop_enable_factory_test(2); }},
      {"mode", 7, 1, [](uint8_t*, uint32_t*) { return zop_mode_change(256); }},
      {"order 3 80", 7, 1, [](uint8_t*, uint32_t*) { return zop_set_network_search_order(3, 80); }},
      {"order 5 43", 7, 1, [](uint8_t*, uint32_t*) { return zop_set_network_search_order(5, 43); }},
      {"order 4 43", 7, 1, [](uint8_t*, uint32_t*) { return zop_set_network_search_order(4, 43); }},
      {"backup 0", 9, 1, [](uint8_t*, uint32_t*) { return zop_set_backup(0); }},
      {"backup 6", 9, 1, [](uint8_t*, uint32_t*) { return zop_set_backup(6); }},
      {"error 256", 7, 1, [](uint8_t*, uint32_t*) { return zop_get_err_clr(256); }},
      {"no number", 9, 9, [](uint8_t*, uint32_t*) { return zop_originate_call_test(0, ""); }},
      {"33 digits", 9, 9,
       [](uint8_t*, uint32_t*) {
         return zop_originate_call_test(0, "012345678901234567890123456789012");
       }},
      {"entry 0", 7, 1,
       [](uint8_t* b, uint32_t* n) { return zop_get_uim_data_oplmn_partial(0, n, b); }},
      {"entry 257", 7, 1,
       [](uint8_t* b, uint32_t* n) { return zop_get_uim_data_hplmn_partial(257, n, b); }},
  };
  for (auto& row : rows) {
    if (diag_status() == 0) diag_open(DEVICE);
    EXPECT_EQ(row.call(block, &result), row.open) << row.name;
    diag_close();
    EXPECT_EQ(row.call(block, &result), row.closed) << row.name;
  }
  EXPECT_TRUE(modem.requests.empty());
}

TEST_F(Operations, forbidden_plmns_are_packed) {
  Bytes wire = hex("cf 62 00 01 00 03 02 01 00 ");  // count 0x010203 and a status that is ignored
  for (int i = 0; i < 120; ++i) wire.push_back(static_cast<uint8_t>(i + 1));
  modem.answers.push_back({{frame(wire)}});
  uint8_t list[121];
  EXPECT_EQ(zop_get_uim_data_fplmn(list), ZOP_SUCCESS);
  EXPECT_EQ(list[0], 3);
  EXPECT_EQ(list[1], 1);
  EXPECT_EQ(list[120], 120);
}

TEST_F(Operations, operator_plmns_in_blocks) {
  Bytes wire = hex("cf 6b 00 00 00 2d 14");
  wire.resize(167, 0x31);
  modem.answers.push_back({{frame(wire)}});
  uint8_t block[161];
  EXPECT_EQ(zop_get_uim_data_oplmn_partial(21, &result, block), ZOP_SUCCESS);
  EXPECT_EQ(to_hex(request(0)), "cf 6b 00 15");
  EXPECT_EQ(result, 45u);
  EXPECT_EQ(block[0], 20);
  EXPECT_EQ(block[160], 0x31);
}

TEST_F(Operations, profiles_end_at_the_first_failure) {
  answer("cf 46 00 00 00 a1", 213);
  answer("cf 46 00 00 00 a2", 213);
  answer("cf 46 00 01 00 a3", 213);
  Bytes profiles(1664, 0xEE);
  EXPECT_EQ(zop_read_pdp_profile(profiles.data()), ZOP_ERR_MODEM_FAILURE);
  EXPECT_EQ(to_hex(request(2)), "cf 46 00 05");
  EXPECT_EQ(profiles[0], 0xA1);
  EXPECT_EQ(profiles[208], 0xA2);
  EXPECT_EQ(profiles[416], 0xEE);
}

TEST_F(Operations, the_backup_step_without_answer_frees_the_port) {
  EXPECT_EQ(zop_set_backup(3), ZOP_SUCCESS);
  EXPECT_EQ(to_hex(request(0)), "da");
  EXPECT_EQ(SIO_USED_LOCK, 0u);
}

TEST_F(Operations, cell_sets) {
  uint8_t cells[6 * 32];
  memset(cells, 0xEE, sizeof cells);
  uint32_t count = 2;
  answer("cf 2a 00 00 00 02 64 00 fb ff 65 00 f0 ff");
  EXPECT_EQ(zop_get_monitored_set_list(cells, &count), ZOP_SUCCESS);
  EXPECT_EQ(to_hex({cells, 13}), "01 00 64 00 fb ff 01 00 65 00 f0 ff ee");
  answer("cf 2b 00 00 00 03", 20);
  EXPECT_EQ(zop_get_detected_set_list(cells, &count), ZOP_ERR_BUFFER_TOO_SMALL);
  EXPECT_EQ(count, 3u);
  answer("cf 2b 00 00 00 03", 20);
  EXPECT_EQ(zop_get_detected_set_list(cells, &count), ZOP_SUCCESS);
  EXPECT_EQ(cells[0], 2);
  for (const char* odd : {"cf 29 00 00 00 00", "cf 29 00 00 00 21", "cf 29 00 00 00 ff"}) {
    count = 300;
    answer(odd);
    memset(cells, 0xEE, sizeof cells);
    EXPECT_EQ(zop_get_active_set_list(cells, &count), ZOP_SUCCESS) << odd;
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(cells[0], 0xEE);
  }
}

TEST_F(Operations, gsm_lists_with_a_count_out_of_range_are_zeros) {
  for (const char* count : {"00 00 00 00", "07 00 00 00", "01 00 00 80", "ff ff ff ff"}) {
    uint8_t list[59];
    memset(list, 0xEE, sizeof list);
    answer(std::string("cf 2d 00 00 00 ") + count + " 11 22");
    EXPECT_EQ(zop_get_best_six_cell_list(list), ZOP_SUCCESS);
    EXPECT_EQ(to_hex(list), to_hex(Bytes(58, 0)) + " ee") << count;
  }
  uint8_t list[165];
  memset(list, 0xEE, sizeof list);
  answer("cf 2c 00 00 00 20 00 00 00 11 22", 169);
  EXPECT_EQ(zop_get_neighbor_cell_list(list), ZOP_SUCCESS);
  EXPECT_EQ(to_hex({list, 6}), "20 00 00 00 11 22");
  EXPECT_EQ(list[164], 0xEE);
}

TEST_F(Operations, messages_keep_their_fixed_bytes) {
  answer("d0 00 00", 5);
  EXPECT_EQ(zop_send_sms("+15550100", "hello"), ZOP_SUCCESS);
  Bytes sms = request(0);
  ASSERT_EQ(sms.size(), 346u);
  EXPECT_EQ(to_hex({sms.data(), 17}), "d0 00 00 09 09 05 00 2b 31 35 35 35 30 31 30 30 00");
  EXPECT_EQ(to_hex({sms.data() + 43, 6}), "68 65 6c 6c 6f 00");
  EXPECT_EQ(to_hex({sms.data() + 298, 9}), "00 00 01 00 01 00 01 00 00");
  // A text longer than its field and the buffer: the fixed bytes stay and nothing overflows.
  answer("d0 00 00", 5);
  EXPECT_EQ(zop_send_sms(std::string(500, '1').c_str(), std::string(5000, 'x').c_str()),
            ZOP_SUCCESS);
  sms = request(1);
  EXPECT_EQ(to_hex({sms.data() + 297, 11}), "78 00 00 01 00 01 00 01 00 00 78");
  EXPECT_EQ(to_hex({sms.data() + 343, 3}), "00 00 00");
}

TEST_F(Operations, module_time_is_built_over_the_buffer) {
  uint8_t time[14];
  for (uint8_t i = 0; i < 14; ++i) time[i] = i;
  uint32_t size = 13;
  EXPECT_EQ(zop_set_module_time(time, &size), ZOP_ERR_BUFFER_TOO_SMALL);
  EXPECT_EQ(size, 14u);
  ft_buff[100] = 0x77;
  answer("cf 13 00 01 00");
  EXPECT_EQ(zop_set_module_time(time, &size), ZOP_SUCCESS);
  EXPECT_EQ(to_hex(request(0)), "cf 13 00 00 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d");
  EXPECT_EQ(ft_buff[100], 0x77);
}

TEST_F(Operations, a_timed_call_arms_the_alarm_or_tells_the_listener) {
  answer("cf 63 00", 5);
  EXPECT_EQ(zop_originate_call_test(10, "01234567890123456789012345678901"), ZOP_SUCCESS);
  EXPECT_EQ(world.alarm, 10u);
  struct sigaction action;
  sigaction(SIGALRM, nullptr, &action);
  EXPECT_EQ(action.sa_handler, callback_function);
  EXPECT_EQ(action.sa_flags & SA_RESTART, 0);

  world.alarm.reset();
  THREAD_STATUS = 1;
  answer("cf 63 00", 5);
  EXPECT_EQ(zop_originate_call_test(10, "0"), ZOP_SUCCESS);
  EXPECT_FALSE(world.alarm);
  EXPECT_EQ(THREAD_STATUS, 2u);
  EXPECT_EQ(call_end_timeout, 10u);
}

// The signal arrives while a host's command waits for its answer.
TEST_F(Operations, a_real_alarm_waits_for_the_command_under_way) {
  int alarms = 0;
  AnsweringModem answering([&](const Bytes& request) -> std::optional<Bytes> {
    if (request[1] == 0x20 && ++alarms == 1) raise(SIGALRM);
    Bytes answer = request;
    answer.resize(16);
    return answer;
  });
  world.far_end = &answering;
  ASSERT_EQ(zop_originate_call_test(10, "0"), ZOP_SUCCESS);
  int32_t rssi = 1;
  EXPECT_EQ(zop_get_rssi(&rssi), ZOP_SUCCESS);
  EXPECT_EQ(world.alarm, 1u);
  EXPECT_EQ(answering.payloads.size(), 2u);
  raise(SIGALRM);
  EXPECT_EQ(world.alarm, 0u);
  ASSERT_EQ(answering.payloads.size(), 3u);
  EXPECT_EQ(to_hex(answering.payloads[2]), "cf 64 00");
}

TEST_F(Operations, the_alarm_ends_the_call_when_the_port_is_free) {
  errno = 4711;
  {
    OtherExchange other;
    callback_function(SIGALRM);
    EXPECT_EQ(world.alarm, 1u);
    EXPECT_TRUE(modem.requests.empty());
    EXPECT_NE(SIO_USED_LOCK, 0u);
  }
  memset(ft_buff, 0x11, 8);
  memset(fr_buff, 0x22, 8);
  answer("cf 64 00 00 00");
  callback_function(SIGALRM);
  EXPECT_EQ(world.alarm, 0u);
  EXPECT_EQ(to_hex(request(0)), "cf 64 00");
  EXPECT_EQ(SIO_USED_LOCK, 0u);
  EXPECT_EQ(errno, 4711);
  // A command in progress keeps its request and its answer.
  EXPECT_EQ(ft_buff[0], 0x11);
  EXPECT_EQ(fr_buff[0], 0x22);
  diag_close();
  callback_function(SIGALRM);
  EXPECT_EQ(world.alarm, 0u);
}
