// zopctl status: read with the host interface where it has a call, otherwise with the command
// library.
#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstring>

#include "zopctl/host/refusals.h"
#include "zopctl/host/signals.h"
#include "zopctl/text/printable.h"
#include "zopctl/text/words.h"
#include "zopctl/verbs/verbs.h"

namespace zopctl {

static Item text_item(const char* key, const char* label, const std::string& value) {
  return value.empty() ? unknown(key, label, "empty") : shown(key, label, value, value);
}

// A text getter of the command library, of char or uint8_t.
template <typename Character>
static Item text(const char* key, const char* label, unsigned (*get)(Character*, uint32_t*)) {
  check_signals();
  std::array<Character, 256> buffer{};
  uint32_t size = buffer.size() - 1;
  std::string why = problem(get(buffer.data(), &size));
  if (!why.empty()) return failed(key, label, why);
  return text_item(key, label,
                   printable(std::string(buffer.begin(), std::ranges::find(buffer, 0))));
}

// One of the host interface. Without a SIM the module is not open, but the link is.
template <typename Character>
static Item text(const char* key, const char* label, int (*get)(char*, unsigned),
                 unsigned (*get_over_link)(Character*, uint32_t*)) {
  check_signals();
  char buffer[256] = {};
  int result = get(buffer, sizeof buffer - 1);
  if (result == VURN_ERR_NOT_OPEN) return text(key, label, get_over_link);
  std::string why = host_problem(result);
  if (!why.empty()) return failed(key, label, why);
  return text_item(key, label, printable(std::string_view(buffer)));
}

// A number from the command library.
static Item number(const char* key, const char* label, unsigned (*get)(uint32_t*)) {
  check_signals();
  uint32_t value = 0;
  if (std::string why = problem(get(&value)); !why.empty()) return failed(key, label, why);
  return shown(key, label, value, fmt::format("{0} (0x{0:X})", value));
}

// An enumeration from the command library.
template <typename Number>
static Item coded(const char* key, const char* label, unsigned (*get)(Number*),
                  std::string (*word)(Number)) {
  check_signals();
  Number value{};
  if (std::string why = problem(get(&value)); !why.empty()) return failed(key, label, why);
  return coded(key, label, value, word(value));
}

static Section identity(const ModuleLibrary& m) {
  return {"identity",
          "Identity",
          {text("imei", "IMEI", m.vurn_get_realm, m.zop_get_imei),
           text("imsi", "IMSI", m.vurn_get_imsi, m.zop_get_imsi),
           text("iccid", "ICCID", m.vurn_get_radio_cert_param1, m.zop_get_iccid),
           text("phone_number", "Phone number", m.vurn_get_radio_phone_number,
                m.zop_get_radio_phone_number),
           text("firmware", "Firmware", m.vurn_get_firmware_version, m.zop_get_firmware_version),
           text("hardware", "Hardware", m.zop_get_hardware_version),
           text("library", "Library", m.zop_get_tq2_version)}};
}

// Only the link is open without a SIM.
static std::string why_not(int result) {
  std::string why = host_problem(result);
  return result == VURN_ERR_NOT_OPEN ? "known when the SIM is ready" : why;
}

static Section sim(const ModuleLibrary& m) {
  check_signals();
  uint32_t status = 0, lock = 0, retries = 0;
  Section section{"sim", "SIM", {}};
  std::string reason = problem(m.zop_simcard_status(&status, &lock, &retries));
  if (!reason.empty()) {
    section.items = {failed("status", "Status", reason), failed("lock", "PIN", reason),
                     failed("pin_retries", "PIN tries left", reason),
                     shown("advice", "What to do", nullptr, "")};
    return section;
  }
  std::string advice = sim_advice(status, lock);
  section.items = {coded("status", "Status", status, sim_status(status)),
                   coded("lock", "PIN", lock, lock_status(lock)),
                   shown("pin_retries", "PIN tries left", retries, std::to_string(retries))};
  Item what_to_do = shown("advice", "What to do", nullptr, "");
  if (!advice.empty()) what_to_do = {"advice", "What to do", advice, advice, true};
  section.items.push_back(what_to_do);
  return section;
}

static Item roaming(const ModuleLibrary& m) {
  int roams = 0;
  std::string why = why_not(m.vurn_get_roaming_status(&roams));
  return why.empty() ? yes_or_no("roaming", "Roaming", roams != 0)
                     : failed("roaming", "Roaming", why);
}

// The modem gives the location area as "MCC-MNC 0xLAC".
static Item location_area(const ModuleLibrary& m) {
  Item item = text("lac", "LAC", m.zop_get_location_area_id);
  if (item.failed) return item;
  size_t hex = item.shown.find("0x");
  unsigned lac = 0;
  if (hex == std::string::npos || sscanf(item.shown.c_str() + hex, "0x%x", &lac) != 1) {
    return failed("lac", "LAC", "no location area in \"" + item.shown + "\"");
  }
  return shown("lac", "LAC", lac, fmt::format("{0} (0x{0:X})", lac));
}

// A part of a PLMN: digits, or it is no value.
template <typename Character>
static Item digits(const char* key, const char* label, unsigned (*get)(Character*, uint32_t*),
                   size_t least) {
  Item item = text(key, label, get);
  const std::string& value = item.shown;
  bool good = value.size() >= least && value.size() <= 3 && std::ranges::all_of(value, isdigit);
  if (item.value.is_null() || good) return item;
  return failed(key, label, fmt::format("the modem gave \"{}\"", value));
}

static Section network(const ModuleLibrary& m) {
  return {"network",
          "Network",
          {text("name", "Name", m.zop_get_network_name), digits("mcc", "MCC", m.zop_get_mcc, 3),
           digits("mnc", "MNC", m.zop_get_mnc, 2), location_area(m),
           number("rac", "RAC", m.zop_get_rac), number("cell_id", "Cell", m.zop_get_cell_id),
           coded("registration", "Registration", m.zop_get_registration_status, registration),
           roaming(m), coded("service", "Service", m.zop_get_service_status, service)}};
}

// The host interface does not tell HSDPA from WCDMA.
static Item data_mode(const ModuleLibrary& m) {
  int32_t mode = 0;
  std::string why = problem(m.zop_get_data_service_mode(&mode));
  if (!why.empty()) return failed("data_service", "Data service", why);
  if (mode == ZOP_DATA_UNKNOWN) return unknown("data_service", "Data service", "none");
  return coded("data_service", "Data service", mode, data_service(mode));
}

static Item rssi(const ModuleLibrary& m) {
  int dbm = 0;
  std::string why = why_not(m.vurn_get_rssi(&dbm));
  return why.empty() ? measured("rssi_dbm", "RSSI", dbm, "dBm") : failed("rssi_dbm", "RSSI", why);
}

static Section radio(const ModuleLibrary& m) {
  return {"radio",
          "Radio",
          {coded("system_mode", "System mode", m.zop_get_system_mode, system_mode), data_mode(m),
           coded("band", "Band", m.zop_get_band, band), rssi(m)}};
}

static std::string offset_text(int seconds) {
  int minutes = std::abs(seconds / 60);  // abs of INT_MIN would overflow
  return fmt::format("UTC{}{:02}:{:02}", seconds < 0 ? '-' : '+', minutes / 60, minutes % 60);
}

// The module takes the network's local time as being in this machine's zone; localtime_r undoes it.
static Section time_section(const ModuleLibrary& m) {
  check_signals();
  time_t when = 0;
  int offset = 0;
  Section section{"time", "Time", {}};
  int result = m.vurn_get_module_time(&when, &offset);
  std::string why = why_not(result);
  if (result == VURN_ERR_TIME_NOT_PROVIDED && why == vurn_result(result)) {
    const char* reason = "not sent by the network";
    section.items = {unknown("network_time", "Network time", reason),
                     unknown("utc_offset_s", "UTC offset", reason)};
  } else if (!why.empty()) {
    section.items = {failed("network_time", "Network time", why),
                     failed("utc_offset_s", "UTC offset", why)};
  } else {
    tm local{};
    localtime_r(&when, &local);
    std::string time = fmt::format("{:%Y-%m-%d %H:%M:%S}", local);
    section.items = {shown("network_time", "Network time", time, time + ", " + offset_text(offset)),
                     measured("utc_offset_s", "UTC offset", offset, "s")};
  }
  return section;
}

static Findings show_status(const ModuleLibrary& module, const Arguments&) {
  return {identity(module), sim(module), network(module), radio(module), time_section(module)};
}

const Verb STATUS = {.name = "status",
                     .help = "identity, SIM, network, mode, signal and time",
                     .need = Session::AT_LEAST_LINK,
                     .run = show_status};

}  // namespace zopctl
