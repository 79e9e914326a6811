// The module's log lines of one call, for a verb that wants to know what the result does not say.
#pragma once

#include <string>

#include "zopctl/host_calls.h"
#include "zopctl/module_library.h"

namespace zopctl {

class LogCapture {
 public:
  LogCapture(const ModuleLibrary& module, unsigned bits)
      : module_(module), mask_(*module.gZOPModuleLogMask), before_(current_log()) {
    module.vurn_set_log_mask(mask_ | bits);
    catch_log([this](int priority, const std::string& line) {
      text_ += line + "\n";
      if (before_) before_(priority, line);
    });
  }
  ~LogCapture() {
    catch_log(before_);
    module_.vurn_set_log_mask(mask_);
  }
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  const std::string& text() const { return text_; }
  bool has(const std::string& part) const { return text_.find(part) != std::string::npos; }

 private:
  const ModuleLibrary& module_;
  unsigned mask_;
  LogSink before_;
  std::string text_;
};

}  // namespace zopctl
