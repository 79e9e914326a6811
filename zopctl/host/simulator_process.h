// A simulated modem of zopctl's own: a process that lives no longer than this object.
#pragma once

#include <sys/types.h>

#include <string>

namespace zopctl {

class SimulatorProcess {
 public:
  // What it simulates: a scenario (empty: its default), at the device node link, with a clock that
  // runs speed times as fast.
  struct Setting {
    std::string scenario;
    std::string link;
    double speed;
  };
  // Starts zop-modem-sim. Throws Failure with its own words.
  explicit SimulatorProcess(const Setting& setting);
  ~SimulatorProcess();
  SimulatorProcess(const SimulatorProcess&) = delete;
  SimulatorProcess& operator=(const SimulatorProcess&) = delete;

 private:
  int end();  // its exit code, -1 when a signal ended it
  pid_t pid_ = -1;
};

}  // namespace zopctl
