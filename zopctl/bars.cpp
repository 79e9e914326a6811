// zopctl bars: what the host shows, and why there are none. The module's result does not tell the
// reason; its log lines do.
#include "zopctl/bars.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <chrono>

#include "zopctl/host_calls.h"
#include "zopctl/log_capture.h"
#include "zopctl/quiet_output.h"
#include "zopctl/session.h"
#include "zopctl/verbs.h"
#include "zopctl/words.h"

namespace zopctl {

using Json = nlohmann::ordered_json;

static const char LINK_LOST[] = "the link to the modem is lost";

struct Reason {
  const char* line;  // part of the module's
  const char* text;
};
static const Reason REASONS[] = {
    {"illegal network reject", "stuck: rejected by the network, and not attached since"},
    {"PDP active no PPP", "stuck: data connection active without a call"},
    {"all available PLMNs in FPLMN", "stuck: all networks are forbidden"},
    {"zop:gmmAttachState=", "not attached to the packet network"},
    {"zop:not registered", "not registered"},
    {"zop:serviceStatus=", "no full service"},
    {"zop:bars=-1", "limited service"},
    {"error=1:", LINK_LOST},
    {"error=2:", LINK_LOST},
};

Bars read_bars(const ModuleLibrary& m) {
  Bars found{VURN_OK, VURN_BARS_NONE, ""};
  LogCapture log(m, VURN_LOG_STUCK | VURN_LOG_EVENTS | VURN_LOG_ERROR);
  {
    QuietOutput quiet;
    found.result = m.vurn_get_bars(&found.bars);
  }
  if (found.result == VURN_OK && found.bars > 0) return found;
  for (const Reason& row : REASONS) {
    if (log.has(row.line)) return found.reason = row.text, found;
  }
  found.reason = vurn_result(found.result);
  return found;
}

static Findings findings_of(const Bars& found) {
  Item bars = {"bars", "Bars", found.bars, bars_picture(found.bars), false};
  if (found.result != VURN_OK) bars = {"bars", "Bars", nullptr, found.reason, true};
  Section section{"signal", "Signal", {bars}};
  if (!found.reason.empty() && found.result == VURN_OK) {
    section.items.push_back({"reason", "Reason", found.reason, found.reason, false});
  }
  return {section};
}

// One line a look: for people, or a JSON object.
static void print_sample(const Bars& found, bool json) {
  auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
  if (json) {
    Json sample = {{"time", fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", now)}, {"bars", nullptr}};
    if (found.result == VURN_OK) sample["bars"] = found.bars;
    if (!found.reason.empty()) sample["reason"] = found.reason;
    fmt::print("{}\n", sample.dump());
  } else {
    fmt::print("{:%H:%M:%S}  {}  {}\n", now, bars_picture(found.bars), found.reason);
  }
  if (fflush(stdout) != 0) throw Failure("the output could not be written; is the disk full?");
}

bool is_lost(const Bars& found) {
  return found.result == VURN_ERR_NOT_OPEN || found.reason == LINK_LOST;
}

// A modem that was unplugged is opened again as soon as it is back.
static void reopen_lost(const ModuleLibrary& m, const Bars& found) {
  if (!is_lost(found)) return;
  QuietOutput quiet;
  m.vurn_close(0);
  m.vurn_open();  // the next look tells
}

// Until the user ends it.
static void watch(const ModuleLibrary& m, uint32_t seconds, bool json) {
  for (;;) {
    Bars found = read_bars(m);
    print_sample(found, json);
    reopen_lost(m, found);
    wait_seconds(seconds);
  }
}

Findings bars_show(const ModuleLibrary& m, const Arguments& arguments) {
  if (arguments.has("--watch")) watch(m, arguments.number("--watch", 1, 86400), arguments.json);
  return findings_of(read_bars(m));
}

}  // namespace zopctl
