// zop-modem-sim: the simulated modem as a process on a pseudo-terminal.
#include <fmt/format.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "simulator/line/private_file.h"
#include "simulator/line/terminal.h"
#include "simulator/model/state_file.h"
#include "simulator/modem.h"
#include "simulator/replay.h"
#include "simulator/request_commands.h"
#include "simulator/scenario/list_settings.h"
#include "simulator/troff.h"

namespace fs = std::filesystem;

static const char EXAMPLES[] = R"(
The first line on standard output is the path of the terminal to open.

Examples:
  zop-modem-sim                                 a healthy modem on WCDMA
  zop-modem-sim roaming --trace                 a shipped scenario, showing every frame
  zop-modem-sim ./my.toml --link /tmp/modem     a scenario of your own, at a fixed path
  zop-modem-sim --fault silence:request=rssi,count=1
  zop-modem-sim --fault bad-crc:chance=0.05 --seed 7
  zop-modem-sim --replay field.pcapng           a modem that answers from a capture
  zop-modem-sim --state m --run 'stream_write,skip=9:kill -9 $PPID'
                                                its power fails at the tenth write

Faults, each of one answer:
  silence            it does not come
  delay=MS           it comes late, from byte BYTE on with :at=BYTE
  cut=BYTES          it ends after so many bytes of its frame
  shorten=BYTES      it has only so many bytes, with good check bytes
  pieces=BYTES       it comes in pieces of so many bytes, 10 ms apart
  bad-crc            its check bytes are wrong
  flip=BIT           a bit of its frame is wrong, counted from byte BYTE with :at=BYTE
  insert=VALUE       its frame has one byte more, in front of byte BYTE with :at=BYTE
  lose=BYTE          a byte of its frame is missing
  extra=BYTES        so many bytes of noise come first
  duplicate=MS       it comes again so much later; with 0, both come in one piece
  wrong-echo=OFFSET  a byte of its header is wrong
  status=CODE        it has this command status
  error=CODE         the modem refuses: 19, 20, 21, 24, 66 or 71, then the request;
                     its boot ROM by a NAK, a programmer by an error packet, of this code
  other=SUBCOMMAND   it is the answer to another vendor request
  hang-up=BYTES      the device goes away after so many bytes, and returns with :back=MS; it keeps
                     its power and its mode
Any may be followed by :request=NAME,skip=N,count=N,chance=P: the requests it hits, how many of them
it first leaves alone and how many it then hits, and how likely it hits one.)";

namespace {
struct Options {
  std::string scenario;
  std::string link;
  std::string trace;
  std::string state;
  std::string replay;
  bool trace_to_stderr = false;
  std::vector<std::string> faults;
  std::vector<std::string> commands;
  unsigned seed = 1;
  double speed = 1;
  bool exit_with_parent = false;
  bool list = false;
  bool settings = false;
  bool requests = false;
  bool man = false;
};
}  // namespace

// Where shipped scenarios are: installed beside the program, or in the source tree.
static std::vector<fs::path> scenario_folders() {
  fs::path program = fs::read_symlink("/proc/self/exe").parent_path();
  return {program / "../share/zop-module/scenarios", program / "../../scenarios"};
}

static fs::path find_scenario(const std::string& name) {
  if (name.find('/') != std::string::npos || name.ends_with(".toml")) return name;
  for (const fs::path& folder : scenario_folders()) {
    fs::path path = folder / (name + ".toml");
    if (fs::exists(path)) return path;
  }
  throw sim::ScenarioError("no shipped scenario \"" + name + "\"");
}

static void list_scenarios() {
  for (const fs::path& folder : scenario_folders()) {
    if (!fs::is_directory(folder)) continue;
    std::map<std::string, std::string> titles;
    for (const auto& entry : fs::directory_iterator(folder)) {
      titles[entry.path().stem()] = sim::load_scenario(entry.path()).title;
    }
    for (auto& [name, title] : titles) fmt::print("{:22} {}\n", name, title);
    return;
  }
}

static void list_requests() {
  for (const std::string& line : sim::describe_requests()) fmt::print("{}\n", line);
  for (const std::string& line : sim::describe_packets()) fmt::print("{}\n", line);
}

static std::vector<std::string> all_settings() {
  std::vector<std::string> lines = sim::describe_settings();
  for (std::string& line : sim::describe_lists()) lines.push_back(line);
  lines.push_back("clock.start\tUTC at the start, like 2010-07-24T13:02:59Z");
  return lines;
}

static void list_settings() {
  for (const std::string& line : all_settings()) {
    size_t tab = line.find('\t');
    fmt::print("{:26} {}\n", line.substr(0, tab), line.substr(tab + 1));
  }
}

static void print_man_page(const CLI::App& app) {
  fmt::print(".TH ZOP\\-MODEM\\-SIM 1 \"\" \"" ZOP_VERSION
             "\"\n.SH NAME\nzop\\-modem\\-sim \\- a simulated 3G modem on a pseudo\\-terminal\n"
             ".SH SYNOPSIS\n.B zop\\-modem\\-sim\n[options] [SCENARIO]\n.SH OPTIONS\n");
  for (const CLI::Option* option : app.get_options()) {
    fmt::print(".TP\n.B {}\n{}.\n", sim::troff(option->get_name(true, true)),
               sim::troff(option->get_description()));
  }
  fmt::print(
      ".SH SCENARIOS\nA scenario is a TOML file. Tables set the modem's state, each "
      "[[at]] entry with a time in seconds changes it later or has hang_up = true, event = "
      "\"pdp\\-activated\" "
      "(pdp\\-deactivated, call\\-originated, call\\-ended) or "
      "replug = true, each [[fault]] has one switch = \"...\". hang_up unplugs the modem, and with "
      "replug it is switched on again: a crashed one starts, one that is half written comes up in "
      "its boot ROM. The settings:\n");
  for (const std::string& line : all_settings()) {
    size_t tab = line.find('\t');
    fmt::print(".TP\n.B {}\n{}\n", sim::troff(line.substr(0, tab)),
               sim::troff(line.substr(tab + 1)));
  }
  fmt::print(".SH EXAMPLES AND FAULTS\n.nf\n{}\n.fi\n.SH SEE ALSO\n.BR zopctl (1)\n",
             sim::troff(EXAMPLES));
}

// What is wrong with an option's text is told with its name.
template <typename Parse>
static auto parsed(const char* option, const std::string& text, Parse parse) {
  try {
    return parse(text);
  } catch (const std::invalid_argument& error) {
    throw std::invalid_argument(std::string(option) + ": " + error.what());
  }
}

static sim::Scenario scenario_of(const Options& options) {
  sim::Scenario scenario;
  if (!options.scenario.empty()) scenario = sim::load_scenario(find_scenario(options.scenario));
  if (!scenario.clock_is_set) scenario.model.clock.start = std::time(nullptr);
  for (const std::string& text : options.faults)
    scenario.faults.push_back(parsed("--fault", text, sim::parse_fault));
  return scenario;
}

static sim::Modem::Trace trace_of(const Options& options) {
  if (options.trace_to_stderr)
    return [](const std::string& line) { fmt::print(stderr, "{}\n", line); };
  if (options.trace.empty()) return {};
  int fd = sim::make_private_file(options.trace);
  if (fd < 0)
    throw std::runtime_error("can't write the trace to " + options.trace + ": " + strerror(errno) +
                             "; name another file");
  std::shared_ptr<FILE> file(fdopen(fd, "w"), fclose);
  return [file](const std::string& line) {
    fmt::print(file.get(), "{}\n", line);
    fflush(file.get());
  };
}

// A descriptor that becomes readable when the program is to end.
static int end_signals(const Options& options) {
  sigset_t signals;
  sigemptyset(&signals);
  for (int signal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&signals, signal);
  sigprocmask(SIG_BLOCK, &signals, nullptr);
  if (options.exit_with_parent) {
    pid_t parent = getppid();
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != parent || parent == 1) raise(SIGTERM);
  }
  return signalfd(-1, &signals, SFD_CLOEXEC);
}

static void act(sim::Terminal& terminal, const sim::Output& output) {
  switch (output.kind) {
    case sim::Output::SENDS:
      if (terminal.is_plugged_in()) terminal.write(output.bytes);
      return;
    case sim::Output::HANGS_UP:
      return terminal.unplug();
    case sim::Output::COMES_BACK:
      return terminal.plug_in();
  }
}

namespace {
// Time on the modem's clock since its start.
class Clock {
 public:
  explicit Clock(double speed) : speed_(speed) {}
  sim::Time now() const {
    auto passed = std::chrono::steady_clock::now() - start_;
    return std::chrono::duration_cast<sim::Time>(passed * speed_);
  }
  timespec until(sim::Time due) const {
    auto us = static_cast<int64_t>(static_cast<double>((due - now()).count()) / speed_);
    us = std::max<int64_t>(0, us);
    return {static_cast<time_t>(us / 1'000'000), static_cast<long>(us % 1'000'000 * 1000)};
  }

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  double speed_;
};
}  // namespace

// Calls afterwards whenever the host has sent something, before it sees the answer.
template <typename Modem>
static void run(Modem& modem, sim::Terminal& terminal, int end, const Clock& clock,
                const std::function<void()>& afterwards) {
  for (;;) {
    while (auto output = modem.take_output(clock.now())) act(terminal, *output);
    std::optional<sim::Time> due = modem.next_due();
    timespec wait = due ? clock.until(*due) : timespec{};
    pollfd inputs[] = {{end, POLLIN, 0}, {terminal.descriptor(), POLLIN, 0}};
    if (ppoll(inputs, 2, due ? &wait : nullptr, nullptr) < 0) continue;
    if (inputs[0].revents != 0) return;
    if (inputs[1].revents != 0) modem.receive(terminal.read(), clock.now());
    afterwards();
  }
}

template <typename Modem>
static void serve(
    Modem& modem, const Options& options, const std::function<void()>& afterwards = [] {}) {
  int end = end_signals(options);
  sim::Terminal terminal(options.link);
  fmt::print("{}\n", options.link.empty() ? terminal.path() : options.link);
  fflush(stdout);
  run(modem, terminal, end, Clock(options.speed), afterwards);
}

static sim::RequestCommands commands_of(const Options& options) {
  std::vector<sim::RequestCommand> commands;
  for (const std::string& text : options.commands)
    commands.push_back(parsed("--run", text, sim::parse_request_command));
  return sim::RequestCommands(std::move(commands));
}

static void serve_simulated(const Options& options) {
  sim::Scenario scenario = scenario_of(options);
  sim::StateFile state(options.state);
  state.load(scenario.model);
  sim::RequestCommands commands = commands_of(options);
  sim::Modem modem(std::move(scenario), options.seed, trace_of(options));
  modem.on_request = [&](const std::string& request) { commands.run(request); };
  serve(modem, options, [&] { state.save(modem.model()); });
}

static void print_documents(const Options& options, const CLI::App& app) {
  if (options.list) return list_scenarios();
  if (options.settings) return list_settings();
  if (options.requests) return list_requests();
  print_man_page(app);
}

static const std::string SCENARIO_ADVICE =
    "; --list-scenarios shows those shipped, --list-settings what may stand in one";
static const std::string CAPTURE_ADVICE = "; name a file that zopctl --capture has made";

static int fail(const std::string& what, int exit_code) {
  fmt::print(stderr, "zop-modem-sim: {}\n", what);
  return exit_code;
}

// Also of what was printed so far.
static void require_output() {
  if (!std::cout.flush().good() || fflush(stdout) != 0)
    throw std::runtime_error("the output could not be written; is the disk full?");
}

static void serve_captured(const Options& options) {
  sim::Replay modem(sim::load_capture(options.replay), trace_of(options));
  serve(modem, options);
}

static void add_options(CLI::App& app, Options& options) {
  app.footer(EXAMPLES);
  auto* scenario = app.add_option("SCENARIO", options.scenario,
                                  "name of a shipped scenario, or a path to a .toml");
  app.add_option("--link", options.link, "make a symbolic link to the terminal at this path");
  app.add_flag("--trace", options.trace_to_stderr, "show every request and answer");
  app.add_option("--trace-file", options.trace, "write the trace to this file instead");
  app.add_option("--fault", options.faults, "inject a fault; may be repeated")
      ->allow_extra_args(false);
  auto* run =
      app.add_option("--run", options.commands,
                     "REQUEST[,skip=N]:COMMAND: run COMMAND with sh, once, when the request "
                     "or packet arrives and before the modem acts on it, and wait for its "
                     "end; SIM_REQUEST is its name; may be repeated");
  run->allow_extra_args(false);
  app.add_option("--replay", options.replay,
                 "answer as the modem in this capture did (zopctl --capture)")
      ->excludes(scenario)
      ->excludes(run);
  app.add_option(
      "--state", options.state,
      "keep PIN state, NV items, profiles, messages, firmware version and a half-written "
      "flash in this file");
  app.add_option("--seed", options.seed, "seed of the faults with chance=P");
  app.add_option("--speed", options.speed, "run the modem's clock this many times faster")
      ->check(CLI::Range(0.001, 1000.0));
  app.add_flag("--exit-with-parent", options.exit_with_parent,
               "end when the starting process ends");
  app.add_flag("--list-scenarios", options.list, "list the shipped scenarios");
  app.add_flag("--list-settings", options.settings, "list what a scenario can set");
  app.add_flag("--list-requests", options.requests, "list the requests and packets by name");
  app.add_flag("--man", options.man, "print the manual page");
  app.set_version_flag("--version", "zop-modem-sim " ZOP_VERSION);
}

// False: help or version was asked for, and is printed.
static bool parse(CLI::App& app, int argc, char** argv) {
  try {
    app.parse(argc, argv);
    return true;
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() != 0)
      throw std::invalid_argument(std::string(error.what()) + "; --help tells more");
    app.exit(error);
    return false;
  }
}

static void run(CLI::App& app, const Options& options) {
  if (options.list || options.settings || options.requests || options.man) {
    print_documents(options, app);
    require_output();
  } else if (options.replay.empty()) {
    serve_simulated(options);
  } else {
    serve_captured(options);
  }
}

int main(int argc, char** argv) {
  Options options;
  CLI::App app{"A simulated 3G modem on a pseudo-terminal."};
  add_options(app, options);
  try {
    if (parse(app, argc, argv)) {
      run(app, options);
    } else {
      require_output();
    }
    return 0;
  } catch (const sim::ScenarioError& error) {
    return fail(error.what() + SCENARIO_ADVICE, 2);
  } catch (const sim::CaptureError& error) {
    return fail(error.what() + CAPTURE_ADVICE, 2);
  } catch (const std::invalid_argument& error) {
    return fail(error.what(), 2);
  } catch (const std::exception& error) {
    return fail(error.what(), 1);
  }
}
