#include "tests/module/host_calls.h"

#include <gtest/gtest.h>

#include <cstring>

#include "include/nubi.h"
#include "include/vurn.h"
#include "include/zop.h"
#include "module/lifecycle.h"
#include "report/deferred_action.h"
#include "report/field_test.h"
#include "report/wan_data.h"
#include "tests/commands/every_command.h"
#include "tests/module/host_event.h"
#include "tests/report/report_views.h"
#include "tests/support/link_test.h"

const char* NubiGetEventName(const NubiEvent* event) { return event->name; }
const char* NubiGetEventSource(const NubiEvent* event) { return event->source; }
int NubiGetIntParam(const NubiEvent* event, int* value) {
  if (event->error == 0) *value = event->origin;
  return event->error;
}

namespace test {

static const char* name_or_null(const std::string& name) {
  return name == "-" ? nullptr : name.c_str();
}

static std::string result_name(int result) {
  static const std::map<int, std::string> NAMES = {
      {VURN_OK, "ok"},
      {VURN_ERR_NOT_OPEN, "not open"},
      {VURN_ERR_FAILED, "failed"},
      {VURN_ERR_REOPENED, "reopened"},
      {VURN_ERR_TRUNCATED, "truncated"},
      {VURN_ERR_NULL_ARGUMENT, "null argument"},
      {VURN_ERR_TIME_NOT_PROVIDED, "time not provided"},
  };
  return NAMES.at(result);
}

std::string shown(int value) { return value == UNTOUCHED ? "" : " " + std::to_string(value); }

static unsigned mask_of(const Words& names) {
  static const std::map<std::string, unsigned> BITS = {
      {"screens", VURN_LOG_FIELD_INFORMATION},
      {"trace", VURN_LOG_TRACE},
      {"events", VURN_LOG_EVENTS},
      {"actions", VURN_LOG_ACTION_EVENTS},
      {"general", VURN_LOG_GENERAL},
      {"stuck", VURN_LOG_STUCK},
      {"info", VURN_LOG_INFO},
      {"warning", VURN_LOG_WARNING},
      {"error", VURN_LOG_ERROR},
      {"all", ~0u},
  };
  unsigned mask = 0;
  for (const std::string& name : names) mask |= BITS.at(name);
  return mask;
}

static Function number(int (*get)(int*)) {
  return [get](const Words&) {
    int value = UNTOUCHED, result = get(&value);
    return result_name(result) + shown(value);
  };
}
static Function text(int (*get)(char*, unsigned)) {
  return [get](const Words& words) {
    std::string buffer(64, '#');
    int result = get(buffer.data(), words.empty() ? 64 : number_of(words[0]));
    size_t written = buffer.find_first_of(std::string("\0#", 2));
    std::string end = buffer[written] == '#' ? " unterminated" : "";
    return result_name(result) +
           (written > 0 ? " " + in_quotes(buffer.substr(0, written)) + end : "");
  };
}
static Function call(int (*function)()) {
  return [function](const Words&) { return result_name(function()); };
}
static void post(const std::string& name) {
  static const std::map<std::string, DeferredEvent> EVENTS = {
      {"exception", DEFERRED_EXCEPTION},
      {"turned-off", DEFERRED_TURNED_OFF_FIELD_TESTING},
      {"log-string", DEFERRED_LOG_STRING}};
  prv_deferred_action_event(EVENTS.at(name));
}
static std::string log_string(unsigned size) {
  std::string text(size + 1, '#');
  int result = vurn_get_log_string(text.data(), size);
  text.resize(text.find_first_of(std::string("\0#", 2)));
  return result_name(result) + (text.size() > 200 ? " a report" : " " + in_quotes(text));
}
static std::string event(const Words& words) {
  NubiEvent event{name_or_null(words[0]), name_or_null(words[1])};
  if (words.size() > 2) event.origin = std::stoi(words[2]);
  if (words.size() > 3) event.error = std::stoi(words[3]);
  return result_name(vurn_report_event(&event));
}
static std::string exception(unsigned code) {
  static const char* names[] = {"no carrier", "dial failed", "timeout", "a",           "b",
                                "c",          "d",           "e",       "sim, lost: 8"};
  return result_name(vurn_log_message(code, names));
}
static std::string network_time(const Words&) {
  time_t when = UNTOUCHED;
  int offset = UNTOUCHED, result = vurn_get_module_time(&when, &offset);
  return result_name(result) + shown(static_cast<int>(when)) + shown(offset);
}
// A command of the library: its result, its outputs, and what it prints itself.
std::string library_call(const Words& command) {
  static const std::map<unsigned, std::string> NAMES = {
      {ZOP_SUCCESS, "ok"},
      {ZOP_ERR_NOT_OPEN, "not open"},
      {ZOP_ERR_NO_RESPONSE, "no response"},
      {ZOP_ERR_BUFFER_TOO_SMALL, "buffer too small"},
      {ZOP_ERR_BAD_RESPONSE, "bad response"},
      {ZOP_ERR_PIN_TOO_LONG, "PIN too long"},
      {ZOP_ERR_INVALID_ARGUMENT, "invalid argument"},
      {ZOP_ERR_MODEM_FAILURE, "modem failure"},
      {ZOP_ERR_HOME_NETWORK_REFUSED, "home network refused"},
  };
  Outputs out;
  out.clear();
  testing::internal::CaptureStdout();
  unsigned result = call_command(command, out);
  fflush(stdout);
  std::string printed = testing::internal::GetCapturedStdout();
  std::string outputs = out.text();
  bool sized = out.size != sizeof out.bytes;
  return NAMES.at(result) + (outputs.empty() ? "" : ": " + outputs) +
         (sized ? ", size " + std::to_string(out.size) : "") +
         (printed.empty() ? "" : "\n" + printed.substr(0, printed.size() - 1));
}
static std::string bands() {
  std::string accepted = "accepted:";
  for (uint32_t band = 0; band < 256; ++band) {
    if (zop_set_band(band) == ZOP_SUCCESS) accepted += " " + std::to_string(band);
  }
  return accepted;
}
const std::map<std::string, Function>& host_calls() {
  static const std::map<std::string, Function> calls = {
      {"open", call(vurn_open)},
      {"close", [](auto&) { return result_name(vurn_close(0)); }},
      {"close-and-join", [](auto&) { return result_name(vurn_close(1)); }},
      {"rssi", number(vurn_get_rssi)},
      {"roaming", number(vurn_get_roaming_status)},
      {"mode", number(vurn_get_data_service_mode)},
      {"bars", number(vurn_get_bars)},
      {"mcc", number(vurn_get_mcc)},
      {"mcc-to-null", [](auto&) { return result_name(vurn_get_mcc(nullptr)); }},
      {"realm", text(vurn_get_realm)},
      {"serial-number", text(vurn_get_radio_serial_number)},
      {"iccid", text(vurn_get_radio_cert_param1)},
      {"certificate-imsi", text(vurn_get_radio_cert_param2)},
      {"imsi", text(vurn_get_imsi)},
      {"phone-number", text(vurn_get_radio_phone_number)},
      {"firmware", text(vurn_get_firmware_version)},
      {"time", network_time},
      {"event", event},
      {"exception", [](auto& w) { return exception(number_of(w[0])); }},
      {"log-string", [](auto& w) { return log_string(number_of(w[0])); }},
      {"enable-logging", [](auto& w) { return result_name(vurn_enable_logging(std::stoi(w[0]))); }},
      {"call-test", [](auto& w) { return result_name(vurn_originate_call_test(std::stoi(w[0]))); }},
      {"stop-call-test", call(vurn_stop_call_test)},
      {"home-network", call(vurn_try_to_use_home_network)},
      {"flags",
       [](auto&) {
         unsigned flags = 0;
         std::string result = result_name(vurn_get_module_flags(&flags));
         return result + " " + std::to_string(flags);
       }},
      {"log", step([](auto& w) { vurn_set_log_mask(mask_of(w)); })},
      {"listen", [](auto&) { return std::to_string(zop_debug_start(1)); }},
      {"new-process", step([](auto&) { gDeferredThreadCreated = false; })},
      {"zop-open", [](auto&) { return std::to_string(zop_open(DEVICE)); }},
      {"zop-close", step([](auto&) { zop_close(); })},
      {"post", step([](auto& w) { post(w[0]); })},
      {"wan-data", step([](auto&) { prv_get_wan_data(); })},
      {"uptime", step([](auto&) { prv_get_uptime(); })},
      {"link", [](auto&) { return std::string(diag_status() != 0 ? "link open" : "link closed"); }},
      {"bands", [](auto&) { return bands(); }},
      {"render", [](auto& w) { return render(number_of(w[0])); }},
      {"whole-log-string",
       [](auto&) {
         std::string text(8192, '\0');
         vurn_get_log_string(text.data(), 8192);
         text.resize(strlen(text.c_str()) - 1);
         return text;
       }},
      {"names", code_names},
      {"plans", [](auto& w) { return plans(static_cast<DeferredState>(number_of(w[0]))); }},
  };
  return calls;
}

}  // namespace test
