// Opening and closing: the order of the steps, a SIM that is not ready yet, every failure exit,
// and the log lines with their mask bits.
#include <fstream>
#include <regex>

#include "tests/module/module_fixture.h"

using namespace std::chrono_literals;
using namespace test;

class Lifecycle : public ModuleTest {
 protected:
  void sim_answers(const char* status, const char* lock, const char* retries) {
    answers["d2 00 00"] = std::string("d2 00 00 00 00 00 ") + status + " " + lock + " " + retries;
  }
  int polls() const {
    return static_cast<int>(
        std::count(modem.payloads.begin(), modem.payloads.end(), hex("d2 00 00")));
  }
};

TEST_F(Lifecycle, open_stores_the_sim_and_the_versions) {
  sim_answers("02", "03", "02");
  answers["cf 48 00"] = "cf 48 00 00 00 48 0a 31";  // a line feed must not forge a log line
  std::string uptime = testing::TempDir() + "uptime";
  std::ofstream(uptime) << "1234.56 99.00 0 77\n";
  world.files["/proc/uptime"] = uptime;
  world.missing.clear();
  vurn_set_log_mask(VURN_LOG_INFO);
  ASSERT_EQ(vurn_open(), VURN_OK);
  EXPECT_EQ(gDiagInfo.sim_status, 2);
  EXPECT_EQ(gDiagInfo.lock_status, 3);
  EXPECT_EQ(gDiagInfo.pin_retries, 2);
  EXPECT_EQ(world.log_text(),
            "I zop:misc1:lib = REV_3.0 20100419, fw = FW-1, hw = H?1, awake = 1235, "
            "asleep = 77, upsince = Sat Jul 24 19:11:28 2010:\n");
  EXPECT_EQ(world.log.at(0).priority, 5);
  // The versions are read once per process.
  vurn_close(0);
  modem.payloads.clear();
  world.log.clear();
  ASSERT_EQ(vurn_open(), VURN_OK);
  EXPECT_EQ(asked().find("cf 5d 00"), std::string::npos);
  EXPECT_EQ(asked().find("cf 48 00"), std::string::npos);
  EXPECT_TRUE(world.log.empty());
}

TEST_F(Lifecycle, a_missing_device_fails_the_open) {
  world.missing[DEVICE] = ENOENT;
  vurn_set_log_mask(VURN_LOG_ERROR);
  EXPECT_EQ(vurn_open(), VURN_ERR_FAILED);
  EXPECT_EQ(world.log_text(), "E zop:openlib:status=1:can't open zop library\n");
  EXPECT_EQ(world.log.at(0).priority, 3);
  EXPECT_EQ(vurn_update_prl(), VURN_ERR_NOT_OPEN);
}

TEST_F(Lifecycle, a_sim_that_gets_ready_is_waited_for) {
  sim_answers("03", "01", "03");
  world.on_sleep = [&](Time time) {
    if (time == 1s && polls() == 5) sim_answers("02", "01", "03");
  };
  EXPECT_EQ(vurn_open(), VURN_OK);
  EXPECT_EQ(polls(), 6);
}

TEST_F(Lifecycle, sims_that_fail_the_open) {
  struct {
    const char* answer;  // after the request's header
    int polls;           // one second apart
    const char* line;
  } rows[] = {
      {"00 00 00 04 00 07", 20,
       "E zop:simtries:tries=7,status=4:sim not ready after too many tries\n"},
      {"00 00 00 00 00 03", 1, "E zop:simstat:status=0:bad sim status\n"},
      {"00 00 00 01 00 03", 1, "E zop:simstat:status=1:bad sim status\n"},
      {"00 00 00 03 02 03", 1, "E zop:simstat:status=3:bad sim status\n"},
      {"00 00 00 ff 02 03", 1, "E zop:simstat:status=255:bad sim status\n"},
      {"01 00", 1, "E zop:get:param=sim_status,error=10:can't get parameter\n"},
  };
  vurn_set_log_mask(VURN_LOG_ERROR);
  for (auto& row : rows) {
    answers["d2 00 00"] = std::string("d2 00 00 ") + row.answer;
    world.log.clear();
    world.sleeps.clear();
    modem.payloads.clear();
    EXPECT_EQ(vurn_open(), VURN_ERR_FAILED);
    EXPECT_EQ(world.log_text(), row.line);
    EXPECT_EQ(polls(), row.polls);
    EXPECT_EQ(std::count(world.sleeps.begin(), world.sleeps.end(), Time(1s)),
              row.polls == 1 ? 0 : row.polls);
    EXPECT_FALSE(world.port_is_open());
  }
}

TEST_F(Lifecycle, versions_that_can_not_be_read_do_not_fail_the_open) {
  garble("cf 5d 00");
  garble("cf 48 00");
  vurn_set_log_mask(VURN_LOG_ERROR);
  EXPECT_EQ(vurn_open(), VURN_OK);
  EXPECT_EQ(world.log_text(),
            "E zop:get:param=fwvers,error=7,size=64,avail=64:can't get firmware version\n"
            "E zop:get:param=hwvers,error=7,size=64,avail=64:can't get hardware version\n");
  // The next open repeats a hardware read that failed.
  answers["cf 48 00"] = "cf 48 00 00 00 48 57";
  vurn_close(0);
  EXPECT_EQ(vurn_open(), VURN_OK);
  EXPECT_STREQ(gDiagInfo.hardware, "HW");
}

TEST_F(Lifecycle, debug_lines_tell_where_they_come_from) {
  vurn_set_log_mask(VURN_LOG_TRACE | VURN_LOG_GENERAL);
  ASSERT_EQ(vurn_open(), VURN_OK);
  const char* lines[] = {"D def:Enter \\(vurn_open:zop_module:\\d+\\)",
                         "D zop:opened successfully \\(\\w+:zop_module:\\d+\\)",
                         "D zop:getting SIM status \\(\\w+:zop_module:\\d+\\)",
                         "D zop:SIM status=2, lockStatus=1 retries=3 \\(\\w+:zop_module:\\d+\\)",
                         "D def:Return \\(vurn_open:zop_module:\\d+\\)"};
  auto logged = world.log.begin();  // there may be other lines in between
  for (const char* line : lines) {
    std::regex expected(line);
    logged = std::find_if(logged, world.log.end(),
                          [&](auto& l) { return std::regex_match(l.text, expected); });
    ASSERT_NE(logged, world.log.end()) << line << "\n" << world.log_text();
    EXPECT_EQ(logged->priority, 7);
  }
}

TEST_F(Lifecycle, nothing_is_logged_until_a_host_asks) {
  sim_answers("00", "00", "00");
  EXPECT_EQ(vurn_open(), VURN_ERR_FAILED);
  EXPECT_TRUE(world.log.empty());
}

TEST_F(Lifecycle, flags_and_kept_entry_points) {
  unsigned flags = 0;
  EXPECT_EQ(vurn_get_module_flags(&flags), VURN_OK);
  EXPECT_EQ(flags, 1u);
  EXPECT_EQ(vurn_try_to_use_home_network(), VURN_OK);
  vurn_set_log_mask(0x1234);
  EXPECT_EQ(gZOPModuleLogMask, 0x1234u);
  EXPECT_TRUE(world.written.empty());
}

TEST(MonotonicSeconds, are_0_without_a_clock) {
  World world;
  EXPECT_EQ(prv_get_monotonic_seconds(), 1000);
  world.clock_error = EINVAL;
  vurn_set_log_mask(VURN_LOG_ERROR);
  EXPECT_EQ(prv_get_monotonic_seconds(), 0);
  EXPECT_EQ(world.log_text(), "E zop:monotime:err=22:can't get monotonic time\n");
}
