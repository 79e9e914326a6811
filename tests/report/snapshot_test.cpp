// How a host gets a report, with the deferred-action thread and the listener in virtual time.
#include "report/snapshot.h"

#include <fcntl.h>

#include <atomic>
#include <functional>
#include <thread>
#include <utility>

#include "link/upcalls.h"
#include "report/field_test.h"
#include "report/rendering.h"
#include "tests/module/module_fixture.h"

using namespace std::chrono_literals;
using namespace test;

class Snapshot : public ModuleTest {
 protected:
  void open() {
    ASSERT_EQ(vurn_open(), VURN_OK);
    world.advance(10s);  // the first snapshot is over
    world.log.clear();
    modem.payloads.clear();
  }
  int reports() const { return count("zop:diag:"); }
  int count(const std::string& part) const {
    int lines = 0;
    for (const LogLine& line : world.log) lines += line.text.find(part) != std::string::npos;
    return lines;
  }
  std::string states() const {
    std::string text;
    for (const LogLine& line : world.log) {
      std::smatch m;
      if (!std::regex_search(line.text, m, std::regex("newState=(\\w+) event=(\\w+)"))) continue;
      text += m[2].str() + ">" + m[1].str() + "\n";
    }
    return text;
  }
  static inline const char* const NAMES[] = {"no carrier", "dial failed", "timeout", "a",       "b",
                                             "c",          "d",           "e",       "sim lost"};
  static int log_message(unsigned code) {
    return vurn_log_message(code, const_cast<const char**>(NAMES));
  }
};

TEST_F(Snapshot, an_open_takes_one_after_five_screens) {
  vurn_set_log_mask(VURN_LOG_INFO | VURN_LOG_GENERAL);
  ASSERT_EQ(vurn_open(), VURN_OK);
  world.advance(7400ms);
  EXPECT_EQ(reports(), 0);
  world.advance(1s);
  EXPECT_EQ(reports(), 1);
  EXPECT_EQ(THREAD_STATUS, 0u);
  EXPECT_EQ(states(),
            "startDiagnosticSnapshot>waitForFTDSnapshotOnly\n"
            "fieldTestData>waitForFTDSnapshotOnly\nfieldTestData>waitForFTDSnapshotOnly\n"
            "fieldTestData>waitForFTDSnapshotOnly\nfieldTestData>waitForFTDSnapshotOnly\n"
            "fieldTestData>idle\nturnedOffFieldTesting>idle\n");
  EXPECT_EQ(count("turned on field testing"), 1);
  EXPECT_EQ(count("turned off field testing"), 1);
}

TEST_F(Snapshot, an_exception_is_reported_five_times) {
  open();
  vurn_set_log_mask(VURN_LOG_INFO | VURN_LOG_GENERAL);
  EXPECT_EQ(log_message(1), VURN_OK);
  EXPECT_EQ(count("I zop:wanexc:name=dial failed:wan exception occurred"), 1);
  world.advance(20s);
  EXPECT_EQ(reports(), 5);
  EXPECT_EQ(count("Exc=dial failed"), 5);
  EXPECT_EQ(count("done outputting to syslog"), 5);
  EXPECT_EQ(THREAD_STATUS, 0u);
}

TEST_F(Snapshot, codes_that_are_not_reported) {
  open();
  vurn_set_log_mask(VURN_LOG_INFO | VURN_LOG_ACTION_EVENTS);
  for (unsigned code : {3u, 5u, 7u}) EXPECT_EQ(log_message(code), VURN_OK);
  EXPECT_EQ(vurn_enable_logging(0), VURN_OK);
  EXPECT_TRUE(world.log.empty());
  EXPECT_TRUE(modem.payloads.empty());
  EXPECT_EQ(log_message(8), VURN_OK);
  EXPECT_EQ(count("new action event: exception"), 1);
  vurn_close(0);
  EXPECT_EQ(log_message(8), VURN_ERR_NOT_OPEN);
}

TEST_F(Snapshot, a_log_string_keeps_field_testing_on_for_ten_seconds) {
  open();
  char text[8192];
  EXPECT_EQ(vurn_get_log_string(text, sizeof text), VURN_OK);
  EXPECT_NE(strstr(text, "Firmware: FW-1\n"), nullptr);
  world.advance(9s);
  EXPECT_EQ(THREAD_STATUS, 1u);
  EXPECT_EQ(vurn_get_log_string(text, sizeof text), VURN_OK);
  world.advance(9s);
  EXPECT_EQ(THREAD_STATUS, 1u);
  world.advance(5s);
  EXPECT_EQ(THREAD_STATUS, 0u);
  EXPECT_EQ(vurn_get_log_string(text, 100), VURN_ERR_TRUNCATED);
}

TEST_F(Snapshot, a_log_string_of_a_closed_module) {
  char text[128] = "#";
  EXPECT_EQ(vurn_get_log_string(text, 84), VURN_OK);
  EXPECT_STREQ(text, "");
  world.advance(-world.now());
  EXPECT_EQ(vurn_get_log_string(text, 85), VURN_OK);
  EXPECT_STREQ(text,
               "Sorry, WAN information is not available at this time.\nSat Jul 24 19:33:20 2010\n");
  char guard[2] = {'#', '#'};
  EXPECT_EQ(vurn_get_log_string(guard, 0), VURN_OK);
  EXPECT_EQ(guard[0], '#');
}

TEST_F(Snapshot, the_sim_s_lists_are_read_again_every_ten_seconds) {
  open();
  world.advance(10'000h);  // long after any other test read them
  char text[8192];
  auto lists_read = [&] {
    bool read = asked().find("cf 6b 00 01") != std::string::npos;
    modem.payloads.clear();
    return read;
  };
  vurn_get_log_string(text, sizeof text);
  lists_read();
  world.advance(5s);
  vurn_get_log_string(text, sizeof text);
  EXPECT_FALSE(lists_read());
  world.advance(6s);
  vurn_get_log_string(text, sizeof text);
  EXPECT_TRUE(lists_read());
}

TEST_F(Snapshot, what_is_posted_before_a_switch_off_is_seen_is_lost) {
  vurn_set_log_mask(VURN_LOG_ACTION_EVENTS);
  prv_deferred_action_event(DEFERRED_EXCEPTION);
  prv_deferred_action_event(DEFERRED_TURNED_OFF_FIELD_TESTING);
  prv_deferred_action_event(DEFERRED_LOG_STRING);
  EXPECT_EQ(log_lines(),
            "D zop:new action event: exception\nD zop:new action event: turnedOffFieldTesting\n"
            "D zop:pending turned_off_field_testing action - ignoring logString\n");
}

TEST_F(Snapshot, a_close_stops_both_threads_whatever_they_do) {
  modem.delay = 90ms;
  for (int ms = 0; ms < 3000; ms += 130) {
    gDeferredThreadCreated = false;
    ASSERT_EQ(vurn_open(), VURN_OK);
    if (ms > 0) {  // at 0 the deferred-action thread waits for the lock to start the listener
      char text[64];
      vurn_get_log_string(text, sizeof text);
      world.advance(std::chrono::milliseconds(ms));
    }
    int threads = world.threads_made;
    EXPECT_EQ(vurn_close(1), VURN_OK);
    EXPECT_EQ(world.threads_made, threads) << ms;  // the close starts no listener
    EXPECT_FALSE(world.conductor.has_others()) << ms;
    EXPECT_EQ(THREAD_STATUS, 0u);
    EXPECT_FALSE(world.port_is_open());
  }
}

TEST_F(Snapshot, a_joined_thread_is_not_started_again) {
  open();
  vurn_set_log_mask(VURN_LOG_GENERAL);
  vurn_close(1);
  EXPECT_EQ(count("joined deferred action thread"), 1);
  int threads = world.threads_made;
  ASSERT_EQ(vurn_open(), VURN_OK);
  world.advance(20s);
  EXPECT_EQ(world.threads_made, threads);
  // Closing a closed module joins nothing.
  vurn_close(0);
  world.log.clear();
  vurn_close(1);
  EXPECT_TRUE(world.log.empty());
}

TEST_F(Snapshot, a_thread_that_can_not_be_made_fails_the_open) {
  vurn_set_log_mask(VURN_LOG_ERROR);
  world.thread_error = EAGAIN;
  EXPECT_EQ(vurn_open(), VURN_ERR_FAILED);
  EXPECT_EQ(world.log_text(), "E zop:defthr:err=11:can't create deferred action thread\n");
  EXPECT_FALSE(world.port_is_open());
}

// However a host returns to an open module, it gets both kinds of report. The modem is slow, so
// that the deferred-action thread waits for the module's lock while the host goes on.
TEST_F(Snapshot, every_road_back_leads_to_reports) {
  modem.delay = 20ms;
  auto report_for_a_while = [&] {
    vurn_open();
    world.advance(10s);
    log_message(1);
    world.advance(2s);
  };
  struct {
    const char* road;
    std::function<void()> walk;
  } rows[] = {
      {"close while reporting", [&] { report_for_a_while(), vurn_close(0); }},
      {"two opens at once",
       [&] {
         vurn_open();
         EXPECT_EQ(vurn_open(), VURN_ERR_REOPENED);
         EXPECT_FALSE(world.port_is_open());
       }},
      {"an open while reporting", [&] { report_for_a_while(), vurn_open(); }},
      {"a snapshot while closed",
       [&] {
         report_for_a_while();
         vurn_close(0);
         world.advance(1s);
         vurn_enable_logging(1);
         world.advance(1s);
       }},
      {"an open that fails behind a snapshot",
       [&] {
         vurn_enable_logging(1);
         auto healthy = std::exchange(answers, {});
         EXPECT_EQ(vurn_open(), VURN_ERR_FAILED);
         world.advance(1s);
         answers = healthy;
       }},
      {"a listener that runs already",
       [&] { vurn_open(), world.advance(10s), zop_debug_start(1); }},
      {"no memory for a listener",
       [&] { vurn_open(), world.malloc_failures = 1, world.advance(10s); }},
      {"no thread for a listener",
       [&] {
         vurn_open();
         world.thread_error = EAGAIN;
         world.advance(10s);
         world.thread_error = 0;
       }},
      {"a modem that goes away",
       [&] {
         report_for_a_while();
         modem.unplugged = true;
         world.advance(2s);
         vurn_open();
         modem.unplugged = false;
       }},
  };
  for (auto& [road, walk] : rows) {
    SCOPED_TRACE(road);
    walk();
    world.log.clear();
    vurn_set_log_mask(VURN_LOG_INFO);
    bool closed = vurn_update_prl() != VURN_OK;
    EXPECT_EQ(closed ? vurn_open() : vurn_enable_logging(1), VURN_OK);
    world.advance(20s);
    EXPECT_EQ(reports(), 1);
    log_message(1);
    world.advance(20s);
    EXPECT_EQ(reports(), 1 + 5);
    EXPECT_EQ(THREAD_STATUS, 0u);
    vurn_set_log_mask(0);
    vurn_close(1);
    gDeferredThreadCreated = false;
    take_leftover_event(world);
  }
}

// Screens arrive while reports are rendered: no report mixes two of them.
TEST_F(Snapshot, no_report_shows_a_torn_screen) {
  world.runs_free = true;
  world.keeps_log = false;
  prv_zop_init_logging();
  std::atomic<bool> done = false;
  std::jthread listener([&] {
    world.join();
    uint8_t screen[360] = {};
    for (char letter = 'A'; !done; letter = letter == 'Z' ? 'A' : static_cast<char>(letter + 1)) {
      memset(screen + 3, letter, 32 + 16);  // name and IMEI
      field_information_callback(screen);
    }
  });
  for (int i = 0; i < 2000; ++i) {
    char text[8192];
    {
      ScopedLock lock(gFtdMutex);
      prv_zop_output_to_log_string(text, sizeof text, 1);
    }
    const char* name = strstr(text, "Network Name: ");
    const char* imei = strstr(text, "IMEI: ");
    if (name[14] == '\n') continue;  // no screen yet
    std::string letter(1, name[14]);
    size_t whole_name = strspn(name + 14, letter.c_str());
    size_t whole_imei = strspn(imei + 6, letter.c_str());
    EXPECT_EQ(whole_name, sizeof gDiagInfo.screen.network_name) << i;
    EXPECT_EQ(whole_imei, sizeof gDiagInfo.screen.imei) << i;
  }
  done = true;
}
