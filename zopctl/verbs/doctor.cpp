// zopctl doctor: checks every step from the device node to the network, prints a line for each, and
// says what is wrong and what to try. It stops where later checks would be meaningless.
#include <fmt/chrono.h>
#include <fmt/format.h>

#include "zopctl/host/host_calls.h"
#include "zopctl/host/log_capture.h"
#include "zopctl/host/standard_output.h"
#include "zopctl/host/session.h"
#include "zopctl/host/signals.h"
#include "zopctl/text/words.h"
#include "zopctl/verbs/verbs.h"

namespace zopctl {

using Json = nlohmann::ordered_json;

namespace {
// The result of one check. BAD and DOUBTFUL ones come with advice.
struct Check {
  enum State { GOOD, DOUBTFUL, BAD } state;
  std::string found;
  std::string advice;
};
}  // namespace

static const char* const STATE_NAMES[] = {"ok", "look", "bad"};

static Item line(const char* key, const char* label, const Check& check) {
  std::string advice = check.advice.empty() ? "" : "; " + check.advice;
  Json value = {{"state", STATE_NAMES[check.state]}, {"found", check.found}};
  if (!check.advice.empty()) value["advice"] = check.advice;
  std::string text = fmt::format("{:4}  {}{}", STATE_NAMES[check.state], check.found, advice);
  return {key, label, value, text, check.state == Check::BAD};
}

static Check device() {
  if (auto problem = device_problem(mapped_device())) {
    size_t end = problem->find("; ");
    std::string advice = end == std::string::npos ? "" : problem->substr(end + 2);
    return {Check::BAD, problem->substr(0, end), advice};
  }
  return {Check::GOOD, mapped_device() + " is a serial device and can be opened", ""};
}

static Check probe(const ModuleLibrary& m) {
  unsigned result = m.zop_open(MODULE_DEVICE);
  if (result == ZOP_OPEN_UP) return {Check::GOOD, "the modem answers", ""};
  return {Check::BAD, fmt::format("no answer in five attempts (zop_open, result {})", result),
          "is this the DIAG port, and not in use? Unplug the modem and plug it in again"};
}

static Check card(const ModuleLibrary& m) {
  uint32_t status = 0, lock = 0, retries = 0;
  unsigned result = m.zop_simcard_status(&status, &lock, &retries);
  if (result != ZOP_SUCCESS) return {Check::BAD, zop_result(result), "restart the modem"};
  std::string found =
      fmt::format("{}; {}; {} tries left", sim_status(status), lock_status(lock), retries);
  if (status == ZOP_SIM_READY) return {Check::GOOD, found, ""};
  if (lock == ZOP_PIN_BLOCKED) {
    return {Check::BAD, found, "unblock it with zopctl sim unblock and the unblocking key"};
  }
  if (status == ZOP_SIM_NOT_INITIALISED && lock == ZOP_PIN_ENABLED) {
    return {Check::BAD, found, "enter the PIN with zopctl sim verify"};
  }
  if (status == ZOP_SIM_NOT_READY) return {Check::DOUBTFUL, found, "wait, it may get ready"};
  return {Check::BAD, found, "is a card in the slot, the right way round?"};
}

static Check opened(const ModuleLibrary& m) {
  LogCapture log(m, VURN_LOG_ERROR);
  QuietOutput quiet;
  int result = m.vurn_open();
  if (result == VURN_OK) return {Check::GOOD, "the module opens", ""};
  std::string last = log.text().substr(0, log.text().find('\n'));
  return {Check::BAD, "vurn_open, " + vurn_result(result) + ": " + last, "see the lines above"};
}

static Check registered(const ModuleLibrary& m) {
  uint32_t value = 0;
  unsigned result = m.zop_get_registration_status(&value);
  if (result != ZOP_SUCCESS) return {Check::BAD, zop_result(result), "try again"};
  if (value == ZOP_REGISTRATION_SUCCESS) return {Check::GOOD, registration(value), ""};
  return {Check::BAD, registration(value), "is an antenna connected, and the card allowed here?"};
}

static Check attached(const ModuleLibrary& m) {
  int32_t state = 0, cause = 0;
  unsigned result = m.zop_get_gmm_attach_state(&state, &cause);
  if (result != ZOP_SUCCESS) return {Check::BAD, zop_result(result), "try again"};
  if (state == ZOP_ATTACH_ACCEPTED) return {Check::GOOD, "attached to the packet network", ""};
  return {Check::BAD, fmt::format("not attached: state {}, 3GPP TS 24.008 cause {}", state, cause),
          "does the subscription include data?"};
}

static Check served(const ModuleLibrary& m) {
  int32_t value = 0;
  unsigned result = m.zop_get_service_status(&value);
  if (result != ZOP_SUCCESS) return {Check::BAD, zop_result(result), "try again"};
  if (value == ZOP_SERVICE_FULL) return {Check::GOOD, service(value), ""};
  return {Check::BAD, service(value),
          "see zopctl plmn list forbidden, zopctl signal and zopctl config show"};
}

static Check bars(const ModuleLibrary& m) {
  int value = 0;
  QuietOutput quiet;
  int result = m.vurn_get_bars(&value);
  if (result != VURN_OK) {
    return {Check::BAD, vurn_result(result), "watch it with zopctl bars --watch 5"};
  }
  if (value > 1) return {Check::GOOD, bars_picture(value), ""};
  return {value == 1 ? Check::DOUBTFUL : Check::BAD, bars_picture(value),
          "zopctl signal shows the levels; check the antenna"};
}

static Check network_time(const ModuleLibrary& m) {
  time_t when = 0;
  int offset = 0;
  int result = m.vurn_get_module_time(&when, &offset);
  if (result == VURN_OK) {
    tm local{};
    localtime_r(&when, &local);
    return {Check::GOOD, fmt::format("{:%Y-%m-%d %H:%M:%S}", local), ""};
  }
  if (result != VURN_ERR_TIME_NOT_PROVIDED) return {Check::BAD, vurn_result(result), "try again"};
  return {Check::DOUBTFUL, vurn_result(result), "not every network sends it; use zopctl time set"};
}

// The conditions of the module's stuck-modem detectors, as they are now.
static Check stuck_signs(const ModuleLibrary& m) {
  int32_t rau = 0, rau_error = 0, pdp = 0, reject = 0;
  uint32_t call = 0;
  unsigned result = m.zop_get_gmm_rau_state(&rau, &rau_error);
  if (result == ZOP_SUCCESS) result = m.zop_get_call_status(&call);
  if (result == ZOP_SUCCESS) result = m.zop_get_pdp_state(&pdp, &reject);
  if (result != ZOP_SUCCESS) return {Check::BAD, zop_result(result), "try again"};
  if (rau == ZOP_RA_UPDATE_REJECTED && rau_error == ZOP_CAUSE_PROTOCOL_ERROR) {
    return {Check::BAD, "routing-area update rejected (cause 111)",
            "after 60 s without an attach the module considers the modem stuck: restart it"};
  }
  if (call == ZOP_CALL_IDLE && (pdp == ZOP_PDP_ACTIVE_PENDING || pdp == ZOP_PDP_ACTIVE)) {
    return {Check::DOUBTFUL, "data connection active without a call",
            "after 5 s the module considers the modem stuck: restart it"};
  }
  if (reject != ZOP_CAUSE_NONE) {
    return {Check::DOUBTFUL, fmt::format("data connection refused (cause {})", reject),
            "see zopctl plmn list forbidden and zopctl profile list"};
  }
  return {Check::GOOD, "no sign of a stuck modem", ""};
}

// Adds a line. False if the checks that depend on this one can't run.
static bool add(Section& section, const char* key, const char* label, const Check& check) {
  check_signals();
  section.items.push_back(line(key, label, check));
  return check.state != Check::BAD;
}

static bool check_link(const ModuleLibrary& m, Section& section) {
  if (!add(section, "device", "Device", device())) return false;
  if (!add(section, "probe", "Modem", probe(m))) return false;
  bool good = add(section, "sim", "SIM", card(m));
  m.zop_close();
  return good;
}

static void check_network(const ModuleLibrary& m, Section& section) {
  add(section, "registration", "Registration", registered(m));
  add(section, "attach", "Attach", attached(m));
  add(section, "service", "Service", served(m));
  add(section, "bars", "Bars", bars(m));
  add(section, "time", "Network time", network_time(m));
  add(section, "stuck", "Stuck signs", stuck_signs(m));
}

static Findings doctor(const ModuleLibrary& m, const Arguments&) {
  Section section{"doctor", "From the device to the network", {}};
  if (!check_link(m, section)) return {section};
  if (!add(section, "open", "Module", opened(m))) return {section};
  check_network(m, section);
  m.vurn_close(1);
  return {section};
}

const Verb DOCTOR = {.name = "doctor",
                     .help = "check every step from device to network and say what to try",
                     .need = Session::LIBRARY,
                     .run = doctor};

}  // namespace zopctl
