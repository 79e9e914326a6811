// Takes samples of an open modem, and opens it again after it was away.
#pragma once

#include <mutex>

#include "zopctl/host/log_capture.h"
#include "zopctl/live/sample.h"

namespace zopctl {

// Events and the state of the deferred-action thread, from the module's log.
class ModuleWatch {
 public:
  ModuleWatch(const ModuleLibrary& module, bool lines_go_on);

  std::vector<std::string> take_events();
  std::string deferred() const;

 private:
  void take(const std::string& line);

  mutable std::mutex mutex_;  // the module's threads log too
  std::vector<std::string> events_;
  std::string deferred_ = "idle";
  LogTap log_;  // ends first
};

class Sampler {
 public:
  Sampler(const ModuleLibrary& module, bool log_lines_go_on)
      : module_(module), watch_(module, log_lines_go_on) {}

  // Takes as long as the modem to answer; some seconds when it is silent or must be opened.
  Sample take();

 private:
  void reopen(Sample& sample);
  void add_changes(Sample& sample);

  const ModuleLibrary& module_;
  ModuleWatch watch_;
  Sample last_;  // with the last report
  bool was_open_ = true;
};

}  // namespace zopctl
