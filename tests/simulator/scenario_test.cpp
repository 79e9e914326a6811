// Scenarios: what they set, when, and that a bad one is refused with its line.
#include "simulator/scenario/scenario.h"

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
[clock]
start = 2010-07-24T13:02:59Z
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
  EXPECT_TRUE(scenario.clock_is_set);
  EXPECT_EQ(scenario.model.clock.start, 1279976579);
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

TEST(SimulatorScenario, bad_ones_are_refused_with_their_line) {
  struct {
    const char* toml;
    const char* error;
  } rows[] = {
      {"[radio]\nrssi = 5", "x:2: radio.rssi takes -200 to 0"},
      {"[radio]\nrssi = \"loud\"", "x:2: radio.rssi: unknown word \"loud\"; it takes a number"},
      {"[radio]\nrssi = -7.5", "x:2: radio.rssi takes a whole number"},
      {"[radio]\nvolume = 5", "x:2: unknown setting \"radio.volume\""},
      {"[music]\nvolume = 5", "x:1: unknown section \"music\""},
      {"radio = 5", "x:1: \"radio\" is a table of settings"},
      {"[network]\nname = 5", "x:2: network.name takes a text in quotes"},
      {"[network]\n\nmcc = \"0011\"", "x:3: network.mcc takes up to 3 characters"},
      {"[identity]\nimei = \"0O1\"", "x:2: identity.imei takes digits"},
      {"[[at]]\nradio.rssi = -5", "x:1: a time line entry needs a time in seconds"},
      {"[[at]]\ntime = nan", "x:1: a time line entry needs a time in seconds"},
      {"[[fault]]\nswitch = \"silence:chance=7\"",
       "x:2: at, back, skip and count can't be negative"},
      {"[[at]]\ntime = 1\nhang_up = 3", "x:3: hang_up takes true"},
      {"[[at]]\ntime = 1\nnoise = 3", "x:3: unknown key \"noise\" in a time line entry"},
      {"[[fault]]\nswitch = \"rain\"", "x:2: unknown fault \"rain\"; known are silence"},
      {"[[fault]]\nswitch = \"cut=x\"", "x:2: cut: \"x\" is not a number"},
      {"[[fault]]\nswitch = \"silence:request=foo\"", "x:2: unknown request \"foo\""},
      {"[clock]\nstart = 5", "x:2: clock.start takes a time like"},
      {"[radio\n", "x:1: Error"},
      {"[[at]]\ntime = 1\nevent = \"ring\"", "x:3: event takes one of call-originated, "},
      {"[radio]\ncells = 5", "x:2: radio.cells takes a list in [ ]"},
      {"[radio]\ncells = [{code = 1}]", "x:2: radio.cells entries are { set, code, ecio }"},
      {"[radio]\ncells = [{set = 1, code = 512, ecio = 0}]",
       "x:2: radio.cells.code takes 0 to 511"},
      {"[sim]\nhome = [\"31-410\"]", "x:2: sim.home: \"31-410\" is not a PLMN"},
      {"[sim]\nhome = [\"310-410 lte\"]", "x:2: sim.home: \"310-410 lte\" is not a PLMN"},
      {"[nv]\n10 = \"0\"", "x:2: nv.10: takes up to 128 bytes"},
      {"[device]\nmemory = [{name = \"a\", length = 268435456}, {name = \"b\", length = 1}]",
       "x:2: device.memory.length takes 0 to 0"},
      {"[nv]\nten = \"00\"", "x:2: unknown setting \"nv.ten\""},
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

TEST(SimulatorScenario, lists_are_read_at_the_start_and_in_the_time_line) {
  Scenario read = parse_scenario(
      "[radio]\ncells = [{set = \"active\", code = 9, ecio = -4}]\n"
      "neighbors = [{rssi = -70, arfcn = 661, bsic = 12}]\n"
      "best = [{first = 1, second = 2, cell_id = 3, channel = 4}]\n"
      "[sim]\noperators = [\"310-410 gsm\", \"001-01\"]\n[nv]\n10 = \"00 fF\"\n"
      "[[at]]\ntime = 1\nradio.cells = []\nsim.forbidden = [\"262-03\"]\n",
      "x");
  const Model& start = read.model;
  ASSERT_EQ(start.radio.cells.size(), 1u);
  EXPECT_EQ(start.radio.cells[0].code, 9);
  EXPECT_EQ(start.radio.neighbors.at(0).arfcn, 661);
  EXPECT_EQ(start.radio.best.at(0).channel, 4);
  ASSERT_EQ(start.sim.operators.size(), 2u);
  EXPECT_EQ(start.sim.operators[0].mnc, "410");
  EXPECT_EQ(start.sim.operators[0].technology_2, 128);
  EXPECT_EQ(start.sim.operators[1].technology_1, 128);
  EXPECT_EQ(start.nv.at(10), (Bytes{0x00, 0xFF}));
  Model later = start;
  for (auto& change : read.timeline.at(0).changes) change(later);
  EXPECT_TRUE(later.radio.cells.empty());
  EXPECT_EQ(later.sim.forbidden.at(0).mcc, "262");
}

TEST(SimulatorScenario, shipped_ones_are_good_and_have_a_title) {
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(SCENARIOS)) {
    EXPECT_FALSE(load_scenario(entry.path()).title.empty()) << entry.path();
    ++count;
  }
  EXPECT_GE(count, 4);
}
