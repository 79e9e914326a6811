// zopctl sim: the card and its PIN. Codes come from an option, a file, a prompt without echo or
// standard input; they are never shown.
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>

#include "zopctl/host/refusals.h"
#include "zopctl/host/hidden_input.h"
#include "zopctl/host/signals.h"
#include "zopctl/text/counted.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/words.h"
#include "zopctl/verbs/verbs.h"

namespace zopctl {

namespace {
// 4 to 8 digits, padded with zero bytes to the 8 bytes that the card expects.
struct Code {
  uint8_t bytes[ZOP_PIN_SIZE] = {};
  uint32_t length = 0;
};
}  // namespace

static Code code_of(const std::string& text, const char* what) {
  bool digits = text.find_first_not_of("0123456789") == std::string::npos;
  if (!digits || text.size() < 4 || text.size() > ZOP_PIN_SIZE) {
    throw UsageError(std::string(what) + " must have 4 to 8 digits");
  }
  Code code;
  code.length = static_cast<uint32_t>(text.size());
  for (size_t i = 0; i < text.size(); ++i) code.bytes[i] = static_cast<uint8_t>(text[i]);
  return code;
}

static std::string line_of(std::istream& in) {
  std::string line;
  std::getline(in, line);
  return line.ends_with('\r') ? line.substr(0, line.size() - 1) : line;
}

namespace {
// The codes that are not on the command line, taken in the order in which they are asked for.
class Codes {
 public:
  explicit Codes(const Arguments& arguments) : from_file_(arguments.has("--pin-file")) {
    if (!from_file_ || arguments.text("--pin-file") == "-") return;
    const std::string& name = arguments.text("--pin-file");
    require_readable(name);
    file_.open(name);
    if (!file_) throw file_failure(name, errno);
  }

  std::string take(const char* what) {
    if (from_file_) return line_of(file_.is_open() ? file_ : std::cin);
    return isatty(STDIN_FILENO) != 0 ? ask_hidden(std::string(what) + ": ") : line_of(std::cin);
  }

 private:
  bool from_file_;
  std::ifstream file_;  // closed: standard input
};

// An option of a code, and what it is called.
struct CodeOption {
  const char* option;
  const char* what;
};
}  // namespace

static constexpr CodeOption THE_PIN = {"--pin", "PIN"}, THE_OLD_PIN = {"--pin", "old PIN"},
                            THE_NEW_PIN = {"--new-pin", "new PIN"},
                            THE_KEY = {"--key", "unblocking key"};

// Those of the command line.
static void check_codes(const Arguments& arguments) {
  for (auto [option, what] : {THE_PIN, THE_NEW_PIN, THE_KEY}) {
    if (!arguments.has(option)) continue;
    code_of(arguments.text(option), what);
    if (arguments.has("--pin-file"))
      throw UsageError(std::string(option) + " and --pin-file give the same code");
  }
}

// The others. None that is no code opens the modem.
static void ask_codes(Arguments& arguments, std::initializer_list<CodeOption> wanted) {
  Codes codes(arguments);
  for (auto [option, what] : wanted) {
    if (arguments.has(option)) continue;
    std::string text = codes.take(what);
    check_signals();
    code_of(text, what);
    arguments.texts[option] = text;
  }
}

static void ask_pin(Arguments& arguments) { ask_codes(arguments, {THE_PIN}); }
static void ask_pins(Arguments& arguments) { ask_codes(arguments, {THE_OLD_PIN, THE_NEW_PIN}); }
static void ask_key(Arguments& arguments) { ask_codes(arguments, {THE_KEY, THE_NEW_PIN}); }

static Code given(const Arguments& arguments, const CodeOption& code) {
  return code_of(arguments.text(code.option), code.what);
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
  uint32_t left = items.back().value.get<uint32_t>();
  bool has_card = items.front().value["code"] != ZOP_SIM_NO_CARD;
  if (refused != 0)
    result.shown = has_card ? "no, the card refused it; " + counted(left, "try", "tries") + " left"
                            : "no, there is no card";
  result.failed = refused != 0;
  items.insert(items.begin(), result);
  return one_section("sim", "SIM", items);
}

static Findings status(const ModuleLibrary& m, const Arguments&) {
  return one_section("sim", "SIM", card_state(m));
}

static constexpr char AFTER_SILENCE[] =
    "the card may have got the code: see the tries left in zopctl sim status before the next one";

using OneCode = unsigned (*)(const uint8_t*, uint32_t, uint32_t*);
using TwoCodes = unsigned (*)(const uint8_t*, uint32_t, const uint8_t*, uint32_t, uint32_t*);

static Findings with_pin(const ModuleLibrary& m, const Arguments& arguments, OneCode operate,
                         const char* what) {
  Code pin = given(arguments, THE_PIN);
  uint32_t refused = 0;
  require(operate(pin.bytes, pin.length, &refused), what, AFTER_SILENCE);
  return outcome(m, refused);
}

static Findings with_new_pin(const ModuleLibrary& m, const Arguments& arguments,
                             const CodeOption& old_code, TwoCodes operate, const char* what) {
  Code old = given(arguments, old_code), pin = given(arguments, THE_NEW_PIN);
  uint32_t refused = 0;
  require(operate(old.bytes, old.length, pin.bytes, pin.length, &refused), what, AFTER_SILENCE);
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
  return with_new_pin(m, arguments, THE_OLD_PIN, m.zop_simcard_change, "change");
}

static Findings unblock(const ModuleLibrary& m, const Arguments& arguments) {
  return with_new_pin(m, arguments, THE_KEY, m.zop_simcard_unblock, "unblock");
}

static const Argument PIN = {
    .name = "--pin",
    .help = "the PIN; ps shows it to every user: better leave it out and be asked"};
static const Argument OLD_PIN = {.name = "--pin",
                                 .help = "the old PIN; better left out, as ps shows it"};
static const Argument NEW_PIN = {.name = "--new-pin",
                                 .help = "the new PIN; better left out, as ps shows it"};
static const Argument KEY = {.name = "--key",
                             .help = "the unblocking key; better left out, as ps shows it"};
static const Argument PIN_FILE = {
    .name = "--pin-file",
    .help = "file of the codes that are asked for, one a line; - is standard input"};

const Verbs SIM_VERBS = {
    {.noun = "sim", .name = "status", .help = "card, lock and tries left", .run = status},
    {.noun = "sim",
     .name = "verify",
     .help = "enter the PIN",
     .arguments = {PIN, PIN_FILE},
     .check = check_codes,
     .ask = ask_pin,
     .run = verify},
    {.noun = "sim",
     .name = "enable",
     .help = "enable the PIN",
     .arguments = {PIN, PIN_FILE},
     .check = check_codes,
     .ask = ask_pin,
     .run = enable},
    {.noun = "sim",
     .name = "disable",
     .help = "disable the PIN",
     .arguments = {PIN, PIN_FILE},
     .check = check_codes,
     .ask = ask_pin,
     .run = disable},
    {.noun = "sim",
     .name = "change",
     .help = "change the PIN",
     .arguments = {OLD_PIN, NEW_PIN, PIN_FILE},
     .check = check_codes,
     .ask = ask_pins,
     .run = change},
    {.noun = "sim",
     .name = "unblock",
     .help = "replace a blocked PIN, with the unblocking key",
     .arguments = {KEY, NEW_PIN, PIN_FILE},
     .check = check_codes,
     .ask = ask_key,
     .run = unblock},
};

}  // namespace zopctl
