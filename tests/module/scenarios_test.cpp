// The shipped scenarios as a host sees them, in virtual time.
#include "simulator/scenario/scenario.h"
#include "tests/module/module_fixture.h"
#include "tests/support/simulated_far_end.h"

using namespace std::chrono_literals;
using namespace test;

namespace {
// What a host sees at one moment.
struct Seen {
  int opened, bars_result, bars, roaming, mode, time_result;
};
}  // namespace

class Scenarios : public ModuleTest {
 protected:
  void start(const std::string& name) {
    vurn_close(0);
    far_end = std::make_unique<SimulatedFarEnd>(sim::load_scenario(SCENARIOS "/" + name + ".toml"),
                                                world.now());
    started = world.now();
    world.far_end = far_end.get();
  }
  Seen look() {
    Seen seen{};
    seen.opened = vurn_update_prl();
    seen.bars_result = vurn_get_bars(&seen.bars);
    vurn_get_roaming_status(&seen.roaming);
    vurn_get_data_service_mode(&seen.mode);
    time_t when;
    int offset;
    seen.time_result = vurn_get_module_time(&when, &offset);
    return seen;
  }
  std::unique_ptr<SimulatedFarEnd> far_end;
  Time started{0};
};

TEST_F(Scenarios, show_a_host_what_they_promise) {
  enum { FAILED = VURN_ERR_FAILED, NO_TIME = VURN_ERR_TIME_NOT_PROVIDED };
  struct {
    const char* name;
    Time after;
    Seen seen;
  } rows[] = {
      {"healthy-wcdma", 0s, {0, 0, 5, 0, VURN_DATA_WCDMA, 0}},
      {"healthy-gsm", 0s, {0, 0, 4, 0, VURN_DATA_EDGE, 0}},
      {"weak-signal", 0s, {0, 0, 1, 0, VURN_DATA_WCDMA, 0}},
      {"roaming", 0s, {0, 0, 5, 1, VURN_DATA_WCDMA, 0}},
      {"limited-service", 0s, {0, 0, -1, 0, VURN_DATA_WCDMA, 0}},
      {"no-network-time", 0s, {0, 0, 5, 0, VURN_DATA_WCDMA, NO_TIME}},
      {"illegal-network-reject", 60s, {0, 0, -1, 0, VURN_DATA_WCDMA, 0}},
      {"illegal-network-reject", 61s, {0, FAILED, 0, 0, VURN_DATA_WCDMA, 0}},
      {"pdp-without-call", 5s, {0, 0, 5, 0, VURN_DATA_WCDMA, 0}},
      {"pdp-without-call", 6s, {0, FAILED, 0, 0, VURN_DATA_WCDMA, 0}},
      {"pdp-without-call", 31s, {0, 0, 5, 0, VURN_DATA_WCDMA, 0}},
      {"all-networks-forbidden", 300s, {0, 0, -1, 0, VURN_DATA_WCDMA, 0}},
      {"all-networks-forbidden", 302s, {0, FAILED, 0, 0, VURN_DATA_WCDMA, 0}},
      {"fading", 11s, {0, 0, 1, 0, VURN_DATA_WCDMA, 0}},
      {"fading", 16s, {0, 0, -1, 0, VURN_DATA_WCDMA, 0}},
      {"fading", 31s, {0, 0, 5, 0, VURN_DATA_WCDMA, 0}},
      {"sim-slow", 0s, {0, 0, 5, 0, VURN_DATA_WCDMA, 0}},
  };
  for (auto& row : rows) {
    SCOPED_TRACE(row.name);
    start(row.name);
    ASSERT_EQ(vurn_open(), VURN_OK);
    int bars;
    vurn_get_bars(&bars);  // the detectors count from the first poll
    world.advance(row.after);
    Seen seen = look();
    EXPECT_EQ(seen.opened, row.seen.opened);
    EXPECT_EQ(seen.bars_result, row.seen.bars_result);
    EXPECT_EQ(seen.bars, row.seen.bars);
    EXPECT_EQ(seen.roaming, row.seen.roaming);
    EXPECT_EQ(seen.mode, row.seen.mode);
    EXPECT_EQ(seen.time_result, row.seen.time_result);
  }
}

TEST_F(Scenarios, cards_that_are_not_ready) {
  start("sim-slow");
  EXPECT_EQ(vurn_open(), VURN_OK);
  EXPECT_GE(world.now() - started, Time(8s));
  for (const char* name : {"sim-pin-locked", "no-sim"}) {
    start(name);
    EXPECT_EQ(vurn_open(), VURN_ERR_FAILED) << name;
    EXPECT_LT(world.now() - started, Time(1s)) << name;
  }
  start("sim-pin-locked");
  ASSERT_EQ(zop_open(DEVICE), 0u);
  uint32_t refused = 1;
  EXPECT_EQ(zop_simcard_verify(reinterpret_cast<const uint8_t*>("1234\0\0\0"), 4, &refused), 0u);
  EXPECT_EQ(refused, 0u);
  zop_close();
  EXPECT_EQ(vurn_open(), VURN_OK);
}

// While field testing is on, the listener logs the modem's events.
TEST_F(Scenarios, events_reach_a_listening_host) {
  start("data-session");
  ASSERT_EQ(vurn_open(), VURN_OK);
  vurn_set_log_mask(VURN_LOG_EVENTS);
  char text[8192];
  for (int second = 0; second < 40; second += 4) {
    vurn_get_log_string(text, sizeof text);
    world.advance(4s);
  }
  std::string log = log_lines();
  size_t at = 0;
  for (const char* line :
       {"D zop:PDP Activate callback called\n", "D zop:PDP Address=10.64.64.64\n",
        "D zop:Call originate callback called\n", "D zop:Call end callback called\n",
        "D zop:PDP Deactivate callback called\n"}) {
    at = log.find(line, at);
    ASSERT_NE(at, std::string::npos) << line << log;
  }
  EXPECT_EQ(log.find("callback called", log.find("Deactivate") + 20), std::string::npos);
}
