// The module's log, for a verb that needs more than a result.
#pragma once

#include <functional>
#include <mutex>
#include <string>

#include "zopctl/host/host_calls.h"
#include "zopctl/host/module_library.h"

namespace zopctl {

// While it exists, more of the log is on and take gets each line, on any thread. With lines_go_on
// the lines also go where they went before.
class LogTap {
 public:
  using Take = std::function<void(const std::string& line)>;
  LogTap(const ModuleLibrary& module, unsigned bits, Take take, bool lines_go_on = true)
      : module_(module), mask_(*module.gZOPModuleLogMask), before_(current_log()) {
    module.vurn_set_log_mask(mask_ | bits);
    LogSink before = lines_go_on ? before_ : nullptr;
    catch_log([take = std::move(take), before](int priority, const std::string& line) {
      take(line);
      if (before) before(priority, line);
    });
  }
  ~LogTap() {
    catch_log(before_);
    module_.vurn_set_log_mask(mask_);
  }
  LogTap(const LogTap&) = delete;
  LogTap& operator=(const LogTap&) = delete;

 private:
  const ModuleLibrary& module_;
  unsigned mask_;
  LogSink before_;
};

// The lines of one call, kept.
class LogCapture {
 public:
  LogCapture(const ModuleLibrary& module, unsigned bits)
      : tap_(module, bits, [this](const std::string& line) {
          std::lock_guard lock(mutex_);
          text_ += line;
          text_ += '\n';
        }) {}

  // So far; the module's threads may add to it.
  std::string text() const {
    std::lock_guard lock(mutex_);
    return text_;
  }
  bool has(const std::string& part) const { return text().find(part) != std::string::npos; }

 private:
  mutable std::mutex mutex_;
  std::string text_;
  LogTap tap_;  // ends first
};

}  // namespace zopctl
