// zopctl sim: the card and its PIN. Codes come from an option, from a prompt without echo or from
// standard input; they are never shown.
#include <termios.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>

#include "zopctl/host/refusals.h"
#include "zopctl/host/signals.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/words.h"
#include "zopctl/verbs/verbs.h"

namespace zopctl {

static std::string prompt_without_echo(const std::string& what) {
  termios before;
  tcgetattr(STDIN_FILENO, &before);
  termios quiet = before;
  quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
  fprintf(stderr, "%s: ", what.c_str());
  tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet);
  std::string code;
  std::getline(std::cin, code);
  tcsetattr(STDIN_FILENO, TCSAFLUSH, &before);
  fputc('\n', stderr);
  return code;
}

namespace {
// 4 to 8 digits, padded with zero bytes to the 8 bytes that the card expects.
struct Code {
  uint8_t bytes[ZOP_PIN_SIZE] = {};
  uint32_t length = 0;
};
}  // namespace

static Code code_of(const Arguments& arguments, const std::string& option, const char* what) {
  std::string text;
  if (arguments.has(option)) {
    text = arguments.text(option);
  } else if (isatty(STDIN_FILENO) != 0) {
    text = prompt_without_echo(what);
  } else {
    std::getline(std::cin, text);
  }
  check_signals();
  bool digits = text.find_first_not_of("0123456789") == std::string::npos;
  if (!digits || text.size() < 4 || text.size() > ZOP_PIN_SIZE) {
    throw UsageError(std::string(what) + " must have 4 to 8 digits");
  }
  Code code;
  code.length = static_cast<uint32_t>(text.size());
  for (size_t i = 0; i < text.size(); ++i) code.bytes[i] = static_cast<uint8_t>(text[i]);
  return code;
}

static std::vector<Item> card_state(const ModuleLibrary& m) {
  uint32_t status = 0, lock = 0, retries = 0;
  require(m.zop_simcard_status(&status, &lock, &retries), "SIM status");
  return {coded("status", "Status", status, sim_status(status)),
          coded("lock", "PIN", lock, lock_status(lock)),
          shown("pin_retries", "PIN tries left", retries, std::to_string(retries))};
}

// Whether the card accepted the code, and its state now.
static Findings outcome(const ModuleLibrary& m, uint32_t refused) {
  std::vector<Item> items = card_state(m);
  Item result = yes_or_no("accepted", "Accepted", refused == 0);
  if (refused != 0) result.shown = "no, the card refused it; " + items.back().shown + " tries left";
  result.failed = refused != 0;
  items.insert(items.begin(), result);
  return one_section("sim", "SIM", items);
}

static Findings status(const ModuleLibrary& m, const Arguments&) {
  return one_section("sim", "SIM", card_state(m));
}

using OneCode = unsigned (*)(const uint8_t*, uint32_t, uint32_t*);
using TwoCodes = unsigned (*)(const uint8_t*, uint32_t, const uint8_t*, uint32_t, uint32_t*);

static Findings with_pin(const ModuleLibrary& m, const Arguments& arguments, OneCode operate,
                         const char* what) {
  Code pin = code_of(arguments, "--pin", "PIN");
  uint32_t refused = 0;
  require(operate(pin.bytes, pin.length, &refused), what);
  return outcome(m, refused);
}

static Findings with_new_pin(const ModuleLibrary& m, const Code& old_code,
                             const Arguments& arguments, TwoCodes operate, const char* what) {
  Code pin = code_of(arguments, "--new-pin", "new PIN");
  uint32_t refused = 0;
  require(operate(old_code.bytes, old_code.length, pin.bytes, pin.length, &refused), what);
  return outcome(m, refused);
}

static Findings verify(const ModuleLibrary& m, const Arguments& arguments) {
  return with_pin(m, arguments, m.zop_simcard_verify, "verify");
}

static Findings enable(const ModuleLibrary& m, const Arguments& arguments) {
  return with_pin(m, arguments, m.zop_simcard_enable, "enable");
}

static Findings disable(const ModuleLibrary& m, const Arguments& arguments) {
  return with_pin(m, arguments, m.zop_simcard_disable, "disable");
}

static Findings change(const ModuleLibrary& m, const Arguments& arguments) {
  Code old_pin = code_of(arguments, "--pin", "old PIN");
  return with_new_pin(m, old_pin, arguments, m.zop_simcard_change, "change");
}

static Findings unblock(const ModuleLibrary& m, const Arguments& arguments) {
  Code key = code_of(arguments, "--key", "unblocking key");
  return with_new_pin(m, key, arguments, m.zop_simcard_unblock, "unblock");
}

static const Argument PIN = {.name = "--pin", .help = "the PIN; asked for if not given"};
static const Argument OLD_PIN = {.name = "--pin", .help = "the old PIN; asked for if not given"};
static const Argument NEW_PIN = {.name = "--new-pin",
                                 .help = "the new PIN; asked for if not given"};
static const Argument KEY = {.name = "--key", .help = "the unblocking key; asked for if not given"};

const Verbs SIM_VERBS = {
    {.noun = "sim", .name = "status", .help = "card, lock and tries left", .run = status},
    {.noun = "sim", .name = "verify", .help = "enter the PIN", .arguments = {PIN}, .run = verify},
    {.noun = "sim", .name = "enable", .help = "enable the PIN", .arguments = {PIN}, .run = enable},
    {.noun = "sim",
     .name = "disable",
     .help = "disable the PIN",
     .arguments = {PIN},
     .run = disable},
    {.noun = "sim",
     .name = "change",
     .help = "change the PIN",
     .arguments = {OLD_PIN, NEW_PIN},
     .run = change},
    {.noun = "sim",
     .name = "unblock",
     .help = "replace a blocked PIN, with the unblocking key",
     .arguments = {KEY, NEW_PIN},
     .run = unblock},
};

}  // namespace zopctl
