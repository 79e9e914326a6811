// A week of a device in virtual time: what the module has counted and logged at its end is what the
// modem and the platform did to it.
#include <algorithm>

#include "simulator/scenario/scenario.h"
#include "tests/module/host_event.h"
#include "tests/module/module_fixture.h"
#include "tests/support/simulated_far_end.h"

using namespace std::chrono_literals;
using namespace test;

enum { HOURS = 7 * 24, DATA_ACTIVE = 2 };

class Week : public ModuleTest {
 protected:
  void SetUp() override {
    ModuleTest::SetUp();
    world.keeps_history = false;
    file = testing::TempDir() + "mcc-of-the-week";
    unlink(file.c_str());
    world.files["/var/local/wan/mcc"] = file;
    far_end =
        std::make_unique<SimulatedFarEnd>(scenario(), Time{0}, [this](const std::string& line) {
          if (line.find("> screen") != std::string::npos) ++screens_asked;
        });
    world.far_end = far_end.get();
    vurn_set_log_mask(VURN_LOG_FIELD_INFORMATION | VURN_LOG_EVENTS | VURN_LOG_STUCK |
                      VURN_LOG_INFO);
  }
  void TearDown() override {
    ModuleTest::TearDown();
    unlink(file.c_str());
  }

  // The device goes away once a day, for ten seconds.
  sim::Scenario scenario() {
    sim::Scenario week;
    for (int day = 0; day < 7; ++day) {
      auto at = std::chrono::hours(24 * day + 3) + 30min;
      week.timeline.push_back({at, {}, sim::TimelineEntry::HANGS_UP});
      week.timeline.push_back({at + 10s, {}, sim::TimelineEntry::COMES_BACK});
      ++hang_ups;
    }
    return week;
  }
  sim::Model& model() { return far_end->modem.model(); }
  void wait_until(Time moment) {
    if (moment > world.now()) world.advance(moment - world.now());
  }
  int count(const std::string& text) const {
    return static_cast<int>(std::ranges::count_if(
        world.log, [&](const LogLine& line) { return line.text.find(text) != std::string::npos; }));
  }
  // Reports in the log: each has a stamp of its own.
  size_t reports() const {
    std::set<std::string> stamps;
    for (const LogLine& line : world.log) {
      if (line.text.starts_with("I zop:diag: t=")) stamps.insert(line.text.substr(14, 8));
    }
    return stamps.size();
  }

  void open() {
    ASSERT_EQ(vurn_open(), VURN_OK);
    ++opens;
    world.advance(20s);  // its snapshot
  }
  void poll() {
    int value = 0;
    if (vurn_get_rssi(&value) == VURN_ERR_FAILED) {
      ++losses;
      vurn_close(0);
      open();
    }
    EXPECT_EQ(vurn_get_rssi(&value), VURN_OK);
    EXPECT_EQ(value, model().radio.rssi);
    EXPECT_EQ(vurn_get_mcc(&value), VURN_OK);
    EXPECT_EQ(value, std::stoi(model().network.mcc));
  }
  void ring(int origin) {
    NubiEvent event{"com.orvane.hal", "wanRing", origin};
    vurn_report_event(&event);
    ++rings[std::min(origin, 5)];
  }
  void change_country(int hour) {
    static const char* const countries[] = {"310", "901", "262"};
    std::string country = countries[hour / 5 % 3];
    if (country != model().network.mcc) ++countries_seen;
    model().network.mcc = country;
  }
  // Data without a call, for a minute, which a look every two seconds finds stuck after five.
  void get_stuck() {
    int bars = 0;
    model().state.pdp = DATA_ACTIVE;
    for (int look = 0; look < 30; ++look) {
      if (vurn_get_bars(&bars) == VURN_ERR_FAILED) ++stuck_looks;
      world.advance(2s);
    }
    model().state.pdp = 0;
    EXPECT_EQ(vurn_get_bars(&bars), VURN_OK);
    EXPECT_EQ(bars, 5);
  }
  // A reader's report keeps the listener on, which fetches the event.
  void activate_data() {
    char text[8192];
    EXPECT_EQ(vurn_get_log_string(text, sizeof text), VURN_OK);
    model().device.events |= sim::EVENT_ACTIVATED;
    ++activations;
    world.advance(30s);
  }
  void report_exception() {
    static const char* names[] = {"no carrier"};
    EXPECT_EQ(vurn_log_message(0, names), VURN_OK);
    ++exceptions;
    world.advance(30s);
  }
  void take_snapshot() {
    EXPECT_EQ(vurn_enable_logging(1), VURN_OK);
    ++snapshots;
    world.advance(30s);
  }

  std::string file;
  std::unique_ptr<SimulatedFarEnd> far_end;
  int hang_ups = 0, losses = 0, opens = 0, countries_seen = 0, stuck_looks = 0;
  int activations = 0, exceptions = 0, snapshots = 0, screens_asked = 0;
  unsigned rings[6] = {};
};

TEST_F(Week, is_counted_as_it_was) {
  model().network.mcc = "001";
  int value;
  open();
  EXPECT_EQ(vurn_get_mcc(&value), VURN_OK);  // the first country is a change as well
  countries_seen = 1;
  for (int hour = 1; hour < HOURS; ++hour) {
    wait_until(std::chrono::hours(hour));
    poll();
    ring(hour % 8);
    if (hour % 5 == 0) change_country(hour);
    if (hour % 7 == 0) get_stuck();
    if (hour % 3 == 0) activate_data();
    if (hour % 11 == 0) report_exception();
    if (hour % 13 == 0) take_snapshot();
    poll();
  }
  EXPECT_EQ(losses, hang_ups);
  EXPECT_EQ(opens, hang_ups + 1);
  for (int origin = 0; origin < 6; ++origin) {
    EXPECT_EQ(gDiagInfo.ring_counts[origin], rings[origin]) << origin;
  }
  EXPECT_EQ(count("I zop:mccchanged:"), countries_seen);
  EXPECT_EQ(count("D zop:PDP Activate callback called"), activations);
  EXPECT_EQ(count("Modem got stuck in PDP active no PPP state"), stuck_looks);
  EXPECT_GT(stuck_looks, 20 * (HOURS / 7 - 1));
  // A report that a host reads goes to the log as well.
  EXPECT_EQ(reports(), static_cast<size_t>(5 * exceptions + snapshots + opens + activations));
  // The bars are read from a screen too.
  EXPECT_EQ(count("D zop:field information callback called") + count("D zop:bars="), screens_asked);
}
