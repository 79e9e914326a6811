// zopctl doctor: checks every step from the device node to the network, prints a line for each, and
// says what is wrong and what to try. It stops where later checks would be meaningless.
#include <fmt/chrono.h>
#include <fmt/format.h>

#include "zopctl/host/bars.h"
#include "zopctl/host/host_calls.h"
#include "zopctl/host/log_capture.h"
#include "zopctl/host/standard_output.h"
#include "zopctl/host/refusals.h"
#include "zopctl/host/session.h"
#include "zopctl/host/signals.h"
#include "zopctl/text/counted.h"
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
  Json value = {{"result", STATE_NAMES[check.state]}, {"found", check.found}, {"advice", nullptr}};
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
  if (answers_as_boot_rom()) return {Check::BAD, CRASHED, SAVE_MEMORY};
  if (result == ZOP_OPEN_UP) return {Check::GOOD, "the modem answers", ""};
  return {Check::BAD, fmt::format("no answer in five attempts (zop_open, result {})", result),
          "is this the DIAG port, and not in use? Unplug the modem and plug it in again"};
}

static Check card(const ModuleLibrary& m) {
  uint32_t status = 0, lock = 0, retries = 0;
  std::string why = problem(m.zop_simcard_status(&status, &lock, &retries));
  if (answers_as_boot_rom()) return {Check::BAD, CRASHED, SAVE_MEMORY};
  if (!why.empty()) return {Check::BAD, why, "try again; if it stays so, restart the modem"};
  std::string found = fmt::format("{}; {}; {} left", sim_status(status), lock_status(lock),
                                  counted(retries, "try", "tries"));
  std::string advice = sim_advice(status, lock);
  if (advice.empty()) return {Check::GOOD, found, ""};
  return {status == ZOP_SIM_NOT_READY ? Check::DOUBTFUL : Check::BAD, found, advice};
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
  std::string why = problem(m.zop_get_registration_status(&value));
  if (!why.empty()) return {Check::BAD, why, "try again"};
  if (value == ZOP_REGISTRATION_SUCCESS) return {Check::GOOD, registration(value), ""};
  if (value == ZOP_REGISTRATION_FAILED)
    return {Check::BAD, registration(value),
            "the network refused; may the card be used here? zopctl plmn list forbidden; ask the "
            "operator"};
  if (value == ZOP_REGISTRATION_NO_NETWORK)
    return {Check::BAD, registration(value),
            "zopctl cells shows what is received, zopctl config show a lock to a band; without any "
            "cell, is the antenna connected?"};
  return {Check::DOUBTFUL, registration(value), "the modem searches; wait, then try again"};
}

// What helps against a reject cause of 3GPP TS 24.008.
static const char* advice_for(int32_t cause) {
  switch (cause) {
    case 2:
    case 3:
    case 4:
    case 8:
      return "the network refuses this card: ask the operator";
    case 5:
    case 6:
      return "the network refuses this device: ask the operator about its IMEI";
    case 7:
    case 14:
      return "does the subscription include data here?";
    case 11:
    case 12:
    case 13:
    case 15:
      return "the card may not be used here; zopctl plmn list forbidden";
    case 16:
    case 17:
    case 22:
      return "the network has trouble; the modem goes on trying";
    default:
      return "ask the operator, with this cause";
  }
}

static Check attached(const ModuleLibrary& m) {
  int32_t state = 0, cause = 0;
  std::string why = problem(m.zop_get_gmm_attach_state(&state, &cause));
  if (!why.empty()) return {Check::BAD, why, "try again"};
  if (state == ZOP_ATTACH_ACCEPTED) return {Check::GOOD, "attached to the packet network", ""};
  if (cause == ZOP_CAUSE_NONE)
    return {Check::BAD, "not attached to the packet network",
            "the lines around tell why; the modem goes on trying"};
  return {Check::BAD, "packet network refused: " + reject_cause(cause), advice_for(cause)};
}

static Check served(const ModuleLibrary& m) {
  int32_t value = 0;
  std::string why = problem(m.zop_get_service_status(&value));
  if (!why.empty()) return {Check::BAD, why, "try again"};
  if (value == ZOP_SERVICE_FULL) return {Check::GOOD, service(value), ""};
  return {Check::BAD, service(value),
          "see zopctl plmn list forbidden, zopctl signal and zopctl config show"};
}

static Check bars(const ModuleLibrary& m) {
  Bars found = read_bars(m);
  if (!found.is_known()) return {Check::BAD, found.reason, "watch it with zopctl bars --watch 5"};
  std::string picture = bars_picture(found.bars);
  if (found.bars > 1) return {Check::GOOD, picture, ""};
  if (found.bars == 1)
    return {Check::DOUBTFUL, picture, "zopctl signal shows the levels; check the antenna"};
  return {Check::BAD, picture + ": " + found.reason, "the lines around tell what to do"};
}

static Check network_time(const ModuleLibrary& m) {
  time_t when = 0;
  int offset = 0;
  int result = m.vurn_get_module_time(&when, &offset);
  std::string why = host_problem(result);
  if (why.empty()) {
    tm local{};
    localtime_r(&when, &local);
    return {Check::GOOD, fmt::format("{:%Y-%m-%d %H:%M:%S}", local), ""};
  }
  if (result != VURN_ERR_TIME_NOT_PROVIDED || why != vurn_result(result))
    return {Check::BAD, why, "try again"};
  return {Check::DOUBTFUL, why, "not every network sends it; use zopctl time set"};
}

// The conditions of the module's stuck-modem detectors, as they are now.
static Check stuck_signs(const ModuleLibrary& m) {
  int32_t rau = 0, rau_error = 0, pdp = 0, reject = 0;
  uint32_t call = 0;
  std::string why = problem(m.zop_get_gmm_rau_state(&rau, &rau_error));
  if (why.empty()) why = problem(m.zop_get_call_status(&call));
  if (why.empty()) why = problem(m.zop_get_pdp_state(&pdp, &reject));
  if (!why.empty()) return {Check::BAD, why, "try again"};
  if (rau == ZOP_RA_UPDATE_REJECTED && rau_error == ZOP_CAUSE_PROTOCOL_ERROR) {
    return {Check::BAD, "routing-area update rejected (cause 111)",
            "after 60 s without an attach the module considers the modem stuck: restart it with "
            "zopctl config reset"};
  }
  if (call == ZOP_CALL_IDLE && (pdp == ZOP_PDP_ACTIVE_PENDING || pdp == ZOP_PDP_ACTIVE)) {
    return {Check::DOUBTFUL, "data connection active without a call",
            "after 5 s the module considers the modem stuck: restart it"};
  }
  if (reject != ZOP_CAUSE_NONE) {
    return {Check::DOUBTFUL, "data connection refused: " + pdp_cause(reject),
            "zopctl profile list shows the APN; does the subscription include it?"};
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
                     .need = Session::DEVICE,
                     .run = doctor};

}  // namespace zopctl
