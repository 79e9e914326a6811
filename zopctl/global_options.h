// The options of all verbs, for the manual page and the completions.
#pragma once

#include <vector>

#include "zopctl/host/verb.h"

namespace zopctl {

struct GlobalOption {
  const char* name;
  const char* value;  // null for a flag
  const char* help;
  std::vector<Choice> choices = {};
};

extern const std::vector<GlobalOption> GLOBAL_OPTIONS;

}  // namespace zopctl
