// The common exchange: which failure gives which result, what is retried, what is left unchanged.
#include "commands/exchange.h"

#include "tests/support/link_test.h"

using namespace std::chrono_literals;
using namespace test;

class Exchange : public OpenLinkTest {};

// The only command that compares the answer with its request.
TEST_F(Exchange, rssi_refuses_an_answer_to_another_request) {
  for (const char* answer :
       {"ce 20 00 00 00 b5 ff", "cf 21 00 00 00 b5 ff", "cf 20 01 00 00 b5 ff", "13 cf 20 00"}) {
    modem.answers = {{{frame(hex(answer))}}};
    forget_owed();
    int32_t rssi = 4711;
    EXPECT_EQ(zop_get_rssi(&rssi), ZOP_ERR_BAD_RESPONSE) << answer;
    EXPECT_EQ(rssi, 4711) << answer;
    EXPECT_EQ(diag_status(), 1) << answer;
  }
}

// When the host reopens the link between attempts, three time-outs count as a bad response.
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
