// The event listener in virtual time: its cadence, the record requested for each flag, sharing the
// port, stopping, and alarms.
#include "link/event_listener.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <cstring>

#include "include/vurn.h"
#include "include/zop.h"
#include "include/zop_diag_info.h"
#include "link/serial_port.h"
#include "tests/support/far_ends.h"
#include "tests/support/fresh_link.h"
#include "tests/support/other_exchange.h"

using namespace std::chrono_literals;
using namespace test;

static const char DEVICE[] = "/dev/tts/USB1";

class Listener : public testing::Test {
 protected:
  void SetUp() override {
    world.far_end = &modem;
    fresh_link();
    THREAD_STATUS = 0;
    call_end_timeout = 0;
    zop_debug_end_callback_status = 0;
    gDiagInfo = {};
    ASSERT_EQ(zop_open(DEVICE), 0u);
    vurn_set_log_mask(VURN_LOG_EVENTS);
  }
  void TearDown() override {
    zop_debug_stop();
    zop_close();
    vurn_set_log_mask(0);
    EXPECT_EQ(SIO_USED_LOCK, 0u);
  }
  void start() {
    ASSERT_EQ(zop_debug_start(1), ZOP_SUCCESS);
    modem.payloads.clear();
  }
  // Answers take 150 ms, so an exchange may be in progress afterwards.
  void start_and_wait(int ms) {
    modem.delay = 0ms;
    start();
    modem.delay = 150ms;
    world.advance(std::chrono::milliseconds(ms));
  }
  // Subcommands of the requests, as characters.
  std::string asked() {
    std::string text;
    for (const Bytes& payload : modem.payloads) text += static_cast<char>(payload.at(1));
    modem.payloads.clear();
    return text;
  }

  World world;
  int flags = 0;
  std::map<char, std::string> records;  // by subcommand, without the header
  AnsweringModem modem{[this](const Bytes& request) -> std::optional<Bytes> {
    Bytes answer = {request[0], request[1], 0, 0, 0};
    Bytes record = hex(records[static_cast<char>(request[1])]);
    if (request[1] == '=') record = {static_cast<uint8_t>(flags)};
    if (request[1] == ' ') record = {0xB5, 0xFF};
    answer.insert(answer.end(), record.begin(), record.end());
    answer.resize(350);
    return answer;
  }};
};

TEST_F(Listener, two_polls_and_a_screen) {
  EXPECT_EQ(zop_debug_start(1), ZOP_SUCCESS);
  EXPECT_EQ(to_hex(modem.payloads.at(0)), "cf 4d 00 00");
  world.advance(450ms);
  EXPECT_EQ(asked(), "M");
  world.advance(3500ms);
  EXPECT_EQ(asked(), "==4==4=");
  EXPECT_EQ(zop_debug_start(1), ZOP_ERR_INVALID_ARGUMENT);
  EXPECT_EQ(world.threads_made, 1);
  EXPECT_EQ(zop_debug_stop(), ZOP_SUCCESS);
  world.advance(5s);
  EXPECT_EQ(asked(), "");
  EXPECT_EQ(zop_debug_stop(), ZOP_SUCCESS);
  EXPECT_EQ(THREAD_STATUS, 0u);
}

TEST_F(Listener, more_polls_between_screens_when_told) {
  ASSERT_EQ(zop_debug_start(3), ZOP_SUCCESS);
  modem.payloads.clear();
  world.advance(5100ms);
  EXPECT_EQ(asked(), "====4====4");
}

TEST_F(Listener, the_first_flag_is_fetched_and_told) {
  Bytes number_record(83);
  memcpy(number_record.data() + 2, "5550199", 7);
  std::string number = to_hex(number_record);
  std::string activation =
      "00 00 00 00 09 00 1f 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 04 0a 00 00 "
      "01";
  struct {
    int flags;
    char request;
    std::string record;
    const char* lines;
  } rows[] = {
      {0x00, 0, "", ""},
      {0x10, 0, "", ""},
      {0x01, '>', number + " 07",
       "D zop:Call originate callback called\nD zop:Call number = 5550199\n"},
      {0x0F, '>', number + " 00", "D zop:Call originate callback called\nD zop:Call number = \n"},
      {0x06, '?', activation,
       "D zop:PDP Activate callback called\nD zop:QOS_peak_throughput=9000 oct/sec\n"
       "D zop:QOS_mean_throughput=3100 oct/sec\nD zop:PDP Address=10.0.0.1\n"},
      {0x0C, '@', "00", "D zop:PDP Deactivate callback called\n"},
      {0x08, 'A', "00 02 03",
       "D zop:Call end callback called\nD zop:call type = 2\nD zop:call status = 3\n"},
  };
  for (auto& row : rows) {
    start();
    flags = row.flags;
    records = {{row.request, row.record}};
    world.log.clear();
    world.advance(600ms);
    std::string expected = "=";
    if (row.request != 0) expected += row.request;
    EXPECT_EQ(asked(), expected) << row.flags;
    EXPECT_EQ(world.log_lines(), row.lines);
    zop_debug_stop();
  }
}

// Lengths that exceed the record are clamped.
TEST_F(Listener, a_hostile_record_stays_inside_its_bounds) {
  for (auto [flag, request] : {std::pair{1, '>'}, {2, '?'}}) {
    start();
    flags = flag;
    std::string record;
    for (int i = 0; i < 345; ++i) record += "ff ";
    records = {{request, record}};
    world.advance(600ms);
    zop_debug_stop();
  }
  EXPECT_NE(world.log_lines().find("PDP Address=255.255."), std::string::npos);
}

TEST_F(Listener, a_screen_reaches_the_record) {
  start();
  records = {{'4', "05 02 01 54 65 73 74"}};
  world.advance(1600ms);
  EXPECT_EQ(gDiagInfo.screen.system_mode, 5);
  EXPECT_STREQ(gDiagInfo.screen.network_name, "Test");
  EXPECT_EQ(gDiagInfo.screen_time, static_cast<uint32_t>(time(nullptr)));
}

// A tick that finds the port busy sends nothing and counts as a successful poll.
TEST_F(Listener, leaves_a_busy_port_alone) {
  start();
  {
    OtherExchange other;
    world.advance(1100ms);
  }
  EXPECT_EQ(asked(), "");
  world.advance(500ms);
  EXPECT_EQ(asked(), "4");
}

namespace {
struct DamagingModem : AnsweringModem {
  using AnsweringModem::AnsweringModem;
  Answer answer_to(const Bytes& request) override {
    Answer answer = AnsweringModem::answer_to(request);
    for (Piece& piece : answer) piece.bytes[0] ^= 1;
    return answer;
  }
};
}  // namespace

// Its flags and screen are ignored, and the listener continues.
TEST_F(Listener, a_damaged_answer_tells_nothing) {
  DamagingModem damaging{[](const Bytes&) { return Bytes(350, 0xFF); }};
  start();
  world.far_end = &damaging;
  world.advance(1600ms);
  std::string asked_for;
  for (const Bytes& payload : damaging.payloads) asked_for += static_cast<char>(payload.at(1));
  EXPECT_EQ(asked_for, "==4");
  EXPECT_EQ(gDiagInfo.screen_time, 0u);
  EXPECT_EQ(THREAD_STATUS, LISTENER_RUNNING);
  world.far_end = &modem;
}

TEST_F(Listener, ends_a_timed_call_on_the_21st_tick_of_ten_seconds) {
  start();
  ASSERT_EQ(zop_originate_call_test(10, "0"), ZOP_SUCCESS);
  EXPECT_EQ(THREAD_STATUS, unsigned{LISTENER_TIMES_CALL});
  EXPECT_FALSE(world.alarm);
  world.advance(10'250ms);
  EXPECT_EQ(asked().find('d'), std::string::npos);
  {
    OtherExchange other;  // at the tick that should end the call
    world.advance(500ms);
    EXPECT_EQ(asked(), "");
  }
  world.advance(500ms);
  EXPECT_NE(asked().find('d'), std::string::npos);
  EXPECT_EQ(THREAD_STATUS, unsigned{LISTENER_ENDED_CALL});
  EXPECT_EQ(call_end_timeout, 0u);
  flags = 0x08;
  world.advance(1600ms);
  EXPECT_EQ(THREAD_STATUS, unsigned{LISTENER_RUNNING});
}

TEST_F(Listener, a_call_that_ends_by_itself_is_not_ended_again) {
  start();
  ASSERT_EQ(zop_originate_call_test(10, "0"), ZOP_SUCCESS);
  flags = 0x08;
  world.advance(1s);
  flags = 0;
  EXPECT_EQ(THREAD_STATUS, unsigned{LISTENER_RUNNING});
  world.advance(20s);
  EXPECT_EQ(asked().find('d'), std::string::npos);
}

// Host commands and listener requests at varying intervals: each is sent whole and gets its own
// answer.
TEST_F(Listener, two_senders_never_mix) {
  start();
  modem.delay = 40ms;
  for (int i = 0; i < 1000; ++i) {
    int32_t rssi = 0;
    ASSERT_EQ(zop_get_rssi(&rssi), ZOP_SUCCESS) << i;
    EXPECT_EQ(rssi, -75);
    world.advance(std::chrono::milliseconds(i % 61));
  }
  std::string all = asked();
  EXPECT_EQ(all.find_first_not_of(" =4"), std::string::npos);
  EXPECT_GT(std::count(all.begin(), all.end(), '='), 20);
  EXPECT_EQ(diag_status(), 1);
}

// A download may open the port next, with another protocol.
TEST_F(Listener, is_stopped_by_a_close) {
  start();
  zop_close();
  EXPECT_EQ(THREAD_STATUS, unsigned{LISTENER_STOPPED});
  ASSERT_EQ(diag_open(DEVICE), 1);
  world.advance(3s);
  EXPECT_EQ(asked(), "");
}

// Its answer is not taken for that of the next exchange, and its claim is void.
TEST_F(Listener, an_exchange_under_way_ends_before_the_port_opens_again) {
  for (int ms = 0; ms < 700; ms += 35) {
    start_and_wait(ms);
    diag_close();
    ASSERT_EQ(diag_open(DEVICE), 1);
    int32_t rssi = 0;
    EXPECT_EQ(zop_get_rssi(&rssi), ZOP_SUCCESS) << ms;
    EXPECT_EQ(rssi, -75) << ms;
    zop_debug_stop();
  }
}

TEST_F(Listener, a_dead_link_stops_it_a_second_later) {
  start();
  modem.unplugged = true;
  world.advance(600ms);
  EXPECT_EQ(diag_status(), 0);
  EXPECT_EQ(world.alarm, 1u);
  EXPECT_EQ(zop_debug_end_callback_status, 1);
  world.advance(1s);
  EXPECT_EQ(THREAD_STATUS, unsigned{LISTENER_RUNNING});
  raise(SIGALRM);
  EXPECT_EQ(THREAD_STATUS, 0u);
  EXPECT_EQ(world.alarm, 0u);
  EXPECT_EQ(zop_debug_end_callback_status, 0);
  // No zop_debug_stop is needed before the next start.
  modem.unplugged = false;
  ASSERT_EQ(zop_open(DEVICE), 0u);
  start();
  world.advance(600ms);
  EXPECT_EQ(asked(), "=");
}

// Failing to end a test call arms the listener's shutdown; the handler must not cancel that alarm.
TEST_F(Listener, a_call_s_alarm_does_not_cancel_the_shutdown) {
  start();
  modem.unplugged = true;
  callback_function(SIGALRM);
  EXPECT_EQ(diag_status(), 0);
  EXPECT_EQ(world.alarm, 1u);
  EXPECT_EQ(zop_debug_end_callback_status, 1);
  raise(SIGALRM);
  EXPECT_EQ(THREAD_STATUS, 0u);
}

TEST_F(Listener, an_alarm_of_a_dead_link_leaves_a_new_listener_alone) {
  start();
  modem.unplugged = true;
  world.advance(600ms);
  ASSERT_EQ(zop_debug_end_callback_status, 1);
  modem.unplugged = false;
  ASSERT_EQ(zop_open(DEVICE), 0u);
  start();
  world.alarm.reset();
  raise(SIGALRM);
  EXPECT_EQ(THREAD_STATUS, unsigned{LISTENER_RUNNING});
  EXPECT_FALSE(world.alarm);
  world.advance(600ms);
  EXPECT_EQ(asked(), "=");
}

TEST_F(Listener, failed_starts_leave_nothing_behind) {
  testing::internal::CaptureStdout();
  world.malloc_failures = 1;
  EXPECT_EQ(zop_debug_start(1), ZOP_ERR_NO_MEMORY);
  EXPECT_EQ(THREAD_STATUS, 0u);
  world.malloc_failures = 0;
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "zop_debug_start malloc fail !\n");
  EXPECT_EQ(world.threads_made, 0);
  world.thread_error = EAGAIN;
  EXPECT_EQ(zop_debug_start(1), ZOP_ERR_NO_MEMORY);
  EXPECT_EQ(THREAD_STATUS, 0u);
  world.thread_error = 0;
  start();
  world.advance(600ms);
  EXPECT_EQ(asked(), "=");
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
  for (int signal : {SIGALRM, SIGTERM, SIGINT, SIGHUP}) {
    EXPECT_TRUE(sigismember(&of_thread, signal)) << signal;
    EXPECT_FALSE(sigismember(&of_host, signal)) << signal;
  }
}
