// The options of all verbs, for the manual page and the completions.
#pragma once

#include <vector>

namespace zopctl {

struct GlobalOption {
  const char* name;
  const char* value;  // null for a flag
  const char* help;
  std::vector<const char*> choices = {};
};

extern const std::vector<GlobalOption> GLOBAL_OPTIONS;

}  // namespace zopctl
