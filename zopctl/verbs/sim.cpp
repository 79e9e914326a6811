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
// The codes that a verb needs, taken in the order in which they are asked for.
class Codes {
 public:
  explicit Codes(const Arguments& arguments) : arguments_(arguments) {
    if (!arguments.has("--pin-file")) return;
    from_file_ = true;
    const std::string& name = arguments.text("--pin-file");
    if (name == "-") return;
    file_.open(name);
    if (!file_)
      throw Failure("can't read " + name + ": " + strerror(errno), 1, "name a file of codes");
  }

  Code take(const std::string& option, const char* what) {
    std::string text = text_of(option, what);
    check_signals();
    return code_of(text, what);
  }

 private:
  std::string text_of(const std::string& option, const char* what) {
    if (arguments_.has(option)) return arguments_.text(option);
    if (from_file_) return line_of(file_.is_open() ? file_ : std::cin);
    return isatty(STDIN_FILENO) != 0 ? ask_hidden(std::string(what) + ": ") : line_of(std::cin);
  }

  const Arguments& arguments_;
  bool from_file_ = false;
  std::ifstream file_;  // closed: standard input
};
}  // namespace

// Those of the command line; the others are asked for when the modem is there.
static void check_codes(const Arguments& arguments) {
  for (auto [option, what] : {std::pair("--pin", "PIN"), std::pair("--new-pin", "new PIN"),
                              std::pair("--key", "unblocking key")}) {
    if (!arguments.has(option)) continue;
    code_of(arguments.text(option), what);
    if (arguments.has("--pin-file"))
      throw UsageError(std::string(option) + " and --pin-file give the same code");
  }
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
  if (refused != 0)
    result.shown = "no, the card refused it; " + counted(left, "try", "tries") + " left";
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
  Code pin = Codes(arguments).take("--pin", "PIN");
  uint32_t refused = 0;
  require(operate(pin.bytes, pin.length, &refused), what, AFTER_SILENCE);
  return outcome(m, refused);
}

static Findings with_new_pin(const ModuleLibrary& m, const Code& old_code, const Code& pin,
                             TwoCodes operate, const char* what) {
  uint32_t refused = 0;
  require(operate(old_code.bytes, old_code.length, pin.bytes, pin.length, &refused), what,
          AFTER_SILENCE);
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
  Codes codes(arguments);
  Code old_pin = codes.take("--pin", "old PIN");
  return with_new_pin(m, old_pin, codes.take("--new-pin", "new PIN"), m.zop_simcard_change,
                      "change");
}

static Findings unblock(const ModuleLibrary& m, const Arguments& arguments) {
  Codes codes(arguments);
  Code key = codes.take("--key", "unblocking key");
  return with_new_pin(m, key, codes.take("--new-pin", "new PIN"), m.zop_simcard_unblock, "unblock");
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
     .run = verify},
    {.noun = "sim",
     .name = "enable",
     .help = "enable the PIN",
     .arguments = {PIN, PIN_FILE},
     .check = check_codes,
     .run = enable},
    {.noun = "sim",
     .name = "disable",
     .help = "disable the PIN",
     .arguments = {PIN, PIN_FILE},
     .check = check_codes,
     .run = disable},
    {.noun = "sim",
     .name = "change",
     .help = "change the PIN",
     .arguments = {OLD_PIN, NEW_PIN, PIN_FILE},
     .check = check_codes,
     .run = change},
    {.noun = "sim",
     .name = "unblock",
     .help = "replace a blocked PIN, with the unblocking key",
     .arguments = {KEY, NEW_PIN, PIN_FILE},
     .check = check_codes,
     .run = unblock},
};

}  // namespace zopctl
