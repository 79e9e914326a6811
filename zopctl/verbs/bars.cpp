// zopctl bars: the signal bars that a host shows, once or periodically.
#include "zopctl/host/bars.h"

#include <fmt/format.h>

#include "zopctl/text/words.h"
#include "zopctl/verbs/verbs.h"
#include "zopctl/verbs/watch.h"

namespace zopctl {

static Findings findings_of(const Bars& found) {
  Item bars = shown("bars", "Bars", found.bars, bars_picture(found.bars));
  if (found.bars < 0) bars = unknown("bars", "Bars", "none: " + found.reason);
  if (!found.is_known()) bars = failed("bars", "Bars", found.reason);
  return one_section("signal", "Signal", {bars});
}

static WatchSample sample_of(const Bars& found) {
  return {json_of(findings_of(found)),
          fmt::format("{}  {}", bars_picture(found.bars), found.reason), is_lost(found)};
}

static Findings show(const ModuleLibrary& m, const Arguments& arguments) {
  auto sample = [&] { return sample_of(read_bars(m)); };
  auto reopen = [&] {
    m.vurn_close(0);
    m.vurn_open();
  };
  if (arguments.has("--watch")) watch(arguments, sample, reopen);
  return findings_of(read_bars(m));
}

const Verb BARS = {.name = "bars",
                   .help = "the signal bars that a host shows, or why there are none",
                   .need = Session::MODULE,
                   .arguments = {watch_argument()},
                   .run = show};

}  // namespace zopctl
