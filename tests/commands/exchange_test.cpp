// The common exchange: which failure gives which result, what is retried, what stays untouched.
#include "commands/exchange.h"
#include "tests/support/link_test.h"

#include <cerrno>

using namespace std::chrono_literals;
using namespace test;

class Exchange : public OpenLinkTest {};

static const char RSSI[] = "cf 20 00 00 00 b5 ff";

TEST_F(Exchange, failures_by_what_came_over_the_wire) {
  Bytes damaged = frame(hex(RSSI));
  damaged[5] ^= 1;
  struct {
    const char* name;
    Answer answer;
    unsigned result;
  } rows[] = {
      {"flag alone", {{hex("7e")}}, ZOP_ERR_BAD_RESPONSE},
      {"two bytes", {{hex("cf 7e")}}, ZOP_ERR_BAD_RESPONSE},
      {"bad check sequence", {{damaged}}, ZOP_ERR_BAD_RESPONSE},
      {"other command", {{frame(hex("ce 20 00 00 00 b5 ff"))}}, ZOP_ERR_BAD_RESPONSE},
      {"other subcommand", {{frame(hex("cf 21 00 00 00 b5 ff"))}}, ZOP_ERR_BAD_RESPONSE},
      {"other third byte", {{frame(hex("cf 20 01 00 00 b5 ff"))}}, ZOP_ERR_BAD_RESPONSE},
      {"refusal", {{frame(hex("13 cf 20 00"))}}, ZOP_ERR_BAD_RESPONSE},
  };
  for (auto& row : rows) {
    modem.answers = {row.answer};
    forget_owed();
    int32_t rssi = 4711;
    EXPECT_EQ(zop_get_rssi(&rssi), row.result) << row.name;
    EXPECT_EQ(rssi, 4711) << row.name;
    EXPECT_EQ(diag_status(), 1) << row.name;
  }
}

TEST_F(Exchange, a_silent_modem_closes_the_link_and_the_retry_fails_to_write) {
  uint32_t rac = 4711;
  EXPECT_EQ(zop_get_rac(&rac), ZOP_ERR_NO_RESPONSE);
  EXPECT_EQ(world.now(), 5s + 2ms);
  EXPECT_EQ(modem.requests.size(), 1u);
  EXPECT_EQ(diag_status(), 0);
  EXPECT_EQ(zop_get_rac(&rac), ZOP_ERR_NOT_OPEN);
  EXPECT_EQ(rac, 4711u);
}

// A host that opens the link again between the attempts: three time-outs read as a bad response.
TEST_F(Exchange, three_time_outs_are_a_bad_response) {
  world.on_sleep = [](Time) { diag_open(DEVICE); };
  uint32_t rac = 4711;
  EXPECT_EQ(zop_get_rac(&rac), ZOP_ERR_BAD_RESPONSE);
  EXPECT_EQ(modem.requests.size(), 3u);
  EXPECT_EQ(world.now(), 3 * (5s + 2ms));
  EXPECT_EQ(rac, 4711u);
}

TEST_F(Exchange, a_second_attempt_may_succeed) {
  modem.answers = {{}, {{frame(hex("cf 2f 00 00 00 07"))}}};
  world.on_sleep = [](Time) { diag_open(DEVICE); };
  uint32_t rac = 0;
  EXPECT_EQ(zop_get_rac(&rac), ZOP_SUCCESS);
  EXPECT_EQ(rac, 7u);
}

TEST_F(Exchange, a_cut_answer_never_shows_an_earlier_one) {
  Bytes name(5 + 255, 'X');
  modem.answers = {{{frame(name)}}, {{frame(hex("cf 3a 00 00 00 41"))}}};
  uint8_t text[ZOP_NETWORK_NAME_SIZE];
  uint32_t size = sizeof text;
  ASSERT_EQ(zop_get_network_name(text, &size), ZOP_SUCCESS);
  EXPECT_EQ(text[254], 'X');
  ASSERT_EQ(zop_get_network_name(text, &size), ZOP_SUCCESS);
  EXPECT_EQ(text[0], 'A');
  for (size_t i = 1; i < sizeof text; ++i) ASSERT_EQ(text[i], 0) << i;
}

TEST_F(Exchange, send_bounds_its_length_by_the_buffer) {
  EXPECT_EQ(zop_send(RESPONSE_SIZE + 1, 0), -1);
  EXPECT_EQ(zop_send(-1, 0), -1);
  EXPECT_TRUE(modem.requests.empty());
}

TEST_F(Exchange, download_is_not_a_command) {
  EXPECT_EQ(zop_download_firmware(), ZOP_ERR_INVALID_ARGUMENT);
  EXPECT_EQ(zop_download_firmware_status(), ZOP_ERR_INVALID_ARGUMENT);
  EXPECT_EQ(zop_download_firmware_end(), ZOP_ERR_INVALID_ARGUMENT);
}
