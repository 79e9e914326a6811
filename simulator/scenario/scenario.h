// A scenario: the modem's state at the start, and how it changes over time.
//
// TOML. Tables set the state; each [[at]] entry changes it later, or unplugs or replugs the device;
// each [[fault]] is a fault switch in its textual form:
//
//   [radio]
//   rssi = -75
//   [[at]]
//   time = 5.0          # seconds since the modem was started
//   radio.rssi = -97
//   event = "pdp-activated"   # or pdp-deactivated, call-originated, call-ended
//   [[fault]]
//   switch = "silence:request=rssi,count=1"
#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "simulator/scenario/faults.h"
#include "simulator/model/model.h"

namespace sim {

// One entry of the time line.
struct TimelineEntry {
  enum Line { STAYS, HANGS_UP, COMES_BACK };
  Time at{0};
  std::vector<std::function<void(Model&)>> changes;
  Line line = STAYS;
};

struct Scenario {
  std::string title;
  Model model;
  bool clock_is_set = false;            // by the scenario; otherwise it starts at the present time
  std::vector<TimelineEntry> timeline;  // in order of time
  std::vector<Fault> faults;
};

// What is wrong with a scenario, as "FILE:LINE: reason".
struct ScenarioError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Both throw ScenarioError; name is the file's in its message.
Scenario parse_scenario(const std::string& toml, const std::string& name);
Scenario load_scenario(const std::string& path);

}  // namespace sim
