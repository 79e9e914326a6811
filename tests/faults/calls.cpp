// The list: the command library from the tests' list of all commands, then what that leaves out,
// then the host's calls.
#include "tests/faults/calls.h"

#include <cstring>
#include <sstream>

#include "core/module_state.h"
#include "include/vurn.h"
#include "include/zop.h"
#include "include/zop_diag_info.h"
#include "link/event_listener.h"
#include "tests/commands/every_command.h"

namespace test {

static const char DEVICE[] = "/dev/tts/USB1";

template <typename Record>
static std::string bytes_of(const Record& record) {
  std::string bytes(sizeof record, '\0');
  memcpy(bytes.data(), &record, sizeof record);
  return bytes;
}

static Outcome outcome(int result, std::string output) {
  return {result, result == 0 ? std::move(output) : std::string()};
}
static Outcome outcome(unsigned result, std::string output) {
  return outcome(static_cast<int>(result), std::move(output));
}

// ---- the command library ----

static Call command_call(const Command& command) {
  auto make = [&command] {
    Outputs out;
    out.clear();
    unsigned result = command.run(out);
    return outcome(result, bytes_of(out));
  };
  return {command.name, Call::LINK, make};
}

// The listener for four seconds with an event pending: two polls of events, and one screen.
static Outcome listen_for_a_while() {
  gDiagInfo.screen = {};
  unsigned result = zop_debug_start(1);
  World::current()->advance(std::chrono::seconds(4));
  zop_debug_stop();
  return outcome(result, bytes_of(gDiagInfo.screen));
}

static std::vector<Call> other_commands() {
  return {
      {"zop_open", Call::CLOSED_LINK, [] { return outcome(zop_open(DEVICE), ""); }},
      {"zop_send_sms", Call::LINK, [] { return outcome(zop_send_sms("+15550100", "hello"), ""); }},
      {"zop_set_backup 3", Call::LINK, [] { return outcome(zop_set_backup(3), ""); }},
      {"zop_debug_start", Call::LINK, listen_for_a_while, true},
  };
}

// ---- the host's calls ----

static Call module_call(const char* name, std::function<Outcome()> make, bool gathers = false) {
  return {name, Call::MODULE, std::move(make), gathers};
}

static Call text(const char* name, int (*get)(char*, unsigned)) {
  return module_call(name, [get] {
    char buffer[64] = "";
    int result = get(buffer, sizeof buffer);
    return outcome(result, bytes_of(buffer));
  });
}

static Call number(const char* name, int (*get)(int*)) {
  return module_call(name, [get] {
    int value = 4711;
    int result = get(&value);
    return outcome(result, bytes_of(value));
  });
}

static Outcome module_time() {
  time_t when = 0;
  int offset = 0;
  int result = vurn_get_module_time(&when, &offset);
  return outcome(result, bytes_of(when) + bytes_of(offset));
}

// The report without the lines that show the time of day.
static Outcome log_string() {
  char report[8192] = "";
  int result = vurn_get_log_string(report, sizeof report);
  std::istringstream lines(report);
  std::string output;
  for (std::string line; std::getline(lines, line);) {
    bool shows_time = line.starts_with("Awake:") || line.starts_with("FTD Age:");
    if (!shows_time) output.append(line).append("\n");
  }
  return outcome(result, output);
}

static Outcome log_message() {
  static const char* names[] = {"no carrier"};
  return outcome(vurn_log_message(0, names), "");
}

// Without the versions: once read, right or wrong, they stay for the life of the process.
static Outcome open_module() {
  int result = vurn_open();
  return outcome(result, bytes_of(gDiagInfo.lock_status) + bytes_of(gDiagInfo.pin_retries));
}

// A stop sends requests only while a test is in progress.
static Outcome stop_call_test() {
  sTestNum = 1;
  return outcome(vurn_stop_call_test(), "");
}

static std::vector<Call> host_calls() {
  return {
      {"vurn_open", Call::CLOSED_MODULE, open_module, true},
      number("vurn_get_rssi", vurn_get_rssi),
      number("vurn_get_roaming_status", vurn_get_roaming_status),
      text("vurn_get_realm", vurn_get_realm),
      text("vurn_get_radio_serial_number", vurn_get_radio_serial_number),
      text("vurn_get_radio_cert_param1", vurn_get_radio_cert_param1),
      text("vurn_get_radio_cert_param2", vurn_get_radio_cert_param2),
      text("vurn_get_radio_phone_number", vurn_get_radio_phone_number),
      text("vurn_get_imsi", vurn_get_imsi),
      text("vurn_get_firmware_version", vurn_get_firmware_version),
      number("vurn_get_data_service_mode", vurn_get_data_service_mode),
      module_call("vurn_get_module_time", module_time),
      number("vurn_get_bars", vurn_get_bars),
      number("vurn_get_mcc", vurn_get_mcc),
      module_call("vurn_originate_call_test",
                  [] { return outcome(vurn_originate_call_test(1), ""); }),
      module_call("vurn_stop_call_test", stop_call_test),
      module_call("vurn_get_log_string", log_string, true),
      module_call("vurn_log_message", log_message, true),
      module_call(
          "vurn_enable_logging", [] { return outcome(vurn_enable_logging(1), ""); }, true),
  };
}

const std::vector<Call>& every_call() {
  static const std::vector<Call> list = [] {
    std::vector<Call> calls;
    for (const Command& command : every_command()) calls.push_back(command_call(command));
    for (Call& call : other_commands()) calls.push_back(std::move(call));
    for (Call& call : host_calls()) calls.push_back(std::move(call));
    return calls;
  }();
  return list;
}

}  // namespace test
