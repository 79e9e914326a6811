// Opening the link: what counts as a modem, the number of attempts, the cost of each failure.
#include <cerrno>

#include "tests/support/link_test.h"

using namespace std::chrono_literals;
using namespace test;

class LinkOpen : public LinkTest {};

TEST_F(LinkOpen, attempts_and_their_time) {
  const Answer silence = {}, modem_is_there = {{hex("1d 7e")}};
  const Time probe = 1s + 100us;
  struct {
    const char* name;
    std::deque<Answer> answers;
    std::deque<PortCall> writes, reads;
    unsigned result;
    int opens;
    Time takes;
  } rows[] = {
      {"time stamp", {{{hex("1d 00 00 7e")}}}, {}, {}, ZOP_OPEN_UP, 1, 100us},
      {"lone flag", {{{hex("7e")}}}, {}, {}, ZOP_OPEN_UP, 1, 100us},
      {"refusal", {{{hex("13 1d ff ff 7e")}}}, {}, {}, ZOP_OPEN_UP, 1, 100us},
      {"silent modem", {}, {}, {}, ZOP_OPEN_NO_ANSWER, 5, 5 * probe},
      {"wakes up late",
       {silence, silence, {{hex("1d 7e"), 900ms}}},
       {},
       {},
       ZOP_OPEN_UP,
       3,
       2 * probe + 900ms + 100us + 5s},  // it does not answer what follows its probes
      {"read error", {modem_is_there}, {}, {Fail{EIO}}, ZOP_OPEN_READ_ERROR, 1, 100us},
      {"write error", {modem_is_there}, {Fail{EIO}}, {}, ZOP_OPEN_UP, 2, 200us},
  };
  for (auto& row : rows) {
    fresh_link();
    modem.answers = row.answers;
    world.writes = row.writes;
    world.reads = row.reads;
    world.opens = 0;
    Time start = world.now();
    bool up = row.result == ZOP_OPEN_UP;
    EXPECT_EQ(zop_open(DEVICE), row.result) << row.name;
    EXPECT_EQ(world.opens, row.opens) << row.name;
    EXPECT_EQ(world.now() - start, row.takes) << row.name;
    EXPECT_EQ(diag_status(), up) << row.name;
    EXPECT_EQ(world.port_is_open(), up) << row.name;
    EXPECT_EQ(SIO_USED_LOCK, 0u) << row.name;
    zop_close();
    EXPECT_FALSE(world.port_is_open()) << row.name;
  }
  EXPECT_EQ(to_hex(modem.requests.at(0)), "1d 1c 3b 7e");
}

TEST_F(LinkOpen, no_device_costs_five_seconds) {
  world.missing[DEVICE] = ENOENT;
  EXPECT_EQ(zop_open(DEVICE), ZOP_OPEN_NO_ANSWER);
  EXPECT_EQ(world.sleeps, std::vector<Time>(5, 1s));
  EXPECT_EQ(SER_SIG, -1);
}
