// Every verb of zopctl. One table serves the command line, --help, the completion and the man page.
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
