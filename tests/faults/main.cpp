// zop_faults: every function against every fault of the line. Prints the differences from
// docs/faults.md and exits with 1 if there are any; rewrites the page on request.
//
// A crash, or the conductor's abort at a deadlock, is reported with its row: the signal handlers
// print the buffer that names it.
#include <fcntl.h>
#include <fmt/format.h>
#include <signal.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstring>
#include <fstream>
#include <iostream>
#include <regex>
#include <sstream>
#include <thread>

#include "tests/faults/table.h"
#include "tests/support/holdings.h"

using namespace test;

enum { SHOWN_COMPLAINTS = 100, FEW_BITS_ABOVE_BYTES = 250 };

static char row_under_way[256] = "start";

static void end_at_row(const char* what) {
  (void)!write(STDERR_FILENO, what, strlen(what));
  (void)!write(STDERR_FILENO, row_under_way, strlen(row_under_way));
  (void)!write(STDERR_FILENO, "\n", 1);
  _exit(1);
}

static void catch_crashes() {
  signal(SIGABRT, [](int) { end_at_row("zop_faults: aborted: "); });
#ifndef ZOP_SANITIZED
  for (int crash : {SIGSEGV, SIGBUS, SIGFPE, SIGILL}) {
    signal(crash, [](int) { end_at_row("zop_faults: crashed: "); });
  }
#endif
}

static void begin_row(const Call& call, const Fault& fault) {
  snprintf(row_under_way, sizeof row_under_way, "%s, %s, answer %zu, byte %zu, way %u",
           call.name.c_str(), name_of(fault.kind), fault.answer, fault.at, fault.way);
}

// ---- the run ----

namespace {
struct Run {
  size_t every = 1;
  std::string only;
  Table expected;
  size_t rows = 0, complaints = 0;

  void complain(const std::string& where, const std::string& what) {
    if (++complaints <= SHOWN_COMPLAINTS) std::cerr << where << ": " << what << '\n';
  }
};
}  // namespace

static size_t bytes_in(const std::vector<Bytes>& frames) {
  size_t bytes = 0;
  for (const Bytes& frame : frames) bytes += frame.size();
  return bytes;
}

static Columns try_function(const Call& call, Run& run) {
  Holdings before = holdings();
  Healthy healthy = make_healthy(call);
  bool few_bits = bytes_in(healthy.frames) > FEW_BITS_ABOVE_BYTES;
  std::vector<Fault> faults = all_faults(healthy.frames, few_bits);
  Columns columns = {"`" + call.name + "`", std::to_string(healthy.outcome.result),
                     std::to_string(faults.size())};
  Columns& expected = run.expected[columns[0]];
  expected.resize(CELLS + FAULT_KINDS);
  if (!std::equal(columns.begin(), columns.end(), expected.begin())) {
    run.complain(call.name, fmt::format("result {} on a good line and {} cases, not {} and {}",
                                        columns[1], columns[2], expected[1], expected[2]));
  }
  std::array<Cell, FAULT_KINDS> cells;
  for (size_t i = 0; i < faults.size(); ++i) {
    const Fault& fault = faults[i];
    auto kind = static_cast<size_t>(fault.kind);
    if (i % run.every != 0 && !cells[kind].results.empty()) continue;
    begin_row(call, fault);
    Row row = make_row(call, healthy, fault);
    ++run.rows;
    cells[kind].add(row);
    if (row.complaint.empty()) row.complaint = difference(expected[CELLS + kind], row);
    if (!row.complaint.empty()) run.complain(row_under_way, row.complaint);
  }
  Holdings after = holdings_like(before);
  if (after != before) {
    run.complain(call.name,
                 fmt::format("descriptors {} -> {}, threads {} -> {}", before.descriptors,
                             after.descriptors, before.threads, after.threads));
  }
  for (const Cell& cell : cells) columns.push_back(cell.text());
  return columns;
}

static std::vector<Columns> try_all(Run& run) {
  size_t expected = run.expected.size();
  if (expected != every_call().size()) {
    run.complain(EXPECTED, fmt::format("has {} functions, not {}", expected, every_call().size()));
  }
  std::vector<Columns> functions;
  for (const Call& call : every_call()) {
    if (!run.only.empty() && call.name.find(run.only) == std::string::npos) continue;
    functions.push_back(try_function(call, run));
  }
  return functions;
}

// Every exported function has a row, or a reason for having none.
static void look_for_missing(Run& run) {
  std::ifstream file(INTERFACE);
  std::stringstream text;
  text << file.rdbuf();
  std::string all = text.str();
  static const std::regex function("<elf-symbol name='(\\w+)' type='func-type'");
  auto is_named = [](const std::string& name) {
    auto has_row = [&](const Call& call) {
      return call.name.substr(0, call.name.find(' ')) == name;
    };
    auto has_reason = [&](const Silent& silent) { return silent.name == name; };
    return std::ranges::any_of(every_call(), has_row) ||
           std::ranges::any_of(silent_functions(), has_reason);
  };
  size_t functions = 0;
  for (std::sregex_iterator it(all.begin(), all.end(), function), end; it != end; ++it) {
    ++functions;
    if (!is_named((*it)[1])) run.complain((*it)[1], "has no row and no reason");
  }
  if (functions == 0) run.complain(INTERFACE, "names no function");
}

// Keeps what commands print out of the summary on standard output.
static int take_standard_output() {
  int kept = dup(STDOUT_FILENO);
  int nothing = open("/dev/null", O_WRONLY);
  dup2(nothing, STDOUT_FILENO);
  close(nothing);
  return kept;
}

int main(int argc, char** argv) {
  CLI::App app("Every function of the module against every fault of the line.");
  Run run;
  std::string markdown;
  app.add_option("--every", run.every, "take one row in N, and the first of each fault")
      ->check(CLI::PositiveNumber);
  app.add_option("--only", run.only, "functions with this in their name");
  app.add_option("--markdown", markdown, "write the table to this file");
  CLI11_PARSE(app, argc, argv);
  setenv("TZ", "UTC", 1);
  catch_crashes();
  std::thread([] {}).join();  // a sanitizer starts its own thread with the first one
  int output = take_standard_output();

  std::ifstream table(EXPECTED);
  run.expected = read_markdown(table);
  look_for_missing(run);
  std::vector<Columns> functions = try_all(run);
  if (!markdown.empty()) {
    std::ofstream file(markdown);
    write_markdown(file, functions);
  }
  fflush(stdout);
  dup2(output, STDOUT_FILENO);
  fmt::print("{} calls, {} rows, {} not as they must be\n", functions.size(), run.rows,
             run.complaints);
  return run.complaints == 0 ? 0 : 1;
}
