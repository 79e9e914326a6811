// A call that ends by itself: the alarm, and what it does while a command is in progress.
#include <signal.h>

#include <cstring>

#include "commands/exchange.h"
#include "link/event_listener.h"
#include "tests/support/link_test.h"

using namespace test;

class TimedCall : public OpenLinkTest {
 protected:
  TimedCall() { THREAD_STATUS = 0; }
  ~TimedCall() override { THREAD_STATUS = 0; }
  // Answers the next request with payload, zeros up to size.
  void answer(const std::string& payload, size_t size = 0) {
    Bytes bytes = hex(payload);
    if (size > bytes.size()) bytes.resize(size);
    modem.answers.push_back({{frame(bytes)}});
  }
  Bytes request(size_t i) const { return unframe(modem.requests.at(i)); }
};

TEST_F(TimedCall, a_timed_call_arms_the_alarm_or_gives_the_listener_its_time) {
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

TEST_F(TimedCall, a_real_alarm_waits_for_the_command_in_progress) {
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

TEST_F(TimedCall, the_alarm_ends_the_call_when_the_port_is_free) {
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
