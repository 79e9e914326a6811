// zopctl bars: the signal bars that a host shows, once or periodically.
#include "zopctl/host/bars.h"
#include "zopctl/host/standard_output.h"
#include "zopctl/host/signals.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/printable.h"
#include "zopctl/text/words.h"
#include "zopctl/verbs/verbs.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <chrono>

namespace zopctl {

using Json = nlohmann::ordered_json;

static Findings findings_of(const Bars& found) {
  Item bars = shown("bars", "Bars", found.bars, bars_picture(found.bars));
  if (found.bars < 0) bars = unknown("bars", "Bars", "none: " + found.reason);
  if (!found.is_known()) bars = failed("bars", "Bars", found.reason);
  return one_section("signal", "Signal", {bars});
}

// One line per sample: text or a JSON object.
static void print_sample(const Bars& found, bool json) {
  auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
  if (json) {
    Json sample = {{"time", fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", now)}, {"bars", nullptr}};
    if (found.is_known() && found.bars >= 0) sample["bars"] = found.bars;
    if (!found.reason.empty()) sample["reason"] = found.reason;
    fmt::print("{}\n", printable_json(sample));
  } else {
    fmt::print("{:%H:%M:%S}  {}  {}\n", now, bars_picture(found.bars), printable(found.reason));
  }
  if (fflush(stdout) != 0) throw Failure("the output could not be written; is the disk full?");
}

// Reconnects to a modem that was unplugged.
static void reopen_lost(const ModuleLibrary& m, const Bars& found) {
  if (!is_lost(found)) return;
  QuietOutput quiet;
  m.vurn_close(0);
  m.vurn_open();  // a failure shows in the next sample
}

// Runs until a signal ends it.
static void watch(const ModuleLibrary& m, uint32_t seconds, bool json) {
  for (;;) {
    Bars found = read_bars(m);
    print_sample(found, json);
    reopen_lost(m, found);
    wait_seconds(seconds);
  }
}

static Findings show(const ModuleLibrary& m, const Arguments& arguments) {
  if (arguments.has("--watch")) watch(m, arguments.number("--watch", 1, 86400), arguments.json);
  return findings_of(read_bars(m));
}

const Verb BARS = {
    .name = "bars",
    .help = "the signal bars that a host shows, or why there are none",
    .need = Session::MODULE,
    .arguments = {{.name = "--watch", .help = "seconds between samples; prints a line for each"}},
    .run = show};

}  // namespace zopctl
