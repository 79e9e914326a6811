// One verb of the command line: what it is called, what it takes, what it does. The row of a verb
// stands beside its function, in the source of its noun.
#pragma once

#include <vector>

#include "zopctl/host/session.h"
#include "zopctl/text/arguments.h"
#include "zopctl/text/output.h"

namespace zopctl {

struct Argument {
  const char* name;  // "ITEM", or "--pin" for an option
  const char* help;
  bool optional = false;  // a word that may be left out; an option always may
  std::vector<const char*> choices = {};
  bool flag = false;  // an option without a value
  const char* short_name = nullptr;
  bool list = false;  // several words

  bool is_option() const { return name[0] == '-'; }
  bool is_required() const { return !optional && !is_option(); }
};

struct Verb {
  const char* noun = nullptr;  // null for a verb of its own
  const char* name;
  const char* help;
  Session::Need need = Session::LINK;
  const char* danger = nullptr;  // what it can break; null when harmless
  bool events = false;           // --json prints events, the last of them "end"
  bool samples = false;          // prints samples until a signal ends it
  bool redacts = false;          // --redact means its own output too
  std::vector<Argument> arguments = {};
  void (*check)(const Arguments&) = nullptr;  // throws UsageError before the modem is asked
  Findings (*run)(const ModuleLibrary&, const Arguments&);  // empty when the verb has printed
};

using Verbs = std::vector<Verb>;

}  // namespace zopctl
