// A simulated modem: a process that ends with this object.
#pragma once

#include <sys/types.h>

#include <string>

namespace zopctl {

class SimulatorProcess {
 public:
  // The scenario (empty: the default), the device node to make, and the speed of the clock.
  struct Setting {
    std::string scenario;
    std::string link;
    double speed;
  };
  // Starts zop-modem-sim. Throws Failure.
  explicit SimulatorProcess(const Setting& setting);
  ~SimulatorProcess();
  SimulatorProcess(const SimulatorProcess&) = delete;
  SimulatorProcess& operator=(const SimulatorProcess&) = delete;

 private:
  int end();  // returns its exit code, -1 after a signal
  pid_t pid_ = -1;
};

}  // namespace zopctl
