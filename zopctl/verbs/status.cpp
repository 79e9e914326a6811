// zopctl status: read with the host interface where it has a call, otherwise with the command
// library.
#include <fmt/chrono.h>
#include <fmt/format.h>

#include <cstring>

#include "zopctl/host/signals.h"
#include "zopctl/text/printable.h"
#include "zopctl/text/words.h"
#include "zopctl/verbs/verbs.h"

namespace zopctl {

using Json = nlohmann::ordered_json;

static Item good(std::string key, std::string label, Json value, std::string shown) {
  return {std::move(key), std::move(label), std::move(value), std::move(shown), false};
}

static Item failed(std::string key, std::string label, std::string reason) {
  return {std::move(key), std::move(label), nullptr, std::move(reason), true};
}

// An enumeration: number and word for programs, the word for people.
static Item coded(const char* key, const char* label, int64_t code, const std::string& word) {
  return good(key, label, Json{{"code", code}, {"text", word}}, word);
}

static Item text_item(const char* key, const char* label, const std::string& value) {
  return good(key, label, value, value.empty() ? "(empty)" : value);
}

// Text getters of the host interface and of the command library.
using HostText = int (*)(char*, unsigned);
using LibraryText = unsigned (*)(uint8_t*, uint32_t*);

static Item text(const char* key, const char* label, HostText get) {
  check_signals();
  char buffer[256] = {};
  if (int result = get(buffer, sizeof buffer - 1)) return failed(key, label, vurn_result(result));
  return text_item(key, label, printable(std::string_view(buffer)));
}

static Item text(const char* key, const char* label, LibraryText get) {
  check_signals();
  uint8_t buffer[256] = {};
  uint32_t size = sizeof buffer - 1;
  if (unsigned result = get(buffer, &size)) return failed(key, label, zop_result(result));
  return text_item(key, label, printable(buffer));
}

// A number from the command library.
static Item number(const char* key, const char* label, unsigned (*get)(uint32_t*)) {
  check_signals();
  uint32_t value = 0;
  if (unsigned result = get(&value)) return failed(key, label, zop_result(result));
  return good(key, label, value, fmt::format("{0} (0x{0:X})", value));
}

// An enumeration from the command library.
template <typename Number>
static Item coded(const char* key, const char* label, unsigned (*get)(Number*),
                  std::string (*word)(Number)) {
  check_signals();
  Number value{};
  if (unsigned result = get(&value)) return failed(key, label, zop_result(result));
  return coded(key, label, value, word(value));
}

static Section identity(const ModuleLibrary& m) {
  return {"identity",
          "Identity",
          {text("imei", "IMEI", m.vurn_get_realm), text("imsi", "IMSI", m.vurn_get_imsi),
           text("iccid", "ICCID", m.vurn_get_radio_cert_param1),
           text("phone_number", "Phone number", m.vurn_get_radio_phone_number),
           text("firmware", "Firmware", m.vurn_get_firmware_version),
           text("hardware", "Hardware", m.zop_get_hardware_version),
           text("library", "Library", m.zop_get_tq2_version)}};
}

static Section sim(const ModuleLibrary& m) {
  check_signals();
  uint32_t status = 0, lock = 0, retries = 0;
  Section section{"sim", "SIM", {}};
  if (unsigned result = m.zop_simcard_status(&status, &lock, &retries)) {
    std::string reason = zop_result(result);
    section.items = {failed("status", "Status", reason), failed("lock", "PIN", reason),
                     failed("pin_retries", "PIN tries left", reason)};
    return section;
  }
  section.items = {coded("status", "Status", status, sim_status(status)),
                   coded("lock", "PIN", lock, lock_status(lock)),
                   good("pin_retries", "PIN tries left", retries, std::to_string(retries))};
  return section;
}

static Item roaming(const ModuleLibrary& m) {
  int roams = 0;
  if (int result = m.vurn_get_roaming_status(&roams)) {
    return failed("roaming", "Roaming", vurn_result(result));
  }
  return good("roaming", "Roaming", roams != 0, roams != 0 ? "yes" : "no");
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
  return good("lac", "LAC", lac, fmt::format("{0} (0x{0:X})", lac));
}

static Section network(const ModuleLibrary& m) {
  return {"network",
          "Network",
          {text("name", "Name", m.zop_get_network_name), text("mcc", "MCC", m.zop_get_mcc),
           text("mnc", "MNC", m.zop_get_mnc), location_area(m), number("rac", "RAC", m.zop_get_rac),
           number("cell_id", "Cell", m.zop_get_cell_id),
           coded("registration", "Registration", m.zop_get_registration_status, registration),
           roaming(m), coded("service", "Service", m.zop_get_service_status, service)}};
}

static Item data_mode(const ModuleLibrary& m) {
  int mode = 0;
  if (int result = m.vurn_get_data_service_mode(&mode)) {
    return failed("data_service_mode", "Data service", vurn_result(result));
  }
  return coded("data_service_mode", "Data service", mode, data_service_mode(mode));
}

static Item rssi(const ModuleLibrary& m) {
  int dbm = 0;
  if (int result = m.vurn_get_rssi(&dbm)) return failed("rssi", "RSSI", vurn_result(result));
  return good("rssi", "RSSI", dbm, fmt::format("{} dBm", dbm));
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
static Section network_time(const ModuleLibrary& m) {
  check_signals();
  time_t when = 0;
  int offset = 0;
  Section section{"time", "Time", {}};
  int result = m.vurn_get_module_time(&when, &offset);
  if (result == VURN_ERR_TIME_NOT_PROVIDED) {
    const char* reason = "not sent by the network";
    section.items = {{"network_time", "Network time", nullptr, reason, false},
                     {"utc_offset", "UTC offset", nullptr, reason, false}};
  } else if (result != VURN_OK) {
    section.items = {failed("network_time", "Network time", vurn_result(result)),
                     failed("utc_offset", "UTC offset", vurn_result(result))};
  } else {
    tm local{};
    localtime_r(&when, &local);
    std::string time = fmt::format("{:%Y-%m-%d %H:%M:%S}", local);
    section.items = {good("network_time", "Network time", time, time + ", " + offset_text(offset)),
                     good("utc_offset", "UTC offset", offset, fmt::format("{} s", offset))};
  }
  return section;
}

static Findings show(const ModuleLibrary& module, const Arguments&) {
  return {identity(module), sim(module), network(module), radio(module), network_time(module)};
}

const Verb STATUS = {.name = "status",
                     .help = "identity, SIM, network, mode, signal and time",
                     .need = Session::MODULE,
                     .run = show};

}  // namespace zopctl
