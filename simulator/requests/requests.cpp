// The table of requests. A vendor answer begins with the header and a status of 0, to which the
// row appends its fields; a standard DIAG answer begins with the command byte.
#include "simulator/requests/requests.h"

#include <algorithm>
#include <ctime>

#include "simulator/requests/device_requests.h"
#include "simulator/requests/radio_requests.h"
#include "simulator/requests/sim_requests.h"

namespace sim {

std::string characters(View field) {
  return {field.begin(), std::find(field.begin(), field.end(), 0)};
}

Answer& Answer::u8(int value) {
  content.push_back(static_cast<uint8_t>(value));
  return *this;
}
Answer& Answer::u16(int value) { return u8(value).u8(value >> 8); }
Answer& Answer::u32(int64_t value) {
  return u16(static_cast<int>(value & 0xFFFF)).u16(static_cast<int>(value >> 16 & 0xFFFF));
}
Answer& Answer::zeros(size_t count) {
  content.resize(content.size() + count);
  return *this;
}
Answer& Answer::bytes(View bytes, size_t width) {
  size_t end = content.size() + width;
  content.insert(content.end(), bytes.begin(),
                 bytes.begin() + static_cast<ptrdiff_t>(std::min(width, bytes.size())));
  content.resize(end);
  return *this;
}
Answer& Answer::text(const std::string& text, size_t width) {
  return bytes(Bytes(text.begin(), text.end()), width);
}
void Answer::status(int value) {
  content.at(3) = static_cast<uint8_t>(value);
  content.at(4) = static_cast<uint8_t>(value >> 8);
}

constexpr size_t PLAIN = 3;
constexpr size_t ONE_BYTE = 4;  // a vendor request with one byte of payload
constexpr size_t NV_LENGTH = 133;

using I = const Incoming&;
using A = Answer&;

static std::string location_area(const Network& network) {
  char text[32];
  snprintf(text, sizeof text, "%.3s-%.3s 0x%04X", network.mcc.c_str(), network.mnc.c_str(),
           static_cast<unsigned>(network.lac & 0xFFFF));
  return text;
}

// Local time of the network, weekday counted from Sunday; status 1 before the network has sent it.
static void network_time(I in, A a) {
  const Clock& clock = in.model.clock;
  if (clock.provided == 0) return a.status(1);
  auto seconds = static_cast<std::time_t>(in.now / std::chrono::seconds(1));
  std::time_t local = clock.start + seconds + std::time_t{900} * clock.zone;
  std::tm t{};
  gmtime_r(&local, &t);
  a.u16(t.tm_year + 1900).u16(t.tm_mon + 1).u16(t.tm_mday).u16(t.tm_hour).u16(t.tm_min);
  a.u16(t.tm_sec).u16(t.tm_wday).u32(clock.zone).u8(clock.daylight_saving);
}

// Ticks of the modem's clock, 1.25 ms in the upper 48 bits of 64.
static void timestamp(I in, A a) {
  int64_t ticks = in.now.count() / 1250 << 16;
  a.u32(ticks & 0xFFFFFFFF).u32(ticks >> 32);
}

// Sets a value of the model to the request's byte, which may be up to most.
static void set(I in, A a, int& place, int most) {
  int value = in.request[3];
  if (value > most) return a.status(1);
  place = value;
}

static const Request REQUESTS[] = {
    // Standard DIAG commands
    {0x01, ANY, "esn", 1, [](I in, A a) { a.u32(in.model.identity.serial_number); }},
    {0x1D, ANY, "timestamp", 1, timestamp},
    {0x26, ANY, "nv_read", NV_LENGTH, nv_read},
    {0x27, ANY, "nv_write", NV_LENGTH, nv_write},
    {0x7C, ANY, "build", 1, [](I in, A a) { a.zeros(11).text(in.model.identity.build, 64).u8(0); }},
    {0x3A, ANY, "download_mode", 1, [](I, A a) { a.then = Answer::ENTERS_BOOT_ROM; }},
    {0x29, ANY, "mode_control", 3, mode_control},
    {0x2A, ANY, "error_log", 1, error_log},
    {0x2B, ANY, "clear_error", 2, clear_error},
    {0xD0, ANY, "sms", 346, send_sms},
    {0xD6, ANY, "backup", 1, backup_step},
    {0xD7, ANY, "restore", 1, backup_step},
    {0xD8, ANY, "backup_start", 1, backup_step},
    {0xD9, ANY, "backup_end", 1, backup_step},
    {0xDA, ANY, "rebuild", 1, rebuild_nv},
    // SIM
    {0xD2, 0, "sim_status", PLAIN, sim_status},
    {0xD2, 1, "pin_verify", 19, pin_verify},
    {0xD2, 2, "pin_change", 27, pin_change},
    {0xD2, 3, "pin_disable", 19, pin_disable},
    {0xD2, 4, "pin_enable", 19, pin_enable},
    {0xD2, 5, "pin_unblock", 27, pin_unblock},
    {0xD5, 40, "virtual_sim", ONE_BYTE,
     [](I in, A a) { set(in, a, in.model.sim.virtual_state, 255); }},
    {VENDOR, 'K', "sim_file", 11, sim_file},
    {VENDOR, '_', "operator_plmns", PLAIN, operator_plmns},
    {VENDOR, '`', "home_plmns", PLAIN, home_plmns},
    {VENDOR, 'a', "registered_plmn", PLAIN, registered_plmn},
    {VENDOR, 'b', "forbidden_plmns", PLAIN, forbidden_plmns},
    {VENDOR, 'i', "user_plmns", PLAIN, user_plmns},
    {VENDOR, 'j', "set_user_plmns", 124, set_user_plmns},
    {VENDOR, 'k', "operator_plmn_block", ONE_BYTE, operator_plmn_block},
    {VENDOR, 'l', "home_plmn_block", ONE_BYTE, home_plmn_block},
    // Configuration
    {VENDOR, 0x1B, "write_profile", 106, write_profile},
    {VENDOR, 'B', "set_band", ONE_BYTE, set_band},
    {VENDOR, 'C', "diag_port", ONE_BYTE,
     [](I in, A a) { set(in, a, in.model.device.diag_port, 1); }},
    {VENDOR, 'D', "reset", ONE_BYTE, [](I, A a) { a.then = Answer::RESTARTS; }},
    {VENDOR, 'E', "error_fatal", ONE_BYTE, error_fatal},
    {VENDOR, 'F', "read_profile", ONE_BYTE, read_profile},
    {VENDOR, 'I', "factory_test", ONE_BYTE,
     [](I in, A a) { set(in, a, in.model.device.test_mode, 1); }},
    {VENDOR, 'L', "backup_status", PLAIN,
     [](I in, A a) { a.u8(in.model.device.backup_ready).u8(in.model.device.backup_value); }},
    {VENDOR, 'M', "debug_mode", ONE_BYTE, [](I in, A) { in.model.device.debug_mode = 1; }},
    {VENDOR, 'p', "vendor_test", ONE_BYTE, [](I, A a) { a.status(1); }},
    // Calls
    {VENDOR, 'c', "originate", 37, originate_call},
    {VENDOR, 'd', "end_call", PLAIN, end_call},
    {VENDOR, '=', "events", PLAIN,
     [](I in, A a) { a.u8(in.model.device.debug_mode != 0 ? in.model.device.events : 0); }},
    {VENDOR, '>', "event_originated", PLAIN, event_originated},
    {VENDOR, '?', "event_activated", PLAIN, event_activated},
    {VENDOR, '@', "event_deactivated", PLAIN, event_deactivated},
    {VENDOR, 'A', "event_ended", PLAIN, event_ended},
    // Identity
    {VENDOR, 0x07, "phone_number", PLAIN,
     [](I in, A a) { a.text(in.model.identity.phone_number, 36); }},
    {VENDOR, '#', "iccid", PLAIN, [](I in, A a) { a.text(in.model.identity.iccid, 20); }},
    {VENDOR, 'H', "hardware", PLAIN, [](I in, A a) { a.text(in.model.identity.hardware, 20); }},
    {VENDOR, 'J', "card_mode", PLAIN, [](I in, A a) { a.u16(in.model.sim.card_mode); }},
    {VENDOR, ']', "firmware", PLAIN, [](I in, A a) { a.text(in.model.identity.firmware, 20); }},
    {VENDOR, 'g', "imei", PLAIN, [](I in, A a) { a.text(in.model.identity.imei, 16); }},
    {VENDOR, 'h', "imsi", PLAIN, [](I in, A a) { a.text(in.model.identity.imsi, 16); }},
    // Network
    {VENDOR, 0x13, "set_time", 17, set_time},
    {VENDOR, 0x14, "network_time", PLAIN, network_time},
    {VENDOR, '!', "roaming", PLAIN, [](I in, A a) { a.u8(in.model.network.roaming); }},
    {VENDOR, '"', "home_network", PLAIN, [](I in, A a) { a.u8(in.model.network.home_allowed); }},
    {VENDOR, '/', "rac", PLAIN, [](I in, A a) { a.u8(in.model.network.rac); }},
    {VENDOR, '0', "mcc", PLAIN, [](I in, A a) { a.text(in.model.network.mcc, 3); }},
    {VENDOR, '1', "mnc", PLAIN, [](I in, A a) { a.text(in.model.network.mnc, 3); }},
    {VENDOR, '2', "location_area", PLAIN,
     [](I in, A a) { a.text(location_area(in.model.network), 14); }},
    {VENDOR, '3', "cell_id", PLAIN, [](I in, A a) { a.u32(in.model.network.cell_id); }},
    {VENDOR, ':', "network_name", PLAIN, [](I in, A a) { a.text(in.model.network.name, 255); }},
    {VENDOR, ';', "service", PLAIN, [](I in, A a) { a.u8(in.model.network.service); }},
    {VENDOR, '<', "registration", PLAIN, [](I in, A a) { a.u8(in.model.network.registration); }},
    {VENDOR, 'o', "carrier", PLAIN, [](I in, A a) { a.u8(in.model.network.carrier); }},
    // Radio
    {VENDOR, 0x1F, "system_mode", PLAIN, [](I in, A a) { a.u8(in.model.radio.system_mode); }},
    {VENDOR, ' ', "rssi", PLAIN, [](I in, A a) { a.u16(in.model.radio.rssi); }},
    {VENDOR, '$', "data_service_mode", PLAIN,
     [](I in, A a) { a.u8(in.model.radio.data_service_mode); }},
    {VENDOR, '%', "channel", PLAIN, [](I in, A a) { a.u16(in.model.radio.channel); }},
    {VENDOR, 'Q', "band", PLAIN, [](I in, A a) { a.u16(in.model.radio.band); }},
    {VENDOR, 'U', "mfrm", PLAIN, [](I in, A a) { a.u16(in.model.radio.mfrm); }},
    {VENDOR, 'Y', "drx", PLAIN, [](I in, A a) { a.u16(in.model.radio.drx); }},
    {VENDOR, 'Z', "hsdpa", PLAIN,
     [](I in, A a) { a.u16(in.model.radio.hsdpa_status).u16(in.model.radio.hsdpa_indication); }},
    {VENDOR, '^', "egprs", PLAIN, [](I in, A a) { a.u16(in.model.radio.egprs); }},
    {VENDOR, '\'', "rscp", PLAIN, [](I in, A a) { a.u16(in.model.radio.rscp); }},
    {VENDOR, '(', "tx_power", PLAIN, [](I in, A a) { a.u16(in.model.radio.tx_power); }},
    {VENDOR, ')', "active_set", PLAIN, [](I in, A a) { cell_set(in, a, ZOP_CELL_ACTIVE); }},
    {VENDOR, '*', "monitored_set", PLAIN, [](I in, A a) { cell_set(in, a, ZOP_CELL_MONITORED); }},
    {VENDOR, '+', "detected_set", PLAIN, [](I in, A a) { cell_set(in, a, ZOP_CELL_DETECTED); }},
    {VENDOR, ',', "neighbors", PLAIN, [](I in, A a) { neighbors(in.model.radio, a); }},
    {VENDOR, '-', "best_six", PLAIN, [](I in, A a) { best_six(in.model.radio, a); }},
    {VENDOR, '4', "screen", PLAIN, screen},
    {VENDOR, '9', "pathloss", PLAIN, [](I in, A a) { a.u16(in.model.radio.pathloss); }},
    // States
    {VENDOR, '&', "call", PLAIN, [](I in, A a) { a.u8(in.model.state.call); }},
    {VENDOR, 'R', "network_mode", PLAIN, [](I in, A a) { a.u16(in.model.state.network_mode); }},
    {VENDOR, 'S', "mm_attach", PLAIN,
     [](I in, A a) { a.u16(in.model.state.mm_attach).u16(in.model.state.mm_attach_error); }},
    {VENDOR, 'T', "gmm_attach", PLAIN,
     [](I in, A a) { a.u16(in.model.state.gmm_attach).u16(in.model.state.gmm_attach_error); }},
    {VENDOR, 'V', "gmm", PLAIN, [](I in, A a) { a.u16(in.model.state.gmm); }},
    {VENDOR, 'W', "pdp", PLAIN,
     [](I in, A a) { a.u16(in.model.state.pdp).u16(in.model.state.pdp_reject_reason); }},
    {VENDOR, 'X', "pmm", PLAIN, [](I in, A a) { a.u16(in.model.state.pmm); }},
    {VENDOR, 'e', "mm_lu", PLAIN,
     [](I in, A a) { a.u16(in.model.state.mm_lu).u16(in.model.state.mm_lu_error); }},
    {VENDOR, 'f', "gmm_rau", PLAIN,
     [](I in, A a) { a.u16(in.model.state.gmm_rau).u16(in.model.state.gmm_rau_error); }},
    {VENDOR, 'm', "power_up", PLAIN, [](I in, A a) { a.u8(in.model.state.power_up); }},
    {VENDOR, 'n', "rau_type", PLAIN, [](I in, A a) { a.u8(in.model.state.rau_type); }},
};

const Request* find_request(View request) {
  auto matches = [&](const Request& row) {
    if (request.empty() || row.command != request[0]) return false;
    return row.subcommand == ANY || (request.size() > 1 && row.subcommand == request[1]);
  };
  auto row = std::ranges::find_if(REQUESTS, matches);
  return row == std::end(REQUESTS) ? nullptr : row;
}

std::vector<std::string> describe_requests() {
  std::vector<std::string> lines;
  for (const Request& row : REQUESTS) {
    char text[64];
    char subcommand[3] = "--";
    if (row.subcommand != ANY)
      snprintf(subcommand, sizeof subcommand, "%02x", row.subcommand & 0xFF);
    snprintf(text, sizeof text, "diag %02x %s %s", row.command & 0xFF, subcommand, row.name);
    lines.emplace_back(text);
  }
  return lines;
}

const Request* find_request_named(const std::string& name) {
  auto row = std::ranges::find_if(REQUESTS, [&](const Request& r) { return name == r.name; });
  return row == std::end(REQUESTS) ? nullptr : row;
}

const char* error_text(uint8_t code) {
  switch (code) {
    case BAD_COMMAND:
      return "bad command";
    case BAD_PARAMETER:
      return "bad parameter";
    case BAD_LENGTH:
      return "bad length";
    case BAD_MODE:
      return "bad mode";
    case LOCKED:
      return "locked";
    case SECURITY:
      return "security";
    default:
      return nullptr;
  }
}

Bytes refusal(int code, View request) {
  Bytes answer(request.size() + 1);
  answer[0] = static_cast<uint8_t>(code);
  std::ranges::copy(request, answer.begin() + 1);
  return answer;
}

// The header and a status for a request with a subcommand, else only the command.
static Answer begin_answer(const Request& row) {
  Answer answer;
  answer.u8(row.command);
  if (row.subcommand != ANY) answer.u8(row.subcommand).u8(0).u16(0);
  return answer;
}

static Answer refused(ErrorAnswer why, View request) {
  Answer answer;
  answer.content = refusal(why, request);
  return answer;
}

Answer answer_to(const Incoming& in) {
  const Request* row = find_request(in.request);
  if (row == nullptr) return refused(BAD_COMMAND, in.request);
  if (in.request.size() != row->length) return refused(BAD_LENGTH, in.request);
  if (row->subcommand != ANY && in.request[2] != 0) {
    return refused(BAD_PARAMETER, in.request);
  }
  Answer answer = begin_answer(*row);
  row->answer(in, answer);
  if (answer.refusal) answer.content = refusal(*answer.refusal, in.request);
  return answer;
}

}  // namespace sim
