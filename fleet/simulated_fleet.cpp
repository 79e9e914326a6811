// Each device is healthy but for the trouble that it is given, so all else that a question finds
// is a fault of the question.
#include "fleet/simulated_fleet.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

namespace fleet {

constexpr int64_t HOUR = 3600, DAY = 24 * HOUR;
constexpr uint32_t CELLS_PER_AREA = 10, DEVICES_PER_CELL = 20, FIRST_AREA = 300, FIRST_CELL = 10000;
constexpr uint32_t WEAK_CELL = 1, CROWDED_AREA = 0;
constexpr uint32_t BAD_FIRMWARE = 2;
constexpr const char* FIRMWARES[] = {"Q71XEB21.004", "Q71XEB21.007", "Q71XEB21.009"};
constexpr int64_t STUCK_FOR = 6 * HOUR, SILENT_FOR = 2 * DAY, UPDATED_BEFORE = 12 * HOUR;
constexpr int64_t CROWDED_FROM = 3 * DAY, CROWDED_FOR = 2 * HOUR;  // before the end
constexpr size_t LINE_SIZE = 1200;

// ---- the devices ----

SimulatedFleet::SimulatedFleet(const FleetPlan& plan) : plan_(plan), random_(plan.seed) {
  plan_.until -= plan_.until % HOUR;
  for (uint32_t i = 0; i < plan_.devices; ++i) {
    Device device;
    device.host = fmt::format("device-{:06}", i);
    device.cell = i / DEVICES_PER_CELL;
    device.firmware = static_cast<uint32_t>(random(std::size(FIRMWARES)));
    device.offset_s = static_cast<uint32_t>(random(plan_.every_s));
    devices_.push_back(device);
  }
  truth_ = {{"devices", plan_.devices}};
  choose(REJECT, "illegal network reject");
  choose(NO_CALL, "data connection without a call");
  choose(FORBIDDEN, "all networks forbidden");
  choose(SILENT, "silent");
  choose(ROAMER, "rejected");
  choose(UPDATED, "updated");
}

void SimulatedFleet::choose(Trouble trouble, const char* name) {
  auto& hosts = truth_[name] = nlohmann::ordered_json::array();
  while (hosts.size() < plan_.troubled) {
    Device& device = devices_[random(devices_.size())];
    if (device.trouble != NONE) continue;
    device.trouble = trouble;
    if (trouble == UPDATED) device.firmware = 0;
    hosts.push_back(device.host);
  }
  std::sort(hosts.begin(), hosts.end());
}

// ---- lines ----

// Some are sent twice on their way.
void SimulatedFleet::line(const Device& device, int64_t time, const std::string& text) {
  std::string whole = fmt::format("{:%Y-%m-%dT%H:%M:%S}+00:00 {} hostd[814]: {}",
                                  fmt::gmtime(static_cast<std::time_t>(time)), device.host, text);
  take_(whole);
  ++lines_;
  if (random(200) != 0) return;
  take_(whole);
  ++doubled_;
}

void SimulatedFleet::start(const Device& device, int64_t time) {
  line(device, time,
       fmt::format("I zop:misc1:lib = REV_3.0 20100419, fw = {}, hw = QSC6270 rev 3, awake = 60, "
                   "asleep = 0, upsince = Sat Jul 24 19:11:28 2010:",
                   FIRMWARES[device.firmware]));
}

// As the module does: a pair that does not fit begins the next line.
void SimulatedFleet::write(const Device& device, int64_t time, const Items& items) {
  static constexpr std::string_view ORDER[] = {"Network Name",
                                               "MCC MNC",
                                               "Channel",
                                               "Band",
                                               "C1",
                                               "L1",
                                               "R1",
                                               "Network Time",
                                               "Local Time Offset",
                                               "Selection Mode",
                                               "Test Mode",
                                               "Bars",
                                               "Roaming",
                                               "RSSI",
                                               "Tx Power",
                                               "System Mode",
                                               "Data Service Mode",
                                               "Service Status",
                                               "Reg Status",
                                               "Call Status",
                                               "MM Attach State",
                                               "MM LU State",
                                               "GMM Attach State",
                                               "GMM State",
                                               "GMM RAU State",
                                               "PDP State",
                                               "Network Mode",
                                               "PMM Mode",
                                               "SIM Status",
                                               "MM Attach Error",
                                               "MM LU Error",
                                               "GMM Attach Error",
                                               "GMM RAU Error",
                                               "PDP Rej Reason",
                                               "Active/Monitored Sets",
                                               "RSCP",
                                               "DRX",
                                               "HSDPA Status",
                                               "HSDPA Indication",
                                               "N1",
                                               "B1",
                                               "Pathloss",
                                               "MFRM",
                                               "EGPRS Indication",
                                               "IP Address",
                                               "Dest IP Address",
                                               "Rx Bytes",
                                               "Tx Bytes",
                                               "Rx Errors",
                                               "Tx Errors",
                                               "Res",
                                               "FTD Age",
                                               "HPLMN",
                                               "RPLMN",
                                               "FPLMN",
                                               "OPLMN",
                                               "Exc"};
  std::string text;
  int number = 1;
  for (std::string_view name : ORDER) {
    auto item = items.find(name);
    if (item == items.end()) continue;
    std::string pair = fmt::format(",{}={}", name, item->second);
    if (text.size() + pair.size() > LINE_SIZE) {
      line(device, time, fmt::format("I zop:diag: t={:x}{}:", time, text));
      text.clear();
      ++number;
    }
    text += pair;
  }
  line(device, time, fmt::format("I zop:diag: t={:x}{},n={}:", time, text, number));
}

// ---- reports ----

void SimulatedFleet::set_levels(Items& items, const Device& device) {
  int64_t usual = device.cell == WEAK_CELL ? -113 : -80 - static_cast<int64_t>(device.cell % 7);
  int64_t rscp = usual - static_cast<int64_t>(random(6));
  int64_t ecio = -4 - static_cast<int64_t>(random(6)) - (rscp < -110 ? 8 : 0);
  items["RSCP"] = std::to_string(rscp);
  items["RSSI"] = std::to_string(rscp - ecio);
  items["Bars"] = rscp < -110 ? "1" : "4";
  items["Tx Power"] = std::to_string(-70 - rscp);
  uint64_t code = 100 + device.cell % 400;
  items["Active/Monitored Sets"] =
      fmt::format("0;{};{} 1;{};-14 1;{};-16", code, ecio, code + 8, code + 16);
  items["Rx Bytes"] = std::to_string(random(1'000'000'000));
  items["Tx Bytes"] = std::to_string(random(1'000'000'000));
}

// A healthy device has a data connection and a call for it. Some are between the two for a moment.
void SimulatedFleet::set_faults(Items& items, const Device& device, int64_t time) {
  int64_t left = plan_.until - time;
  bool stuck = left <= STUCK_FOR;
  bool even = time / plan_.every_s % 2 == 0;
  if (even && left > STUCK_FOR && random(50) == 0) items["Call Status"] = "Idle";
  if (device.firmware == BAD_FIRMWARE && random(4) == 0) {
    items["PDP State"] = "Inactive";
    items["PDP Rej Reason"] = "Insufficient resources";
    items["Exc"] = "DATA_CALL_FAILED";
  }
  int64_t crowded = left - CROWDED_FROM;
  if (device.cell / CELLS_PER_AREA == CROWDED_AREA && crowded > 0 && crowded <= CROWDED_FOR) {
    items["GMM Attach State"] = "Attach reject";
    items["GMM Attach Error"] = "Congestion";
  }
  if (device.trouble == ROAMER && stuck) {
    items["GMM Attach State"] = "Attach reject";
    items["GMM Attach Error"] = "PLMN not allowed";
    items["Reg Status"] = "Fail";
  }
  if (device.trouble == REJECT && stuck) {
    items["GMM RAU State"] = "RA update reject";
    items["GMM RAU Error"] = "111 Unknown";
  }
  if (device.trouble == NO_CALL && stuck) {
    items["Call Status"] = "Idle";
    items["PDP State"] = "Active";
  }
  if (device.trouble == FORBIDDEN && stuck) {
    items["Service Status"] = "Limited service";
    items["PDP Rej Reason"] = "Service not subscribed";
    items["FPLMN"] = "001;01 002;02";
  }
}

void SimulatedFleet::report(Device& device, int64_t time) {
  int64_t left = plan_.until - time;
  if (device.trouble == SILENT && left <= SILENT_FOR) return;
  if (device.trouble == UPDATED && left <= UPDATED_BEFORE && device.firmware == 0) {
    device.firmware = 1;
    start(device, time);
  }
  Items items = {{"Network Name", "Test Net"},
                 {"MCC MNC", "001 01"},
                 {"Channel", "10562"},
                 {"Band", "WCDMA I IMT 2000"},
                 {"Network Time", "2010/07/24 08.02.59"},
                 {"Local Time Offset", "-5h"},
                 {"Selection Mode", "Automatic"},
                 {"Test Mode", "0"},
                 {"Roaming", "0"},
                 {"System Mode", "WCDMA"},
                 {"Data Service Mode", "HSDPA"},
                 {"Service Status", "Service"},
                 {"Reg Status", "Success"},
                 {"Call Status", "Conversation"},
                 {"MM Attach State", "LU update"},
                 {"MM LU State", "LU update"},
                 {"GMM Attach State", "Attach accept"},
                 {"GMM State", "Registered"},
                 {"GMM RAU State", "RA update accept"},
                 {"PDP State", "Active"},
                 {"Network Mode", "CS PS combined attach mode"},
                 {"PMM Mode", "Connected"},
                 {"SIM Status", "Valid; PIN perm disabled; R3"},
                 {"MM Attach Error", "No error"},
                 {"MM LU Error", "No error"},
                 {"GMM Attach Error", "No error"},
                 {"GMM RAU Error", "No error"},
                 {"PDP Rej Reason", "No error"},
                 {"DRX", "6"},
                 {"HSDPA Status", "Active"},
                 {"HSDPA Indication", "HSDPA supp"},
                 {"N1", ""},
                 {"B1", ""},
                 {"Pathloss", ""},
                 {"MFRM", ""},
                 {"EGPRS Indication", ""},
                 {"IP Address", "xxx.xxx.64.64"},
                 {"Dest IP Address", "xxx.xxx.112.112"},
                 {"Rx Errors", "0"},
                 {"Tx Errors", "0"},
                 {"Res", "24145930; 40923146"},
                 {"FTD Age", "5s"},
                 {"HPLMN", "UMTS;001;01"},
                 {"RPLMN", "001;01"},
                 {"FPLMN", ""},
                 {"OPLMN", "UMTS;001;01 UMTS;901;70"}};
  items["C1"] = std::to_string(FIRST_CELL + device.cell);
  items["L1"] = std::to_string(FIRST_AREA + device.cell / CELLS_PER_AREA);
  items["R1"] = "1";
  set_levels(items, device);
  set_faults(items, device, time);
  write(device, time, items);
  ++reports_;
}

// ---- the log ----

void SimulatedFleet::log(const std::function<void(std::string_view)>& take) {
  take_ = take;
  int64_t begin = plan_.until - plan_.days * DAY;
  for (const Device& device : devices_) start(device, begin);
  std::vector<Device*> order;
  for (Device& device : devices_) order.push_back(&device);
  std::ranges::stable_sort(order, {}, &Device::offset_s);
  for (int64_t period = begin; period < plan_.until; period += plan_.every_s) {
    for (Device* device : order) report(*device, period + device->offset_s);
  }
  truth_["reports"] = reports_;
  truth_["lines"] = lines_ + doubled_;
  truth_["doubled_lines"] = doubled_;
  truth_["weak_cell"] = FIRST_CELL + WEAK_CELL;
  truth_["bad_firmware"] = FIRMWARES[BAD_FIRMWARE];
  truth_["crowded"] = {{"lac", FIRST_AREA + CROWDED_AREA},
                       {"from", plan_.until - CROWDED_FROM - CROWDED_FOR},
                       {"cause", "congestion"}};
}

}  // namespace fleet
