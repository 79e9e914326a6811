// All verbs. The command line, --help, completion and manual page share this table.
#pragma once

#include "zopctl/host/verb.h"

namespace zopctl {

struct Noun {
  const char* name;
  const char* help;
};

const std::vector<Noun>& nouns();
const Verbs& verbs();

}  // namespace zopctl
