// Lines are flushed one by one: a program that reads them waits for no more.
#include "zopctl/verbs/watch.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <chrono>

#include "zopctl/host/host_calls.h"
#include "zopctl/host/refusals.h"
#include "zopctl/host/signals.h"
#include "zopctl/host/standard_output.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/folding.h"
#include "zopctl/text/printable.h"

namespace zopctl {

using Json = nlohmann::ordered_json;

static void print_sample(const WatchSample& sample, bool json) {
  auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
  if (json) {
    Json object = {{"time", fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", now)}};
    object.update(sample.values);
    fmt::print("{}\n", printable_json(object));
  } else {
    constexpr size_t AFTER_TIME = 10;
    fmt::print("{:%H:%M:%S}  {}\n", now,
               folded(printable(sample.line), AFTER_TIME, AFTER_TIME, terminal_columns()));
  }
  if (fflush(stdout) != 0) throw Failure("the output could not be written; is the disk full?");
}

void watch(const Arguments& arguments, const std::function<WatchSample()>& sample,
           const std::function<void()>& reopen) {
  uint32_t seconds = arguments.number("--watch");
  for (;;) {
    WatchSample now = sample();
    print_sample(now, arguments.json);
    if (now.is_lost) {
      QuietOutput quiet;
      reopen();  // a failure shows in the next sample
    }
    wait_seconds(seconds);
  }
}

static std::string line_of(const Findings& findings) {
  std::string line;
  for (const Section& section : findings) {
    for (const Item& item : section.items) {
      std::string value = item.value.is_null() ? "- (" + item.shown + ")" : item.shown;
      line += fmt::format("{}{} {}", line.empty() ? "" : "; ", item.label, value);
    }
  }
  return line;
}

static bool has_failed(const Section& section) {
  return std::ranges::all_of(section.items, &Item::failed);
}

void watch_findings(const ModuleLibrary& m, const Arguments& arguments,
                    Findings (*run)(const ModuleLibrary&)) {
  auto sample = [&]() -> WatchSample {
    Findings found = run(m);
    return {json_of(found), line_of(found), std::ranges::all_of(found, has_failed)};
  };
  auto reopen = [&] {
    m.zop_close();
    m.zop_open(MODULE_DEVICE);
    take_refusal();  // of an open, which concerns no sample
  };
  watch(arguments, sample, reopen);
}

}  // namespace zopctl
