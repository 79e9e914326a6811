// A sample is one vurn_get_bars, which asks the modem, and one vurn_get_log_string, which keeps its
// field testing on, so that screens arrive and fill the next report.
#include "zopctl/live/sampler.h"

#include <fmt/format.h>

#include <utility>

#include "records/report_form.h"
#include "zopctl/host/refusals.h"
#include "zopctl/host/standard_output.h"
#include "zopctl/host/report_text.h"
#include "zopctl/host/session.h"
#include "zopctl/host/signals.h"

namespace zopctl {

constexpr unsigned WATCHED =
    VURN_LOG_EVENTS | VURN_LOG_STUCK | VURN_LOG_GENERAL | VURN_LOG_WARNING | VURN_LOG_ERROR;
constexpr size_t MAX_EVENTS = 1000;  // between two samples

// ---- the log ----

namespace {
struct Notice {
  const char* line;  // part of the module's
  const char* event;
};
}  // namespace
static const Notice NOTICES[] = {
    {"Call originate callback", "call originated"},
    {"Call end callback", "call ended"},
    {"PDP Activate callback", "data connection (PDP) activated"},
    {"PDP Deactivate callback", "data connection (PDP) deactivated"},
};

// "... E zop:NAME:fields:text" from its letter on; empty for lines of lower priority.
static std::string complaint_of(const std::string& line) {
  for (const char* mark : {"E zop:", "W zop:"}) {
    size_t at = line.find(mark);
    if (at != std::string::npos) return line.substr(at);
  }
  return "";
}

static std::string event_of(const std::string& line) {
  for (const Notice& notice : NOTICES) {
    if (line.find(notice.line) != std::string::npos) return notice.event;
  }
  return complaint_of(line);
}

ModuleWatch::ModuleWatch(const ModuleLibrary& module, bool lines_go_on)
    : log_(
          module, WATCHED, [this](const std::string& line) { take(line); }, lines_go_on) {}

void ModuleWatch::take(const std::string& line) {
  constexpr std::string_view STATE = "newState=";
  std::lock_guard lock(mutex_);
  size_t state = line.find(STATE);
  if (state != std::string::npos) {
    state += STATE.size();
    deferred_ = line.substr(state, line.find(' ', state) - state);
    return;
  }
  std::string event = event_of(line);
  bool is_new = !event.empty() && (events_.empty() || events_.back() != event);
  if (is_new && events_.size() < MAX_EVENTS) events_.push_back(event);
}

std::vector<std::string> ModuleWatch::take_events() {
  std::lock_guard lock(mutex_);
  return std::exchange(events_, {});
}

std::string ModuleWatch::deferred() const {
  std::lock_guard lock(mutex_);
  return deferred_;
}

// ---- samples ----

// Null until the modem's first screen has come: the report holds old values before.
static records::Json read_report(const ModuleLibrary& m) {
  std::string report = log_string(m);
  return has_screen(report) ? records::report_of_text(report) : nullptr;
}

// Checks the device first: vurn_open would wait for one that is not there.
void Sampler::reopen(Sample& sample) {
  {
    QuietOutput quiet;
    module_.vurn_close(0);
    if (device_problem(mapped_device())) return;
    if (module_.vurn_open() != VURN_OK) return;
  }
  sample.bars = read_bars(module_);
}

Sample Sampler::take() {
  Sample sample;
  sample.bars = read_bars(module_);
  if (is_lost(sample.bars)) reopen(sample);
  sample.link_is_open = !is_lost(sample.bars);
  if (sample.link_is_open) {
    sample.report = read_report(module_);
  } else {
    sample.bars.reason = "no modem on the port";
  }
  sample.time = modem_now();
  sample.deferred = watch_.deferred();
  sample.events = watch_.take_events();
  add_changes(sample);
  return sample;
}

namespace {
struct Followed {
  const char* name;
  const char* section;
  const char* key;
};
}  // namespace
static const Followed FOLLOWED[] = {
    {"Network", "network", "name"},
    {"MCC", "network", "mcc"},
    {"MNC", "network", "mnc"},
    {"Band", "network", "band"},
    {"Cell", "network", "cell_id"},
    {"Roaming", "state", "roaming"},
    {"System mode", "state", "system_mode"},
    {"Data service", "state", "data_service"},
    {"Service", "status", "service"},
    {"Registration", "status", "registration"},
    {"Call", "status", "call"},
    {"GMM attach", "status", "gmm_attach"},
    {"PDP", "status", "pdp_state"},
    {"SIM", "sim", "status"},
    {"PIN", "sim", "lock"},
};

void Sampler::add_changes(Sample& sample) {
  if (sample.link_is_open != was_open_) {
    sample.events.push_back(sample.link_is_open ? "the link is back" : "the link is lost");
  }
  was_open_ = sample.link_is_open;
  if (sample.report.is_null()) return;
  for (const Followed& row : FOLLOWED) {
    std::string before = last_.text(row.section, row.key);
    std::string now = sample.text(row.section, row.key);
    if (last_.report.is_null() || now == before) continue;
    sample.events.push_back(fmt::format("{}: {} -> {}", row.name, before, now));
  }
  last_ = sample;
}

}  // namespace zopctl
