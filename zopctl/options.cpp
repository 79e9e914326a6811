// Parses arguments with CLI11, which only this source includes: it compiles slowly.
#include "zopctl/options.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <iostream>
#include <list>

#include "include/vurn.h"
#include "zopctl/documents.h"
#include "zopctl/host/host_calls.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/folding.h"

namespace zopctl {

namespace {
struct MaskName {
  const char* name;
  unsigned bits;
};
}  // namespace

static const MaskName MASK_NAMES[] = {
    {"all", 0xFFFFFFFF},           {"error", VURN_LOG_ERROR},
    {"warning", VURN_LOG_WARNING}, {"info", VURN_LOG_INFO},
    {"general", VURN_LOG_GENERAL}, {"trace", VURN_LOG_TRACE},
    {"events", VURN_LOG_EVENTS},   {"actions", VURN_LOG_ACTION_EVENTS},
    {"stuck", VURN_LOG_STUCK},     {"screens", VURN_LOG_FIELD_INFORMATION},
};

static unsigned mask_of_word(const std::string& word) {
  for (const MaskName& row : MASK_NAMES) {
    if (word == row.name) return row.bits;
  }
  size_t used = 0;
  unsigned long bits = 0;
  try {
    bits = std::stoul(word, &used, 0);
  } catch (const std::exception&) {
    used = 0;
  }
  if (used == 0 || used != word.size() || bits > 0xFFFFFFFF) {
    std::string known;
    for (const MaskName& row : MASK_NAMES) known += std::string(" ") + row.name;
    throw CLI::ValidationError("--log", "\"" + word + "\" is neither a number nor one of" + known);
  }
  return static_cast<unsigned>(bits);
}

static unsigned mask_of(const std::string& text) {
  unsigned mask = 0;
  for (const std::string& word : CLI::detail::split(text, ',')) mask |= mask_of_word(word);
  return mask;
}

// 0: without an end.
static unsigned seconds_of(const std::string& text) {
  unsigned seconds = 0;
  if (!CLI::detail::lexical_cast(text, seconds) || seconds > 86400) {
    throw CLI::ValidationError("--wait", "\"" + text + "\" is no number of seconds up to 86400");
  }
  return seconds;
}

static void add_options(CLI::App& app, Options& options, std::string& sim, std::string& log) {
  app.set_version_flag("--version", "zopctl " ZOP_VERSION);
  app.add_flag("--sim{-}", sim, "use a simulated modem; --sim=SCENARIO selects a scenario")
      ->group("Modem");
  app.add_option("--sim-speed", options.sim_speed,
                 "run the simulated modem's clock, and all waits, this many times faster; with "
                 "--device only the waits: start zop-modem-sim with the same --speed")
      ->check(CLI::Range(0.01, 1000.0))
      ->group("Modem");
  app.add_option("--device", options.device,
                 std::string("serial device of the modem's DIAG port; default $ZOPCTL_DEVICE, ") +
                     MODULE_DEVICE + ", or the only port of a modem that answers")
      ->group("Modem");
  app.add_option("--library", options.library, "module to load")->group("Modem");
  app.add_option("--capture", options.capture,
                 "record every frame on the line to this pcapng file; - is standard output")
      ->group("Output");
  app.add_flag("--redact", options.redact,
               "blank secrets in the capture, and what identifies a person or a place")
      ->group("Output");
  app.add_flag("--json", options.json, "print JSON")->group("Output");
  app.add_option("--log", log, "show the module's log lines: a mask or comma-separated names")
      ->group("Output");
}

namespace {
// Where CLI11 stores the words of one argument.
struct Slot {
  std::string name;
  std::string word;
  std::vector<std::string> words;
  CLI::Option* option;
};
struct Parsed {
  const Verb* verb;
  CLI::App* app;
  std::list<Slot> slots;
};
}  // namespace

// "the band: 43 (GSM 850) or 44 (EGSM 900)"
static std::string help_of(const Argument& argument) {
  std::string values = values_with_meanings(argument);
  return argument.help + (values.empty() ? "" : ": " + values);
}

static void add_argument(CLI::App& app, const Argument& argument, Parsed& parsed) {
  Slot& slot = parsed.slots.emplace_back(Slot{argument.name, "", {}, nullptr});
  if (argument.flag) {
    slot.option = app.add_flag(slot.name, argument.help)->disable_flag_override();
    return;
  }
  if (argument.list) {
    slot.option =
        app.add_option(slot.name, slot.words, argument.help)->required(argument.is_required());
    return;
  }
  std::string short_name =
      argument.short_name == nullptr ? "" : std::string(argument.short_name) + ",";
  slot.option = app.add_option(short_name + slot.name, slot.word, help_of(argument));
  if (argument.is_required()) slot.option->required();
}

static void add_verb(CLI::App& parent, const Verb& verb, bool& yes, std::list<Parsed>& all) {
  CLI::App* app = parent.add_subcommand(verb.name, verb.help)->fallthrough();
  Parsed& parsed = all.emplace_back(Parsed{&verb, app, {}});
  for (const Argument& argument : verb.arguments) add_argument(*app, argument, parsed);
  if (verb.danger == nullptr) return;
  app->footer(std::string("Caution: ") + verb.danger +
              ". It asks on a terminal, and needs --yes elsewhere.");
  app->add_flag("--yes", yes, "confirm");
}

static void add_verbs(CLI::App& app, bool& yes, std::list<Parsed>& all) {
  for (const Verb& verb : verbs()) {
    if (verb.noun == nullptr) add_verb(app, verb, yes, all);
  }
  for (const Noun& noun : nouns()) {
    CLI::App* group = app.add_subcommand(noun.name, noun.help)->fallthrough();
    group->require_subcommand(1);
    for (const Verb& verb : verbs()) {
      if (verb.noun != nullptr && std::string(verb.noun) == noun.name) {
        add_verb(*group, verb, yes, all);
      }
    }
  }
}

static void take_verb(const std::list<Parsed>& all, Options& options) {
  for (const Parsed& parsed : all) {
    if (!parsed.app->parsed()) continue;
    options.verb = parsed.verb;
    for (const Slot& slot : parsed.slots) {
      if (slot.option->count() == 0) continue;
      options.arguments.texts[slot.name] = slot.word;
      options.arguments.lists[slot.name] = slot.words;
    }
  }
}

// How far the words were understood: the program, a noun or a verb.
static std::pair<const CLI::App*, std::string> understood(const CLI::App& app) {
  const CLI::App* last = &app;
  std::string command = "zopctl";
  while (!last->get_subcommands().empty()) {
    last = last->get_subcommands().front();
    command += " " + last->get_name();
  }
  return {last, command};
}

// Where a verb should be there is another word, or none. Nothing: the fault is another one.
static std::string wrong_verb(const CLI::App& app, const std::string& sim,
                              const CLI::ParseError& error) {
  auto [last, command] = understood(app);
  bool takes_verb = !last->get_subcommands([](const CLI::App*) { return true; }).empty();
  bool is_extra = dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr;
  bool is_missing = takes_verb && dynamic_cast<const CLI::RequiredError*>(&error) != nullptr;
  if (!is_extra && !is_missing) return "";
  std::vector<std::string> words = app.remaining(true);
  if (words.empty()) return fmt::format("no verb; {} --help lists them", command);
  const std::string& word = words.front();
  bool is_option = word.starts_with("-");
  if (sim == "-" && is_extra && !is_option)  // --sim without a name
    return fmt::format("no verb \"{0}\"; for a scenario use --sim={0}", word);
  if (!takes_verb) return "";
  const char* kind = is_option ? "option" : "verb";
  return fmt::format("no {} \"{}\"; {} --help lists them", kind, word, command);
}

// What was wrong, and which help tells more.
static UsageError usage_error(const CLI::App& app, const std::string& sim,
                              const CLI::ParseError& error) {
  std::string text = wrong_verb(app, sim, error);
  if (!text.empty()) return UsageError(text);
  text = error.what();
  size_t flag = text.find(" was given a disallowed flag override");
  if (flag != text.npos) text = fmt::format("--{} takes no value", text.substr(0, flag));
  return UsageError(fmt::format("{}; {} --help tells more", text, understood(app).second));
}

// Also into a file or a pager it is narrow enough to be read.
static std::nullopt_t print_help(const CLI::App& app) {
  constexpr size_t USUAL_COLUMNS = 80;
  size_t columns = terminal_columns();
  std::cout << folded_list(app.help(), columns == 0 ? USUAL_COLUMNS : columns);
  return std::nullopt;
}

std::optional<Options> read_options(int argc, char** argv) {
  Options options;
  std::string sim, log, wait, completion;
  bool man = false;
  std::list<Parsed> parsed;
  CLI::App app{"zopctl checks and controls a 3G modem through its module, as a host does."};
  add_options(app, options, sim, log);
  app.add_flag("--wait{0}", wait,
               "wait for the modem's device to come, --wait=N at most N seconds; put it before a "
               "verb that has its own --wait")
      ->group("Modem");
  app.add_option("--completion", completion, "print the completion script of a shell")
      ->check(CLI::IsMember({"bash", "zsh", "fish"}))
      ->group("Setup");
  app.add_flag("--man", man, "print the manual page")->group("Setup");
  add_verbs(app, options.arguments.yes, parsed);
  app.footer(help_footer());     // last: verbs would inherit it
  app.require_subcommand(0, 1);  // a file behind the verb may be called as another verb
  try {
    app.parse(argc, argv);
    if (!log.empty()) options.log_mask = mask_of(log);
    if (!wait.empty()) options.wait = seconds_of(wait);
    if (!sim.empty() && !options.device.empty()) {
      throw CLI::ValidationError("--sim", "can't be combined with --device");
    }
    bool printed = man || !completion.empty();
    if (!completion.empty()) print_completion(completion);
    if (man) print_man_page();
    if (printed) return std::nullopt;
    if (app.get_subcommands().empty()) throw CLI::RequiredError("A verb");
  } catch (const CLI::ParseError& error) {
    if (dynamic_cast<const CLI::CallForHelp*>(&error) != nullptr) return print_help(app);
    if (error.get_exit_code() == 0) return app.exit(error), std::nullopt;  // the version
    throw usage_error(app, sim, error);
  }
  take_verb(parsed, options);
  options.arguments.json = options.json;
  options.arguments.redact = options.redact;
  const Verb& verb = *options.verb;
  if (options.redact && options.capture.empty() && !verb.redacts) {
    throw UsageError("--redact has nothing to blank; use it with --capture FILE");
  }
  if (verb.run_alone != nullptr && !options.capture.empty()) {
    throw UsageError("--capture has nothing to record: this verb asks no modem");
  }
  options.doing = verb.noun == nullptr ? verb.name : std::string(verb.noun) + " " + verb.name;
  options.simulate = !sim.empty();
  options.shows_progress = verb.samples || verb.events;
  if (sim != "-") options.scenario = sim;
  return options;
}

}  // namespace zopctl
