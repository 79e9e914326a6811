// The common exchange: which failure gives which result, what is retried, what is left unchanged.
#include "commands/exchange.h"

#include "tests/support/link_test.h"

using namespace std::chrono_literals;
using namespace test;

class Exchange : public OpenLinkTest {};

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

TEST_F(Exchange, send_bounds_its_length_by_the_buffer) {
  EXPECT_EQ(zop_send(RESPONSE_SIZE + 1, 0), -1);
  EXPECT_EQ(zop_send(-1, 0), -1);
  EXPECT_TRUE(modem.requests.empty());
}
