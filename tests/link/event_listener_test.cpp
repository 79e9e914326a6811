// The event listener in virtual time: its cadence, the record requested for each flag, sharing the
// port, stopping, and alarms.
#include "link/event_listener.h"

#include <signal.h>

#include <cstring>

#include "include/vurn.h"
#include "include/zop_diag_info.h"
#include "tests/support/link_test.h"

using namespace std::chrono_literals;
using namespace test;

class Listener : public LinkTest {
 protected:
  void SetUp() override {
    LinkTest::SetUp();
    world.far_end = &answering;
    THREAD_STATUS = LISTENER_STOPPED;
    call_end_timeout = 0;
    zop_debug_end_callback_status = 0;
    gDiagInfo = {};
    ASSERT_EQ(zop_open(DEVICE), 0u);
    vurn_set_log_mask(VURN_LOG_EVENTS);
  }
  void TearDown() override {
    LinkTest::TearDown();
    vurn_set_log_mask(0);
    EXPECT_EQ(SIO_USED_LOCK, 0u) << "the port is still claimed";
  }
  void start(unsigned polls = 1) {
    ASSERT_EQ(zop_debug_start(polls), ZOP_SUCCESS);
    EXPECT_EQ(to_hex(answering.payloads.at(0)), "cf 4d 00 00");
    answering.payloads.clear();
  }
  // Subcommands of the requests so far or for that long, as characters.
  std::string asked(Time time = Time{0}) {
    world.advance(time);
    std::string text;
    for (const Bytes& payload : answering.payloads) text += static_cast<char>(payload.at(1));
    answering.payloads.clear();
    return text;
  }
  std::optional<Bytes> answer_to(const Bytes& request) {
    if (damages) return Bytes{};
    Bytes answer = {request[0], request[1], 0, 0, 0};
    Bytes record = hex(records[static_cast<char>(request[1])]);
    if (request[1] == '=') record = {static_cast<uint8_t>(flags)};
    if (request[1] == ' ') record = {0xB5, 0xFF};
    answer.insert(answer.end(), record.begin(), record.end());
    answer.resize(350);
    return answer;
  }
  void unplug(bool unplugged) { answering.unplugged = unplugged; }

  int flags = 0;
  bool damages = false;                 // its answers
  std::map<char, std::string> records;  // by subcommand, without the header
  AnsweringModem answering{[this](const Bytes& request) { return answer_to(request); }};
};

TEST_F(Listener, polls_and_then_asks_for_a_screen) {
  struct {
    unsigned polls;
    const char* asked;
  } rows[] = {{0, "=4=4=4=4"}, {1, "==4==4=="}, {3, "====4==="}};
  for (auto& row : rows) {
    start(row.polls);
    EXPECT_EQ(asked(499ms), "");
    EXPECT_EQ(asked(3502ms), row.asked);
    EXPECT_EQ(zop_debug_start(1), ZOP_ERR_INVALID_ARGUMENT);
    EXPECT_EQ(zop_debug_stop(), ZOP_SUCCESS);
    EXPECT_EQ(asked(5s), "");
    EXPECT_EQ(zop_debug_stop(), ZOP_SUCCESS);
    EXPECT_EQ(THREAD_STATUS, unsigned{LISTENER_STOPPED});
  }
  EXPECT_EQ(world.threads_made, 3);
}

TEST_F(Listener, wakes_up_twice_a_second) {
  start();
  world.advance(1h + 1ms);
  EXPECT_EQ(world.conductor.wake_ups, 2 * 3600);
  zop_debug_stop();
}

TEST_F(Listener, fetches_and_reports_the_first_flag) {
  Bytes number_record(83);
  memcpy(number_record.data() + 2, "5550199", 7);
  std::string number = to_hex(number_record), longest = to_hex(Bytes(345, 0xFF));
  std::string activation =
      "00 00 00 00 09 00 1f 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 04 0a 00 00 "
      "01";
  struct {
    int flags;
    std::string asked, record, lines;
  } rows[] = {
      {0x00, "=", "", ""},
      {0x10, "=", "", ""},
      {0x01, "=>", number + " 07",
       "D zop:Call originate callback called\nD zop:Call number = 5550199\n"},
      {0x0F, "=>", number + " 00", "D zop:Call originate callback called\nD zop:Call number = \n"},
      {0x06, "=?", activation,
       "D zop:PDP Activate callback called\nD zop:QOS_peak_throughput=9000 oct/sec\n"
       "D zop:QOS_mean_throughput=3100 oct/sec\nD zop:PDP Address=10.0.0.1\n"},
      {0x0C, "=@", "00", "D zop:PDP Deactivate callback called\n"},
      {0x08, "=A", "00 02 03",
       "D zop:Call end callback called\nD zop:call type = 2\nD zop:call status = 3\n"},
      // Lengths that exceed the record are clamped.
      {0x01, "=>", longest,
       "D zop:Call originate callback called\nD zop:Call number = " + std::string(81, '\xFF') +
           "\n"},
      {0x02, "=?", longest,
       "D zop:PDP Activate callback called\nD zop:QOS_peak_throughput=255000 oct/sec\n"
       "D zop:QOS_mean_throughput=25500 oct/sec\nD zop:PDP Address=255.255.255.255.255.255.255.255."
       "255.255.255.255.255.255.255.255.255.255.255.255\n"},
  };
  for (auto& row : rows) {
    start();
    flags = row.flags;
    records = {{row.asked.back(), row.record}};
    world.log.clear();
    EXPECT_EQ(asked(600ms), row.asked) << row.flags;
    EXPECT_EQ(world.log_lines(), row.lines) << row.asked;
    zop_debug_stop();
  }
}

TEST_F(Listener, a_screen_reaches_the_record_unless_it_is_damaged) {
  start();
  records = {{'4', "05 02 01 54 65 73 74"}};
  damages = true;
  EXPECT_EQ(asked(1600ms), "==4");
  EXPECT_EQ(gDiagInfo.screen_time, 0u);
  damages = false;
  EXPECT_EQ(asked(1500ms), "==4");
  EXPECT_EQ(gDiagInfo.screen.system_mode, 5);
  EXPECT_STREQ(gDiagInfo.screen.network_name, "Test");
  EXPECT_EQ(gDiagInfo.screen_time, static_cast<uint32_t>(time(nullptr)));
}

// A tick that finds the port busy sends nothing and counts as a successful poll.
TEST_F(Listener, leaves_a_busy_port_alone) {
  start();
  {
    OtherExchange other;
    EXPECT_EQ(asked(1100ms), "");
  }
  EXPECT_EQ(asked(500ms), "4");
}

TEST_F(Listener, ends_a_timed_call_on_the_21st_tick_of_ten_seconds) {
  start();
  ASSERT_EQ(zop_originate_call_test(10, "0"), ZOP_SUCCESS);
  EXPECT_EQ(THREAD_STATUS, unsigned{LISTENER_TIMES_CALL});
  EXPECT_FALSE(world.alarm);
  EXPECT_EQ(asked(10'250ms).find('d'), std::string::npos);
  {
    OtherExchange other;  // at the tick that should end the call
    EXPECT_EQ(asked(500ms), "");
  }
  EXPECT_NE(asked(500ms).find('d'), std::string::npos);
  EXPECT_EQ(THREAD_STATUS, unsigned{LISTENER_ENDED_CALL});
  EXPECT_EQ(call_end_timeout, 0u);
  flags = 0x08;
  world.advance(1600ms);
  EXPECT_EQ(THREAD_STATUS, unsigned{LISTENER_RUNNING});
  // The next one ends by itself, and is not ended again.
  ASSERT_EQ(zop_originate_call_test(10, "0"), ZOP_SUCCESS);
  world.advance(1s);
  flags = 0;
  EXPECT_EQ(THREAD_STATUS, unsigned{LISTENER_RUNNING});
  EXPECT_EQ(asked(20s).find('d', 1), std::string::npos);
}

// A download may open the port next, with another protocol.
TEST_F(Listener, is_stopped_by_a_close) {
  start();
  zop_close();
  EXPECT_EQ(THREAD_STATUS, unsigned{LISTENER_STOPPED});
  ASSERT_EQ(diag_open(DEVICE), 1);
  EXPECT_EQ(asked(3s), "");
}

// Its answer is not taken for that of the next exchange, and its claim is void.
TEST_F(Listener, a_running_exchange_ends_before_the_port_opens_again) {
  for (int ms = 0; ms < 700; ms += 35) {
    answering.delay = 0ms;
    start();
    answering.delay = 150ms;
    world.advance(std::chrono::milliseconds(ms));
    diag_close();
    ASSERT_EQ(diag_open(DEVICE), 1);
    int32_t rssi = 0;
    EXPECT_EQ(zop_get_rssi(&rssi), ZOP_SUCCESS) << ms;
    EXPECT_EQ(rssi, -75) << ms;
    zop_debug_stop();
    answering.payloads.clear();
  }
}

TEST_F(Listener, a_dead_link_stops_it_a_second_later_unless_it_is_reopened) {
  for (bool reopened : {false, true}) {
    start();
    unplug(true);
    world.advance(600ms);
    EXPECT_EQ(diag_status(), 0);
    EXPECT_EQ(world.alarm, 1u);
    EXPECT_EQ(zop_debug_end_callback_status, 1);
    world.advance(1s);
    EXPECT_EQ(THREAD_STATUS, unsigned{LISTENER_RUNNING});
    unplug(false);
    if (reopened) {
      ASSERT_EQ(zop_open(DEVICE), 0u);
      answering.payloads.clear();
      start();
    }
    world.alarm.reset();
    raise(SIGALRM);
    EXPECT_EQ(THREAD_STATUS, unsigned{reopened ? LISTENER_RUNNING : LISTENER_STOPPED});
    EXPECT_EQ(world.alarm, reopened ? std::nullopt : std::optional(0u));
    EXPECT_EQ(zop_debug_end_callback_status, 0);
    if (!reopened) {  // no zop_debug_stop is needed before the next start
      ASSERT_EQ(zop_open(DEVICE), 0u);
      answering.payloads.clear();
    }
  }
  EXPECT_EQ(asked(600ms), "=");
}

// Unless the link has been opened anew, which stops it, it repeats the request that failed.
TEST_F(Listener, repeats_a_screen_that_failed) {
  start();
  EXPECT_EQ(asked(1100ms), "==");
  unplug(true);
  EXPECT_EQ(asked(500ms), "");
  unplug(false);
  ASSERT_EQ(diag_open(DEVICE), 1);
  EXPECT_EQ(asked(500ms), "4");
}

// Failing to end a test call arms the listener's shutdown; the handler must not cancel that alarm.
TEST_F(Listener, a_call_s_alarm_does_not_cancel_the_shutdown) {
  start();
  unplug(true);
  callback_function(SIGALRM);
  EXPECT_EQ(diag_status(), 0);
  EXPECT_EQ(world.alarm, 1u);
  EXPECT_EQ(zop_debug_end_callback_status, 1);
  raise(SIGALRM);
  EXPECT_EQ(THREAD_STATUS, unsigned{LISTENER_STOPPED});
}

TEST_F(Listener, failed_starts_leave_nothing_behind) {
  testing::internal::CaptureStdout();
  for (int failures : {2, 1}) {
    world.malloc_failures = failures;
    EXPECT_EQ(zop_debug_start(1), ZOP_ERR_NO_MEMORY);
  }
  world.malloc_failures = 0;
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "zop_debug_start malloc fail !\nzop_debug_start malloc fail !\n");
  world.thread_error = EAGAIN;
  EXPECT_EQ(zop_debug_start(1), ZOP_ERR_NO_MEMORY);
  EXPECT_EQ(THREAD_STATUS, unsigned{LISTENER_STOPPED});
  EXPECT_EQ(world.threads_made, 0);
  world.thread_error = 0;
  start();
  EXPECT_EQ(asked(600ms), "=");
}

static void* own_signal_mask(void* mask) {
  pthread_sigmask(SIG_SETMASK, nullptr, static_cast<sigset_t*>(mask));
  return nullptr;
}

TEST_F(Listener, the_module_s_threads_take_none_of_the_host_s_signals) {
  sigset_t of_thread, of_host;
  pthread_t thread;
  ASSERT_EQ(create_module_thread(&thread, own_signal_mask, &of_thread), 0);
  pthread_join(thread, nullptr);
  pthread_sigmask(SIG_SETMASK, nullptr, &of_host);
  for (int signal : {SIGALRM, SIGTERM, SIGINT, SIGHUP, SIGSEGV, SIGABRT}) {
    bool is_fault = signal == SIGSEGV || signal == SIGABRT;
    EXPECT_EQ(sigismember(&of_thread, signal), is_fault ? 0 : 1) << signal;
    EXPECT_FALSE(sigismember(&of_host, signal)) << signal;
  }
}
