// Opening the link: what counts as a modem, the number of attempts, the cost of each failure.

#include <cerrno>

#include "tests/support/link_test.h"

using namespace std::chrono_literals;
using namespace test;

static const Answer SILENCE = {};

class LinkOpen : public LinkTest {};

TEST_F(LinkOpen, any_bytes_that_end_in_a_flag_are_a_modem) {
  for (const char* answer : {"1d 00 00 7e", "7e", "13 1d ff ff 7e"}) {
    modem.answers = {{{hex(answer)}}};
    EXPECT_EQ(zop_open(DEVICE), 0u) << answer;
    EXPECT_EQ(diag_status(), 1);
    EXPECT_EQ(SIO_USED_LOCK, 0u);
    zop_close();
    EXPECT_FALSE(world.port_is_open());
  }
  EXPECT_EQ(to_hex(modem.requests.at(0)), "1d 1c 3b 7e");
}

TEST_F(LinkOpen, no_device_costs_five_seconds) {
  world.missing[DEVICE] = ENOENT;
  EXPECT_EQ(zop_open(DEVICE), 1u);
  EXPECT_EQ(world.sleeps, std::vector<Time>(5, 1s));
  EXPECT_EQ(SER_SIG, -1);
}

TEST_F(LinkOpen, a_silent_modem_is_probed_five_times) {
  EXPECT_EQ(zop_open(DEVICE), 1u);
  EXPECT_EQ(world.opens, 5);
  EXPECT_EQ(modem.requests.size(), 5u);
  EXPECT_EQ(world.now(), 5s + 5 * 100us);
  EXPECT_EQ(diag_status(), 0);
}

TEST_F(LinkOpen, a_modem_that_wakes_up_late_is_found) {
  modem.answers = {SILENCE, SILENCE, {{hex("1d 7e"), 900ms}}};
  EXPECT_EQ(zop_open(DEVICE), 0u);
  EXPECT_EQ(world.opens, 3);
}

TEST_F(LinkOpen, a_read_error_ends_the_attempts_at_once) {
  world.reads = {Fail{EIO}};
  modem.answers = {{{hex("1d 7e")}}, {{hex("1d 7e")}}};
  EXPECT_EQ(zop_open(DEVICE), 2u);
  EXPECT_EQ(world.opens, 1);
  EXPECT_EQ(diag_status(), 0);
}

TEST_F(LinkOpen, a_write_error_uses_up_an_attempt) {
  world.writes = {Fail{EIO}};
  modem.answers = {{{hex("1d 7e")}}};
  EXPECT_EQ(zop_open(DEVICE), 0u);
  EXPECT_EQ(world.opens, 2);
}
