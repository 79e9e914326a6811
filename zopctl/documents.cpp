// Made from the table of verbs, so that they can't differ from --help.
#include "zopctl/documents.h"

#include <fmt/format.h>

#include <csignal>

#include "simulator/troff.h"
#include "zopctl/firmware/modem_state.h"
#include "zopctl/global_options.h"
#include "zopctl/verb_table.h"

namespace zopctl {

using sim::troff;

const std::vector<GlobalOption> GLOBAL_OPTIONS = {
    {"--sim", nullptr, "use a simulated modem; --sim=SCENARIO selects a scenario"},
    {"--sim-speed", "N",
     "run the simulated modem's clock, and all waits, N times faster; with --device only the "
     "waits"},
    {"--device", "PATH",
     "serial device of the modem's DIAG port; default $ZOPCTL_DEVICE, /dev/tts/USB1, or the only "
     "port of a modem that answers"},
    {"--wait", nullptr,
     "wait for the modem's device to come, with --wait=N at most N seconds; before a verb that has "
     "its own --wait"},
    {"--library", "PATH", "module to load"},
    {"--capture", "FILE", "record every frame on the line to a pcapng file; - is standard output"},
    {"--redact", nullptr, "blank secrets in the capture, and what identifies a person or a place"},
    {"--json", nullptr, "print JSON"},
    {"--log",
     "MASK",
     "show the module's log lines; MASK is a number or comma-separated names",
     {"all", "error", "warning", "info", "general", "trace", "events", "actions", "stuck",
      "screens"}},
    {"--completion", "SHELL", "print the completion script of a shell", {"bash", "zsh", "fish"}},
    {"--man", nullptr, "print this page"},
    {"--help", nullptr, "print help; also after a verb"},
    {"--version", nullptr, "print the version"},
};

namespace {
struct Example {
  const char* command;
  const char* what;
};
struct ExitCode {
  int code;
  const char* meaning;
};
}  // namespace

static const Example EXAMPLES[] = {
    {"zopctl status", "identity, network and signal of the modem"},
    {"zopctl status --json", "the same as JSON"},
    {"zopctl --sim status", "status of a simulated modem"},
    {"zopctl --sim=roaming status", "status of a simulated modem that is roaming"},
    {"zopctl status --log error,general", "also print the module's log lines"},
    {"zopctl doctor", "find out what is wrong and what to try"},
    {"zopctl devices", "the ports where a modem answers"},
    {"zopctl --wait=60 status", "wait for a modem that is being plugged in"},
    {"zopctl support -o case.tar.gz", "one file for those who help, without secrets"},
    {"zopctl report --wait", "the diagnostic report, with fresh data from the modem"},
    {"zopctl monitor", "watch the modem, q quits"},
    {"zopctl sim verify", "ask for the PIN and send it to the card"},
    {"zopctl plmn list operator --json", "one list of the SIM"},
    {"zopctl signal --watch 5", "the signal levels every five seconds"},
    {"zopctl nv backup modem.json", "save the NV items that are known"},
    {"zopctl firmware info ./images", "check an image set"},
    {"zopctl firmware update ./images", "write it to the modem"},
    {"zopctl firmware finish", "do the end of an update that broke off after writing"},
    {"zopctl dump -o /tmp", "save the memory of a modem that has crashed"},
    {"zopctl parse-log *.log", "extract the reports from logs of many devices"},
    {"zopctl html drive.jsonl -o p.html", "make a page of reports and recordings"},
    {"zopctl --capture - status | wireshark -k -i -", "watch the traffic"},
};

static const ExitCode EXIT_CODES[] = {
    {0, "success"},
    {1, "the modem or the module failed; of firmware update: nothing was written"},
    {2, "bad usage"},
    {NO_FIRMWARE, "firmware update: the modem has no usable firmware, update again"},
    {NOT_STARTED, "firmware update: written, but the end is not done: zopctl firmware finish"},
    {OTHER_VERSION, "firmware update: the modem runs another version than the set's"},
    {128 + SIGHUP, "the terminal was closed"},
    {128 + SIGINT, "stopped by Ctrl-C; an update before it wrote anything"},
    {128 + SIGTERM, "stopped by SIGTERM; an update before it wrote anything"},
};

std::string help_footer() {
  std::string text = "\nExamples:\n";
  for (const auto& [command, what] : EXAMPLES) text += fmt::format("  {:33}  {}\n", command, what);
  text +=
      "\n--sim, --device, --library, --json, --log and --capture may come before or after the "
      "verb.\n\nExit codes:\n";
  for (const auto& [code, meaning] : EXIT_CODES) text += fmt::format("  {:3}  {}\n", code, meaning);
  text.pop_back();
  return text;
}

static std::string usage(const Verb& verb) {
  std::string text = verb.noun == nullptr ? "" : std::string(verb.noun) + " ";
  text += verb.name;
  for (const Argument& argument : verb.arguments) {
    std::string word = argument.short_name != nullptr ? argument.short_name : argument.name;
    if (argument.is_option() && !argument.flag) word += " VALUE";
    if (argument.list) word += "...";
    text += argument.is_required() ? " " + word : " [" + word + "]";
  }
  return text;
}

static void man_verb(const Verb& verb) {
  fmt::print(".TP\n.B zopctl {}\n{}.", troff(usage(verb)), troff(verb.help));
  if (verb.danger != nullptr)
    fmt::print(" Caution: {}. It asks on a terminal, and needs \\-\\-yes elsewhere.",
               troff(verb.danger));
  fmt::print("\n");
  for (const Argument& argument : verb.arguments) {
    std::string values = values_with_meanings(argument);
    fmt::print(".br\n.I {}\n{}{}{}.\n", troff(argument.name), troff(argument.help),
               values.empty() ? "" : ": ", troff(values));
  }
}

void print_man_page() {
  fmt::print(
      ".TH ZOPCTL 1 \"\" \"zopctl " ZOP_VERSION
      "\"\n.SH NAME\n"
      "zopctl \\- check and control a 3G modem through its module\n.SH SYNOPSIS\n"
      ".B zopctl\n[options] VERB | NOUN VERB [arguments]\n.SH DESCRIPTION\n"
      "zopctl loads libzop_module.so.0 as a host does, opens the modem, runs one command and "
      "prints the result as a table, or as JSON for programs.\n.SH OPTIONS\n");
  for (const GlobalOption& option : GLOBAL_OPTIONS) {
    fmt::print(".TP\n.B {}{}\n{}.\n", troff(option.name),
               option.value == nullptr ? "" : std::string(" ") + option.value, troff(option.help));
  }
  fmt::print(".SH VERBS\n");
  for (const Verb& verb : verbs()) man_verb(verb);
  fmt::print(".SH EXAMPLES\n");
  for (const auto& [command, what] : EXAMPLES)
    fmt::print(".TP\n.B {}\n{}.\n", troff(command), troff(what));
  fmt::print(".SH EXIT STATUS\n");
  for (const auto& [code, meaning] : EXIT_CODES)
    fmt::print(".TP\n.B {}\n{}.\n", code, troff(meaning));
  fmt::print(
      ".SH FILES\n"
      "/var/lib/zopctl/update_*.json, of other users in ~/.local/state/zopctl: the journal of an "
      "update, kept until the new version has been read.\n.br\n"
      "/var/lock/LCK..*: the locks of the ports in use.\n.br\n"
      "/usr/share/zop-module/schema: a JSON Schema for what each verb prints with --json.\n.SH "
      "ENVIRONMENT\n"
      "ZOPCTL_STATE_DIR and ZOPCTL_LOCK_DIR name other folders for the journals and the locks.\n");
}

}  // namespace zopctl
