// zopctl mcc, event, call-test: the module calls that only a host makes. This program stands in for
// the host's event platform.
#include <errno.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include "include/nubi.h"
#include "zopctl/host/log_capture.h"
#include "zopctl/host/refusals.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/words.h"
#include "zopctl/verbs/verbs.h"

struct NubiEvent {
  const char* source;
  const char* name;
  int parameter;
};

// The module resolves these symbols in this program.
#define EXPORTED extern "C" __attribute__((visibility("default")))
EXPORTED const char* NubiGetEventName(const NubiEvent* event) { return event->name; }
EXPORTED const char* NubiGetEventSource(const NubiEvent* event) { return event->source; }
EXPORTED int NubiGetIntParam(const NubiEvent* event, int* value) {
  *value = event->parameter;
  return 0;
}

namespace zopctl {

// Where the module keeps the country of the last check.
static constexpr char LAST_MCC[] = "/var/local/wan/mcc";

// Why it can't be said whether the country has changed; empty when it can.
static std::string why_unknown() {
  int last = open(LAST_MCC, O_RDONLY | O_CLOEXEC);  // this program's open: as the module's
  if (last < 0) return errno == ENOENT ? "this is the first check" : "the last check can't be read";
  char mcc[ZOP_MCC_SIZE];
  bool is_whole = read(last, mcc, sizeof mcc) == ssize_t{sizeof mcc};
  close(last);
  return is_whole ? "" : "what was kept of the last check is damaged";
}

// 001 is that of test networks. The module takes a number out of any text.
static bool is_country(int mcc) { return mcc == 1 || (mcc >= 200 && mcc <= 999); }

static Findings show_mcc(const ModuleLibrary& m, const Arguments&) {
  int mcc = 0;
  std::string unknown_for = why_unknown();
  LogCapture log(m, VURN_LOG_INFO);
  require_host(m.vurn_get_mcc(&mcc), "country");
  std::string text = fmt::format("{:03}", mcc);
  if (!is_country(mcc))
    return one_section("country", "Country",
                       {failed("mcc", "MCC", "the modem gave " + text + ", which is none"),
                        unknown("changed", "Changed", "the country is not known")});
  bool has_changed = log.has("zop:mccchanged:");
  Item changed =
      shown("changed", "Changed", has_changed, has_changed ? "yes, since the last check" : "no");
  if (!unknown_for.empty()) changed = unknown("changed", "Changed", unknown_for);
  return one_section("country", "Country", {shown("mcc", "MCC", text, text), changed});
}

static Findings ring(const ModuleLibrary& m, const Arguments& arguments) {
  int origin = static_cast<int>(arguments.number("ORIGIN"));
  NubiEvent event = {"com.orvane.hal", "wanRing", origin};
  require_host(m.vurn_report_event(&event), "event");
  nlohmann::ordered_json counts = nlohmann::ordered_json::array();
  std::string text;
  for (uint32_t count : m.gDiagInfo->ring_counts) {
    counts.push_back(count);
    text += fmt::format("{}{}", text.empty() ? "" : ", ", count);
  }
  uint8_t last = m.gDiagInfo->last_ring_origin;
  return one_section("wan", "Ring wake-ups, by origin 0 to 4 and others",
                     {shown("rings", "Counts", counts, text),
                      coded("last_ring_origin", "Last", last, ring_origin(last))});
}

static Findings downloaded(const ModuleLibrary& m, const Arguments&) {
  NubiEvent event = {"com.orvane.framework", "fileDownloaded", 0};
  LogCapture log(m, VURN_LOG_INFO);
  require_host(m.vurn_report_event(&event), "event");
  std::string line = log.text().substr(0, log.text().find('\n'));
  return one_section("event", "File downloaded", {shown("line", "Log line", line, line)});
}

// The log tells which step failed.
[[noreturn]] static void fail_call_test(const char* step, const std::string& why,
                                        const LogCapture& log) {
  fmt::print(stderr, "{}", log.text());
  throw Failure(fmt::format("the call test did not {}: {}", step, why), 1, ASK_DOCTOR);
}

static Findings start_call_test(const ModuleLibrary& m, const Arguments& arguments) {
  int test = static_cast<int>(arguments.number("TEST"));
  LogCapture log(m, VURN_LOG_ERROR);
  std::string why = host_problem(m.vurn_originate_call_test(test));
  if (!why.empty()) fail_call_test("start", why, log);
  std::string text = fmt::format("test {} is running; zopctl call-test stop ends it", test);
  return one_section("call_test", "Call test", {shown("test", "Started", test, text)});
}

// The module stops only a test of its own process, but zopctl call-test start was another one.
static Findings stop_call_test(const ModuleLibrary& m, const Arguments&) {
  LogCapture log(m, VURN_LOG_ERROR);
  *m.sTestNum = 1;
  std::string why = host_problem(m.vurn_stop_call_test());
  if (!why.empty()) fail_call_test("stop", why, log);
  return one_section("call_test", "Call test",
                     {shown("stopped", "Stopped", true, "call ended, factory test mode off")});
}

const Verb MCC = {
    .name = "mcc", .help = "the country code, and whether it has changed", .run = show_mcc};

const Verbs EVENT_VERBS = {
    {.noun = "event",
     .name = "wanRing",
     .help = "send the module a ring wake-up event",
     .need = Session::LIBRARY,
     .arguments = {{.name = "ORIGIN",
                    .help = "origin of the ring (the first five are counted separately)",
                    .range = Range{0, 0x7FFFFFFF}}},
     .run = ring},
    {.noun = "event",
     .name = "fileDownloaded",
     .help = "send the module a finished-download event; it logs the network",
     .need = Session::MODULE,
     .run = downloaded},
};

const Verbs CALL_TEST_VERBS = {
    {.noun = "call-test",
     .name = "start",
     .help = "start the factory call test",
     .need = Session::MODULE,
     .danger = "the modem changes its band and stays in a call until stopped",
     .arguments = {{.name = "TEST",
                    .help =
                        "the test (0 is factory test mode only, 1 WCDMA 850, 2 GSM 1900, others "
                        "keep the current band)",
                    .range = Range{0, 1000}}},
     .run = start_call_test},
    {.noun = "call-test",
     .name = "stop",
     .help = "end the factory call test",
     .need = Session::MODULE,
     .run = stop_call_test},
};

}  // namespace zopctl
