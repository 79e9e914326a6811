// The verbs of zopctl: what each is called, what it takes, what it does. One table serves the
// command line, --help, the completion and the man page.
#pragma once

#include <vector>

#include "zopctl/host/session.h"
#include "zopctl/text/arguments.h"
#include "zopctl/text/output.h"

namespace zopctl {

struct Argument {
  const char* name;  // "ITEM", or "--pin" for an option
  const char* help;
  bool required = true;
  std::vector<const char*> choices = {};
  bool flag = false;  // an option without a value
  const char* short_name = nullptr;
  bool list = false;  // several words
};

struct Verb {
  const char* noun;  // null for a verb of its own
  const char* name;
  const char* help;
  Session::Need need;
  const char* danger;  // what it can break; null when harmless
  std::vector<Argument> arguments;
  Findings (*run)(const ModuleLibrary&, const Arguments&);  // nothing: it has printed by itself
};

struct Noun {
  const char* name;
  const char* help;
};

const std::vector<Noun>& nouns();
const std::vector<Verb>& verbs();

}  // namespace zopctl
