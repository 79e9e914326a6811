// Scenarios: what they set, when, and that a bad one is refused with its line.
#include "simulator/scenario.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "simulator/modem.h"

using namespace sim;
using namespace std::chrono_literals;

TEST(SimulatorScenario, sets_the_model_and_changes_it_in_time) {
  Scenario scenario = parse_scenario(R"(
title = "a test"
[radio]
rssi = -90
system_mode = "gsm"
[network]
name = "Test"
roaming = true
[[at]]
time = 9
network.roaming = false
[[at]]
time = 2.5
radio = { rssi = -97 }
hang_up = true
[[at]]
time = 4
replug = true
[[fault]]
switch = "silence:count=1"
)",
                                     "x");
  EXPECT_EQ(scenario.title, "a test");
  EXPECT_EQ(scenario.faults.size(), 1u);
  Modem modem(scenario);
  EXPECT_EQ(modem.model().radio.rssi, -90);
  EXPECT_EQ(modem.model().radio.system_mode, 3);
  EXPECT_EQ(modem.model().network.roaming, 1);
  EXPECT_EQ(modem.next_due(), Time(2500ms));
  EXPECT_FALSE(modem.take_output(2499ms));
  EXPECT_EQ(modem.take_output(2500ms)->kind, Output::HANGS_UP);
  EXPECT_EQ(modem.model().radio.rssi, -97);
  EXPECT_EQ(modem.take_output(10s)->kind, Output::COMES_BACK);
  EXPECT_EQ(modem.model().network.roaming, 0);
}

TEST(SimulatorScenario, the_clock_is_utc) {
  Scenario scenario = parse_scenario("[clock]\nstart = 2010-07-24T13:02:59Z\nzone = 4", "x");
  EXPECT_TRUE(scenario.clock_is_set);
  EXPECT_EQ(scenario.model.clock.start, 1279976579);
  EXPECT_EQ(scenario.model.clock.zone, 4);
}

TEST(SimulatorScenario, bad_ones_are_refused_with_their_line) {
  struct {
    const char* toml;
    const char* error;
  } rows[] = {
      {"[radio]\nrssi = 5", "x:2: radio.rssi takes -200 to 0"},
      {"[radio]\nrssi = \"loud\"", "x:2: radio.rssi: no word \"loud\"; it takes a number"},
      {"[radio]\nrssi = -7.5", "x:2: radio.rssi takes a whole number"},
      {"[radio]\nvolume = 5", "x:2: no setting \"radio.volume\""},
      {"[music]\nvolume = 5", "x:1: no section \"music\""},
      {"radio = 5", "x:1: \"radio\" is a table of settings"},
      {"[network]\nname = 5", "x:2: network.name takes a text in quotes"},
      {"[network]\n\nmcc = \"0011\"", "x:3: network.mcc takes up to 3 characters"},
      {"[identity]\nimei = \"0O1\"", "x:2: identity.imei takes digits"},
      {"[[at]]\nradio.rssi = -5", "x:1: an entry of the time line needs a time in seconds"},
      {"[[at]]\ntime = nan", "x:1: an entry of the time line needs a time in seconds"},
      {"[[fault]]\nswitch = \"silence:chance=7\"", "x:2: skip and count are not negative"},
      {"[[at]]\ntime = 1\nhang_up = 3", "x:3: hang_up takes true"},
      {"[[at]]\ntime = 1\nnoise = 3", "x:3: no \"noise\" in an entry of the time line"},
      {"[[fault]]\nswitch = \"rain\"", "x:2: no fault \"rain\"; there are silence"},
      {"[[fault]]\nswitch = \"cut=x\"", "x:2: cut: \"x\" is no number"},
      {"[[fault]]\nswitch = \"silence:request=foo\"", "x:2: no request \"foo\""},
      {"[clock]\nstart = 5", "x:2: clock.start takes a time like"},
      {"[radio\n", "x:1: Error"},
  };
  for (auto& row : rows) {
    try {
      parse_scenario(row.toml, "x");
      ADD_FAILURE() << "accepted: " << row.toml;
    } catch (const ScenarioError& error) {
      EXPECT_EQ(std::string(error.what()).substr(0, strlen(row.error)), row.error);
    }
  }
}

TEST(SimulatorScenario, shipped_ones_are_good_and_have_a_title) {
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(SCENARIOS)) {
    EXPECT_FALSE(load_scenario(entry.path()).title.empty()) << entry.path();
    ++count;
  }
  EXPECT_GE(count, 4);
}
