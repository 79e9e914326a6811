// A simulated modem of zopctl's own: a process that lives no longer than this object.
#pragma once

#include <sys/types.h>

#include <string>

namespace zopctl {

class SimulatorProcess {
 public:
  // Starts zop-modem-sim with a scenario (empty: its default). Throws Failure with its own words.
  explicit SimulatorProcess(const std::string& scenario);
  ~SimulatorProcess();
  SimulatorProcess(const SimulatorProcess&) = delete;
  SimulatorProcess& operator=(const SimulatorProcess&) = delete;

  const std::string& terminal() const { return terminal_; }

 private:
  int end();  // its exit code, -1 when a signal ended it
  pid_t pid_ = -1;
  std::string terminal_;
};

}  // namespace zopctl
