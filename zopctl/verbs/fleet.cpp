// zopctl fleet: the reports of many devices in a database. No modem is needed.
#include <errno.h>
#include <fmt/format.h>
#include <poll.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <thread>

#include "fleet/answer_text.h"
#include "fleet/clickhouse_store.h"
#include "fleet/fleet_page.h"
#include "fleet/follower.h"
#include "fleet/loader.h"
#include "fleet/outbox.h"
#include "fleet/questions.h"
#include "fleet/sqlite_store.h"
#include "page/page_file.h"
#include "records/counted.h"
#include "records/line_splitter.h"
#include "zopctl/host/signals.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/printable.h"
#include "zopctl/verbs/verbs.h"

namespace zopctl {

namespace fs = std::filesystem;

constexpr int64_t CLOCKS_APART_S = 86'400;  // a device's clock may be ahead so much
// Of servers: a log waits for them, the lines of a live fleet must not.
constexpr fleet::ClickhouseStore::Patience OF_A_LOG = {600, 300, wait_seconds},
                                           OF_A_QUESTION = {600, 0, wait_seconds},
                                           OF_LINES = {15, 0, wait_seconds};
constexpr unsigned MOST_THREADS = 8;  // one adds all rows, and can't keep up with more

static void warn(const std::string& text) { fmt::print(stderr, "zopctl: {}\n", printable(text)); }

static const records::Callbacks CALLBACKS = {check_signals, warn};

// ---- the database ----

// What has been read of logs, when the rows themselves are on servers.
static std::string state_file(const Arguments& arguments, const std::string& address) {
  if (arguments.has("--state")) return arguments.text("--state");
  const char* state = getenv("ZOPCTL_STATE_DIR");
  if (state == nullptr) state = getenv("XDG_STATE_HOME");
  const char* home = getenv("HOME");
  if (state == nullptr && home == nullptr) throw UsageError("no home directory; use --state FILE");
  fs::path folder = state != nullptr ? fs::path(state) : fs::path(home) / ".local/state";
  std::string name = address.substr(address.find("//") + 2);
  for (char& c : name) c = c == '/' || c == ':' ? '_' : c;
  fs::create_directories(folder / "zopctl");
  return folder / "zopctl" / ("fleet-" + name + ".db");
}

// This computer and the file, which one program at a time holds while it writes.
static std::string writer_of(const std::string& state) {
  std::array<char, 256> host{};
  gethostname(host.data(), host.size() - 1);
  return host.data() + (":" + fs::absolute(state).string());
}

namespace {
// Where rows go, and the database that keeps what has been read.
struct Writing {
  Writing(const Arguments& arguments, bool is_live) {
    const std::string& name = arguments.text("DB");
    bool is_server = fleet::is_clickhouse(name);
    file = is_server ? state_file(arguments, name) : name;
    if (is_server)
      servers.emplace(name, writer_of(file), check_signals, is_live ? OF_LINES : OF_A_LOG);
    if (is_server && !is_live) servers->check_table();
    ledger.emplace(file, fleet::Database::WRITE);
    if (!is_server) sqlite.emplace(*ledger);
    if (is_server && is_live) outbox.emplace(*ledger, *servers);
    unsigned threads =
        is_live ? 1 : std::clamp(std::thread::hardware_concurrency(), 1U, MOST_THREADS);
    loader.emplace(store(), *ledger, CALLBACKS, time(nullptr) + CLOCKS_APART_S, threads);
  }
  fleet::Store& store() {
    if (outbox) return *outbox;
    if (sqlite) return *sqlite;
    return *servers;
  }

  std::string file;  // of the ledger
  std::optional<fleet::ClickhouseStore> servers;
  std::optional<fleet::Database> ledger;
  std::optional<fleet::SqliteStore> sqlite;
  std::optional<fleet::Outbox> outbox;
  std::optional<fleet::Loader> loader;
};

struct Reading {
  explicit Reading(const std::string& name) {
    if (fleet::is_clickhouse(name)) {
      auto server =
          std::make_unique<fleet::ClickhouseStore>(name, "", check_signals, OF_A_QUESTION);
      server->check_table();
      store = std::move(server);
    } else {
      database.emplace(name, fleet::Database::READ);
      store = std::make_unique<fleet::SqliteStore>(*database);
    }
  }
  std::optional<fleet::Database> database;
  std::unique_ptr<fleet::Store> store;
};
}  // namespace

// ---- load ----

static void show_progress(const std::string& name, int64_t done, int64_t size) {
  if (isatty(STDERR_FILENO) == 0) return;
  std::string share = size > 0 ? fmt::format("{} %", 100 * done / size) : "";
  fmt::print(stderr, "\r\033[K{}: {} MB {}", printable(name), done / 1'000'000, share);
}

static Item counted(const char* key, const char* label, uint64_t number) {
  return shown(key, label, number, std::to_string(number));
}

static Findings summary(Writing& writing) {
  const fleet::Counts& counts = writing.loader->counts();
  return one_section(
      "load", "Load",
      {counted("files", "Logs read", counts.files),
       counted("unchanged_files", "Logs without anything new", counts.unchanged),
       counted("lines", "Lines", counts.lines), counted("reports", "Reports", counts.reports),
       counted("added_rows", "Rows added", writing.store().added()),
       counted("known_rows", "Rows that were there", writing.store().doubled()),
       counted("doubled_lines", "Lines that came again", counts.doubled_lines),
       counted("refused", "Reports kept aside", counts.refused),
       counted("broken", "Reports without all their lines", counts.broken),
       counted("strays", "Lines without a time", counts.strays),
       counted("waiting_lines", "Lines that wait for others", counts.waiting)});
}

static Findings load(const Arguments& arguments) {
  Writing writing(arguments, false);
  for (const std::string& name : arguments.lists.at("LOG")) {
    writing.loader->load(name,
                         [&](int64_t done, int64_t size) { show_progress(name, done, size); });
  }
  if (isatty(STDERR_FILENO) != 0) fmt::print(stderr, "\r\033[K");
  return summary(writing);
}

// ---- follow ----

constexpr size_t CHUNK = 1 << 16;

static bool is_ready(int wait_ms) {
  pollfd input = {STDIN_FILENO, POLLIN, 0};
  int ready = poll(&input, 1, wait_ms);
  check_signals();
  return ready > 0;
}

static ssize_t read_input(std::vector<char>& chunk) {
  for (;;) {
    ssize_t size = read(STDIN_FILENO, chunk.data(), chunk.size());
    check_signals();
    if (size >= 0) return size;
    if (errno != EINTR) throw Failure(std::string("standard input: ") + strerror(errno));
  }
}

static void answer_line(std::string_view line) {
  fmt::print("{}\n", line);
  if (fflush(stdout) != 0) throw Failure("nobody reads the confirmations");
}

// Servers that can't be reached are tried again later: the rows are on the disk. Told once.
static void send(Writing& writing, std::string& trouble) {
  if (!writing.outbox || !writing.outbox->is_due()) return;
  std::string was = std::exchange(trouble, "");
  try {
    writing.outbox->send_some();
    if (!was.empty()) warn("the servers take rows again");
  } catch (const records::Failure& failure) {
    trouble = failure.what();
    if (trouble != was) warn(trouble + "; its rows wait in " + writing.file);
  }
}

// Without confirmations, lines are kept whenever no more are ready.
static Findings follow(const Arguments& arguments) {
  constexpr int PAUSE_MS = 500;
  Writing writing(arguments, true);
  bool confirms = arguments.has("--confirm");
  std::optional<fleet::Journal> journal;
  std::optional<fleet::Follower> follower;
  if (confirms) {
    journal.emplace(writing.file + "-lines");
    follower.emplace(*writing.loader, *journal, answer_line);
  }
  std::vector<char> chunk(CHUNK);
  std::string trouble;  // with the servers
  records::LineSplitter splitter;
  for (bool open = true; open;) {
    if (!is_ready(PAUSE_MS)) {
      if (follower) follower->keep();
      send(writing, trouble);
      continue;
    }
    auto size = static_cast<size_t>(read_input(chunk));
    open = size > 0;
    splitter.add({chunk.data(), size}, [&](std::string_view line) {
      confirms ? follower->take(line) : writing.loader->take_line(line);
    });
    if (!confirms && (!open || !is_ready(0))) writing.loader->keep();
    if (!writing.loader->is_reading()) send(writing, trouble);
  }
  if (follower) follower->keep();
  while (writing.outbox && writing.outbox->send_some()) continue;
  return confirms ? Findings() : summary(writing);
}

// ---- ask ----

// "36h" as seconds; units are s, m, h and d.
static std::optional<int64_t> span_of(const std::string& text) {
  constexpr std::pair<char, int64_t> UNITS[] = {{'s', 1}, {'m', 60}, {'h', 3600}, {'d', 86'400}};
  int64_t number = 0;
  const char* end = text.data() + text.size();
  auto [stop, error] = std::from_chars(text.data(), end, number);
  for (auto [unit, seconds] : UNITS) {
    if (error == std::errc{} && stop + 1 == end && *stop == unit && number >= 0 &&
        number < 10'000'000)
      return number * seconds;
  }
  return std::nullopt;
}

static int64_t span_of(const Arguments& arguments, const char* name, int64_t usual) {
  if (!arguments.has(name)) return usual;
  auto span = span_of(arguments.text(name));
  if (!span) throw UsageError(std::string(name) + " is a number with its unit: 90m, 36h, 7d");
  return *span;
}

// "2026-11-22" or "2026-11-22T17:56", UTC.
static int64_t moment_of(const std::string& name, const std::string& text) {
  for (const char* form :
       {"%Y-%m-%dT%H:%M:%SZ", "%Y-%m-%dT%H:%M:%S", "%Y-%m-%dT%H:%M", "%Y-%m-%d"}) {
    tm parts = {};
    const char* end = strptime(text.c_str(), form, &parts);
    if (end != nullptr && *end == '\0') return timegm(&parts);
  }
  throw UsageError(name + " is a time, UTC: 2026-11-22 or 2026-11-22T17:56");
}

// Up to now, whatever the clock of a device says.
static int64_t usual_end(fleet::Store& store) {
  int64_t now = time(nullptr);
  int64_t newest = fleet::newest_time(store);
  return newest == 0 ? now : std::min(newest, now);
}

static fleet::Ask values_of(fleet::Store& store, const Arguments& arguments) {
  fleet::Ask ask;
  if (arguments.has("--host")) ask.host = arguments.text("--host");
  ask.until =
      arguments.has("--until") ? moment_of("--until", arguments.text("--until")) : usual_end(store);
  ask.since = std::max<int64_t>(0, ask.until - span_of(arguments, "--last", fleet::USUAL_SPAN_S));
  ask.silent_s = span_of(arguments, "--silent", fleet::USUAL_SILENCE_S);
  ask.rows = fleet::USUAL_ROWS;
  if (arguments.has("--rows")) ask.rows = arguments.number("--rows");
  return ask;
}

static Findings list_questions() {
  std::vector<Item> items;
  for (const fleet::Question& question : fleet::questions()) {
    items.push_back(shown(question.name, question.name, question.meaning, question.meaning));
  }
  return one_section("questions", "Questions", items);
}

static nlohmann::ordered_json problems_of(const std::string& reason) {
  auto problems = nlohmann::ordered_json::array();
  if (!reason.empty()) {
    problems.push_back({{"item", "rows"}, {"reason", reason}, {"failure", false}});
  }
  return problems;
}

static void print_answer(const Arguments& arguments, const fleet::Question& question,
                         const fleet::Ask& ask, const fleet::Answer& answer) {
  std::string since = fleet::time_text(ask.since), until = fleet::time_text(ask.until);
  std::string cut;
  if (answer.is_cut)
    cut = fmt::format("only the first {}; use --rows for more",
                      records::counted(static_cast<uint64_t>(ask.rows), "row"));
  if (arguments.json) {
    nlohmann::ordered_json object = {{"question", question.name},
                                     {"since", since},
                                     {"until", until},
                                     {"rows", fleet::as_json(answer)},
                                     {"problems", problems_of(cut)}};
    fmt::print("{}\n", printable_json(object, 2));
  } else if (arguments.has("--csv")) {
    fmt::print("{}", printable(fleet::as_csv(answer), "\r\n"));
  } else {
    fmt::print("{}", printable(fleet::as_table(answer), "\n"));
  }
  if (answer.rows.empty()) warn("none from " + since + " to " + until);
  if (!cut.empty()) warn(cut);
}

static Findings ask(const Arguments& arguments) {
  if (!arguments.has("QUESTION")) return list_questions();
  const fleet::Question* question = fleet::find_question(arguments.text("QUESTION"));
  if (question == nullptr) {
    throw UsageError("no question \"" + arguments.text("QUESTION") +
                     "\"; zopctl fleet ask DB lists them");
  }
  if (question->name == "history" && !arguments.has("--host")) {
    throw UsageError("history is of one device; name it by --host");
  }
  Reading reading(arguments.text("DB"));
  fleet::Ask values = values_of(*reading.store, arguments);
  print_answer(arguments, *question, values, fleet::answer_of(*reading.store, *question, values));
  return {};
}

// ---- page ----

static Findings page(const Arguments& arguments) {
  std::string file = arguments.has("--output") ? arguments.text("--output") : "-";
  if (file == "-" && arguments.json) {
    throw UsageError("standard output is for the JSON; use -o fleet.html");
  }
  if (!arguments.has("--output") && isatty(STDOUT_FILENO) != 0) {
    throw UsageError("no output file; use -o fleet.html");
  }
  Reading reading(arguments.text("DB"));
  fleet::Ask values = values_of(*reading.store, arguments);
  page::write_page(file, fleet::page_of(*reading.store, values), check_signals);
  if (!arguments.json) return {};
  return one_section("page", "Page", {shown("file", "File", file, file)});
}

// ---- the verbs ----

static const Argument DB = {.name = "DB",
                            .help = "SQLite file, or clickhouse://host:8123/database"};
static const Argument STATE = {
    .name = "--state", .help = "file for how far logs are read, when the rows are on a server"};
static const Argument LAST = {.name = "--last", .help = "how far back to look; default 7d"};
static const Argument UNTIL = {.name = "--until",
                               .help = "up to when, UTC; default the newest report"};
static const Argument SILENT = {.name = "--silent",
                                .help = "a device is silent after so long; default 26h"};

const Verbs FLEET_VERBS = {
    {.noun = "fleet",
     .name = "load",
     .help = "read logs into a database; what is there already is left out",
     .arguments = {DB,
                   {.name = "LOG", .help = "logs, oldest first; - is standard input", .list = true},
                   STATE},
     .run_alone = load},
    {.noun = "fleet",
     .name = "follow",
     .help = "keep the lines of a log that come on standard input",
     .arguments = {DB,
                   {.name = "--confirm",
                    .help = "confirm lines as rsyslog's omprog wants it",
                    .flag = true},
                   STATE},
     .run_alone = follow},
    {.noun = "fleet",
     .name = "ask",
     .help = "answer a question about the devices",
     .arguments =
         {DB,
          {.name = "QUESTION", .help = "one of those that are listed without it", .optional = true},
          {.name = "--host", .help = "the device, for its history"},
          LAST,
          UNTIL,
          SILENT,
          {.name = "--rows", .help = "at most; default 1000", .range = Range{1, 100'000'000}},
          {.name = "--csv", .help = "print CSV", .flag = true}},
     .run_alone = ask},
    {.noun = "fleet",
     .name = "page",
     .help = "make an HTML page of what stands out",
     .arguments = {DB,
                   {.name = "--output",
                    .help = "the page; default standard output",
                    .short_name = "-o"},
                   LAST,
                   UNTIL,
                   SILENT},
     .run_alone = page},
};

}  // namespace zopctl
