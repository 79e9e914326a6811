// Arguments by CLI11, which stays in this one source: it compiles slowly.
#include "zopctl/options.h"

#include <CLI/CLI.hpp>

#include "include/vurn.h"
#include "zopctl/host_calls.h"

namespace zopctl {

static const char EXAMPLES[] = R"(
Examples:
  zopctl status                      what the modem on the device is and does
  zopctl status --json               the same for a program
  zopctl --sim status                against a simulated modem
  zopctl --sim=roaming status        against a simulated modem in a scenario
  zopctl status --log error,general  with the module's own log lines

--sim, --device, --library, --json and --log may stand before or after the verb.
Exit code: 0 good, 1 the modem or the module failed, 2 bad usage.)";

struct MaskName {
  const char* name;
  unsigned bits;
};

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
    throw CLI::ValidationError("--log", "\"" + word + "\" is no number and none of" + known);
  }
  return static_cast<unsigned>(bits);
}

static unsigned mask_of(const std::string& text) {
  unsigned mask = 0;
  for (const std::string& word : CLI::detail::split(text, ',')) mask |= mask_of_word(word);
  return mask;
}

static void add_options(CLI::App& app, Options& options, std::string& sim, std::string& log) {
  app.footer(EXAMPLES);
  app.require_subcommand(1);
  app.set_version_flag("--version", "zopctl " ZOP_VERSION);
  app.add_flag("--sim{-}", sim, "use a simulated modem; --sim=SCENARIO sets its scenario")
      ->group("Modem");
  app.add_option("--device", options.device,
                 std::string("serial device of the modem's DIAG port, instead of ") + MODULE_DEVICE)
      ->group("Modem");
  app.add_option("--library", options.library, "the module to load")->group("Modem");
  app.add_flag("--json", options.json, "print JSON, for programs")->group("Output");
  app.add_option("--log", log, "show the module's log lines: a mask, or names with commas")
      ->group("Output");
}

std::optional<Options> read_options(int argc, char** argv, int& exit_code) {
  Options options;
  std::string sim, log;
  CLI::App app{"zopctl looks after a 3G modem through its module, as a host does."};
  add_options(app, options, sim, log);
  app.add_subcommand("status", "show identity, SIM, network, mode, signal and time")->fallthrough();
  try {
    app.parse(argc, argv);
    if (!log.empty()) options.log_mask = mask_of(log);
    if (!sim.empty() && !options.device.empty()) {
      throw CLI::ValidationError("--sim", "a simulated modem has no --device");
    }
  } catch (const CLI::RequiredError& error) {
    exit_code = 2;
    std::vector<std::string> words = app.remaining();
    if (words.empty()) return app.exit(error), std::nullopt;
    fprintf(stderr, "zopctl: no verb \"%s\"; zopctl --help shows them\n", words[0].c_str());
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    exit_code = app.exit(error) == 0 ? 0 : 2;
    return std::nullopt;
  }
  options.verb = app.get_subcommands().front()->get_name();
  options.simulate = !sim.empty();
  if (sim != "-") options.scenario = sim;
  return options;
}

}  // namespace zopctl
