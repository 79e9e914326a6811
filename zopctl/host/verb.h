// One verb of the command line: what it is called, what it takes, what it does. The row of a verb
// stands beside its function, in the source of its noun.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "zopctl/host/session.h"
#include "zopctl/text/arguments.h"
#include "zopctl/text/output.h"

namespace zopctl {

// A word that an argument may be.
struct Choice {
  Choice(const char* its_word, std::string its_meaning = "")
      : word(its_word), meaning(std::move(its_meaning)) {}
  std::string word;
  std::string meaning;  // empty when the word says it
};

struct Range {
  uint32_t first, last;
};

// With neither choices nor a range it may be anything that the verb's check lets through.
struct Argument {
  const char* name;  // "ITEM", or "--pin" for an option
  const char* help;
  bool optional = false;  // a word that may be left out; an option always may
  std::vector<Choice> choices = {};
  std::optional<Range> range = {};  // numbers, which it may be besides the choices
  bool flag = false;                // an option without a value
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
  // Of what its arguments' choices and ranges can't say. Throws UsageError.
  void (*check)(const Arguments&) = nullptr;
  // Completes the arguments, before the modem is opened: asks for codes, reads them from a file.
  void (*ask)(Arguments&) = nullptr;
  // One of these. Findings are empty when the verb has printed; alone it needs no module either.
  Findings (*run)(const ModuleLibrary&, const Arguments&) = nullptr;
  Findings (*run_alone)(const Arguments&) = nullptr;
};

using Verbs = std::vector<Verb>;

// "on or off", "0 to 255", with meanings "43 (GSM 850) or 44 (EGSM 900)"; empty: anything.
std::string values_of(const Argument& argument);
std::string values_with_meanings(const Argument& argument);

// Before the modem is asked. Throws UsageError.
void check_arguments(const Verb& verb, const Arguments& arguments);

}  // namespace zopctl
