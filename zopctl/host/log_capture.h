// The module's log lines of one call, for a verb that wants to know what the result does not say.
#pragma once

#include <mutex>
#include <string>

#include "zopctl/host/host_calls.h"
#include "zopctl/host/module_library.h"

namespace zopctl {

class LogCapture {
 public:
  LogCapture(const ModuleLibrary& module, unsigned bits)
      : module_(module), mask_(*module.gZOPModuleLogMask), before_(current_log()) {
    module.vurn_set_log_mask(mask_ | bits);
    catch_log([this](int priority, const std::string& line) {
      {
        std::lock_guard lock(mutex_);
        text_ += line;
        text_ += '\n';
      }
      if (before_) before_(priority, line);
    });
  }
  ~LogCapture() {
    catch_log(before_);
    module_.vurn_set_log_mask(mask_);
  }
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  // So far; the module's threads may add to it.
  std::string text() const {
    std::lock_guard lock(mutex_);
    return text_;
  }
  bool has(const std::string& part) const { return text().find(part) != std::string::npos; }

 private:
  const ModuleLibrary& module_;
  unsigned mask_;
  LogSink before_;
  mutable std::mutex mutex_;
  std::string text_;
};

}  // namespace zopctl
