// zop_faults: every function against every fault of the line. Prints the differences from
// docs/faults.md and exits with 1 if there are any; rewrites the page's table on request.
//
// A crash, or the conductor's abort at a deadlock, is reported with its row: the signal handlers
// print the buffer that names it.
#include <fmt/format.h>
#include <signal.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstring>
#include <fstream>
#include <iostream>
#include <regex>
#include <thread>

#include "tests/faults/page.h"
#include "tests/support/holdings.h"

using namespace test;

enum { SHOWN_COMPLAINTS = 100 };

static char current_row[256] = "start";

static void end_at_current_row(int) {
  (void)!write(STDERR_FILENO, "zop_faults: crashed: ", 21);
  (void)!write(STDERR_FILENO, current_row, strlen(current_row));
  (void)!write(STDERR_FILENO, "\n", 1);
  _exit(1);
}

static void catch_crashes() {
  signal(SIGABRT, end_at_current_row);
#ifndef ZOP_SANITIZED
  for (int crash : {SIGSEGV, SIGBUS, SIGFPE, SIGILL}) signal(crash, end_at_current_row);
#endif
}

// ---- the run ----

namespace {
struct Run {
  size_t every = 1;
  std::string only;
  Page expected;
  size_t rows = 0, complaints = 0;

  void complain(const std::string& where, const std::string& what) {
    if (++complaints <= SHOWN_COMPLAINTS) std::cerr << where << ": " << what << '\n';
  }
  void compare(const std::string& where, const std::string& what, const std::string& got,
               const std::string& wanted) {
    if (got != wanted) complain(where, fmt::format("{} {}, not {}", what, got, wanted));
  }
};
}  // namespace

static Row try_row(const Call& call, const Healthy& healthy, const Fault& fault,
                   const std::string& expected, Run& run) {
  snprintf(current_row, sizeof current_row, "%s, %s", call.name.c_str(), fault.text.c_str());
  Row row = make_row(call, healthy, fault);
  ++run.rows;
  if (row.complaint.empty()) row.complaint = difference(expected, row);
  if (!row.complaint.empty()) run.complain(current_row, row.complaint);
  return row;
}

static Columns try_function(const Call& call, Run& run) {
  Healthy healthy = make_healthy(call);
  std::vector<Fault> faults = all_faults(healthy);
  Columns shown = {"`" + call.name + "`", std::to_string(healthy.outcome.result),
                   std::to_string(faults.size())};
  Columns& expected = run.expected.functions[shown[0]];
  expected.resize(CELLS + columns().size());
  run.compare(call.name, "on a good line the result is", shown[1], expected[1]);
  run.compare(call.name, "the number of cases is", shown[2], expected[2]);
  std::vector<Cell> cells(columns().size());
  for (size_t i = 0; i < faults.size(); ++i) {
    size_t column = faults[i].column;
    if (i % run.every != 0 && !cells[column].results.empty()) continue;
    cells[column].add(try_row(call, healthy, faults[i], expected[CELLS + column], run));
  }
  for (const Cell& cell : cells) {
    shown.push_back(cell.text());
    const char* column = columns()[shown.size() - 1 - CELLS].name;
    if (run.every == 1) run.compare(call.name, column, shown.back(), expected[shown.size() - 1]);
  }
  return shown;
}

static std::vector<Columns> try_all(Run& run) {
  run.compare(EXPECTED, "the number of functions is", std::to_string(every_call().size()),
              std::to_string(run.expected.functions.size()));
  std::vector<Columns> functions;
  for (const Call& call : every_call()) {
    if (call.name.find(run.only) == std::string::npos) continue;
    Holdings before = holdings();
    functions.push_back(try_function(call, run));
    Holdings after = holdings_like(before);
    run.compare(call.name, "the number of open files is", std::to_string(after.descriptors),
                std::to_string(before.descriptors));
    run.compare(call.name, "the number of threads is", std::to_string(after.threads),
                std::to_string(before.threads));
  }
  return functions;
}

// Every exported function has a row, or the page says why it has none.
static void look_for_missing(Run& run) {
  std::ifstream file(INTERFACE);
  static const std::regex function("<elf-symbol name='(\\w+)' type='func-type'");
  std::set<std::string> named = run.expected.without_row;
  for (const Call& call : every_call()) named.insert(call.name.substr(0, call.name.find(' ')));
  size_t functions = 0;
  std::smatch match;
  for (std::string line; std::getline(file, line);) {
    if (!std::regex_search(line, match, function)) continue;
    ++functions;
    if (!named.contains(match[1])) run.complain(match[1], "has no row and no reason");
  }
  if (functions == 0) run.complain(INTERFACE, "names no function");
}

int main(int argc, char** argv) {
  CLI::App app("Every function of the module against every fault of the line.");
  Run run;
  bool rewrite = false;
  auto* every =
      app.add_option("--every", run.every, "take one row in N, and the first of each fault")
          ->check(CLI::PositiveNumber);
  auto* only = app.add_option("--only", run.only, "functions with this in their name");
  app.add_flag("--rewrite", rewrite, "write the table into docs/faults.md")
      ->excludes(every)
      ->excludes(only);
  CLI11_PARSE(app, argc, argv);
  setenv("TZ", "UTC", 1);
  catch_crashes();
  std::thread([] {}).join();                 // a sanitizer starts its own thread with the first one
  (void)!freopen("/dev/null", "w", stdout);  // for what commands print

  run.expected = read_page(EXPECTED);
  look_for_missing(run);
  std::vector<Columns> functions = try_all(run);
  if (rewrite) rewrite_page(EXPECTED, functions);
  fmt::print(stderr, "{} calls, {} rows, {} differences from docs/faults.md\n", functions.size(),
             run.rows, run.complaints);
  return run.complaints == 0 ? 0 : 1;
}
