// The --watch of several verbs: a sample every few seconds, each printed as a line.
#pragma once

#include <functional>
#include <nlohmann/json.hpp>
#include <string>

#include "zopctl/host/module_library.h"
#include "zopctl/host/verb.h"
#include "zopctl/text/arguments.h"
#include "zopctl/text/output.h"

namespace zopctl {

struct WatchSample {
  nlohmann::ordered_json values;  // for programs, an object
  std::string line;               // for people
  bool is_lost;                   // the modem was unplugged or has hung up
};

// Samples until a signal ends it, and reopens a lost modem; --watch has the seconds between.
[[noreturn]] void watch(const Arguments& arguments, const std::function<WatchSample()>& sample,
                        const std::function<void()>& reopen);

// The same for a verb that uses only the link.
[[noreturn]] void watch_findings(const ModuleLibrary& module, const Arguments& arguments,
                                 Findings (*run)(const ModuleLibrary&));

inline Argument watch_argument() {
  return {
      .name = "--watch", .help = "print a line every so many seconds", .range = Range{1, 86400}};
}

}  // namespace zopctl
