// The commands of the transcripts: what a host calls, what its modem answers, what its system
// holds.
#include <fcntl.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "include/nubi.h"
#include "report/field_test.h"
#include "report/rendering.h"
#include "report/supplement.h"
#include "report/wan_data.h"
#include "simulator/scenario/scenario.h"
#include "tests/commands/every_command.h"
#include "tests/module/host_event.h"
#include "tests/module/late_modem.h"
#include "tests/module/module_world.h"
#include "tests/report/report_views.h"
#include "tests/support/simulated_far_end.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/transcript.h"

using namespace std::chrono_literals;
using namespace test;
namespace fs = std::filesystem;

const char* NubiGetEventName(const NubiEvent* event) { return event->name; }
const char* NubiGetEventSource(const NubiEvent* event) { return event->source; }
int NubiGetIntParam(const NubiEvent* event, int* value) {
  if (event->error == 0) *value = event->origin;
  return event->error;
}

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

enum { UNTOUCHED = 4711 };

static std::string shown(int value) {
  return value == UNTOUCHED ? "" : " " + std::to_string(value);
}

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
      {"all", LOG_EVERYTHING},
  };
  unsigned mask = 0;
  for (const std::string& name : names) mask |= BITS.at(name);
  return mask;
}

static Time time_of(const std::string& text) {
  auto number = std::stod(text);
  return std::chrono::nanoseconds(
      static_cast<int64_t>(number * (text.ends_with("ms") ? 1e6 : 1e9)));
}

namespace {

class HostSession : public Session, ModuleWorld {
 public:
  HostSession() { prv_zop_init_logging(); }  // the items' names, without an open

  // Commands separated by semicolons.
  std::string answer(const std::string& input) override {
    std::string printed;
    for (const Words& command : word_groups(input, ";")) printed += run(command);
    return printed;
  }

 private:
  std::string run(const Words& command) {
    Words words(command.begin() + 1, command.end());
    Time before = world.now();
    auto known = commands_.find(command[0]);
    std::string printed = known != commands_.end() ? known->second(words) : library(command);
    if (!printed.empty()) printed += "\n";
    Time took = world.now() - before;
    auto ms = took / 1ms;
    if (ms != 0 && command[0] != "advance") printed += "after " + std::to_string(ms) + " ms\n";
    return printed + logged();
  }

  using Function = std::function<std::string(const Words&)>;

  // A line of the report in short, or whole with its stamp as a number.
  std::string report_line(const std::string& line) {
    size_t begin = line.find("t="), end = line.find(',', begin), reason = line.find("Exc=");
    if (!whole_reports_) return "report" + (reason != line.npos ? " " + line.substr(reason) : "");
    std::string stamp = line.substr(begin, end - begin);
    auto known = std::find(stamps_.begin(), stamps_.end(), stamp);
    auto number = known - stamps_.begin() + 1;
    if (known == stamps_.end()) stamps_.push_back(stamp);
    return line.substr(0, begin) + "t=STAMP" + std::to_string(number) + line.substr(end);
  }
  // The lines logged since the last call, with the source alone of the place of "D" lines, and with
  // the priority if it is not that of the line's letter.
  std::string logged() {
    static const std::regex place(" \\(\\w+:(\\w+):\\d+\\)$");
    static const std::map<char, int> PRIORITIES = {{'E', 3}, {'W', 4}, {'I', 5}, {'D', 7}};
    std::vector<std::string> lines;
    for (const LogLine& line : world.log) {
      bool is_report = line.text.starts_with("I zop:diag:");
      lines.push_back(is_report ? report_line(line.text)
                                : std::regex_replace(line.text, place, " ($1)"));
      if (line.priority != PRIORITIES.at(line.text[0])) {
        lines.back() += " with priority " + std::to_string(line.priority);
      }
    }
    world.log.clear();
    return joined(lines, "\n");
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
  // A command that prints nothing.
  template <class Step>
  static Function step(Step step) {
    return [step](const Words& words) {
      step(words);
      return std::string();
    };
  }
  // Of "cf 54 00 = 01 00": the request, and what follows it.
  static std::pair<std::string, Bytes> request_and_rest(const Words& words) {
    auto end = std::find(words.begin(), words.end(), "=");
    std::string request = to_hex(bytes_of({words.begin(), end}));
    return {request, end == words.end() ? Bytes{} : bytes_of({end + 1, words.end()})};
  }
  void answer(const Words& words, const std::string& header) {
    auto [request, rest] = request_and_rest(words);
    answers[request] = (header == "raw" ? "" : request.substr(0, 8) + header) + to_hex(rest);
  }
  std::string requests() {
    std::vector<std::string> parts;
    for (const Bytes& payload : modem.payloads) {
      parts.push_back(short_hex(payload));
    }
    modem.payloads.clear();
    std::string text = joined(parts, ", ");
    return "requests: " + (text.empty() ? "none" : text.substr(0, text.size() - 2));
  }
  // The module's file of this path is one of the session's.
  std::string own(const std::string& path) {
    std::string file = folder_ / path.substr(1);
    world.missing.erase(path);
    world.files[path] = file;
    fs::create_directories(fs::path(file).parent_path());
    return file;
  }
  void process(const Words& words) {
    std::string stat = words[0] + " " + words[1] + " S";
    for (int field = 4; field < 22; ++field) stat += " 0";
    double ticks = std::stod(words[2]) * static_cast<double>(sysconf(_SC_CLK_TCK));
    std::ofstream(own("/proc/" + words[0] + "/stat")) << stat << " " << uint64_t(ticks) << " 0\n";
    own("/proc");
  }
  std::string state() const {
    return std::string("module ") + (vurn_update_prl() == VURN_OK ? "open" : "closed") + ", port " +
           (world.port_is_open() ? "open" : "closed") + ", listener " +
           (THREAD_STATUS != 0 ? "on" : "off") + ", " + std::to_string(world.threads_made) +
           " threads made";
  }
  std::string content(const std::string& path) {
    return fs::exists(own(path)) ? in_quotes(folder_.read(path.substr(1))) : "no file";
  }
  static std::string permissions(const std::string& file) {
    std::ostringstream text;
    text << std::oct << static_cast<int>(fs::status(file).permissions());
    return text.str();
  }
  static void post(const std::string& name) {
    static const std::map<std::string, DeferredEvent> EVENTS = {
        {"exception", DEFERRED_EXCEPTION},
        {"turned-off", DEFERRED_TURNED_OFF_FIELD_TESTING},
        {"log-string", DEFERRED_LOG_STRING}};
    prv_deferred_action_event(EVENTS.at(name));
  }
  std::string log_string(unsigned size) {
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
  // The network selection lists are read when the report wants them, or on demand.
  std::string supplement(const Words& words) {
    if (diag_status() == 0) diag_open(DEVICE);
    gRefetchPlmns = !words.empty();
    prv_get_supplement_data();
    return requests() + ", " + std::to_string(gDiagInfo.oplmn_count) + " operators" +
           (gRefetchPlmns ? ", to be read" : "");
  }
  // A list of this many operators, in blocks of 20.
  void operators(uint8_t count) {
    for (uint8_t block = 0; block < 11; ++block) {
      std::string request = "cf 6b 00 " + to_hex(Bytes{static_cast<uint8_t>(block * 20 + 1)});
      answers[request] = "cf 6b 00 00 00 " + to_hex(Bytes{count, 255});
    }
  }
  void ready_after(Time time) {
    world.on_sleep = [this, left = time](Time slept) mutable {
      if ((left -= slept) <= Time{0}) answers["d2 00 00"] = "d2 00 00 00 00 00 02 01 03";
    };
  }
  static std::string network_time(const Words&) {
    time_t when = UNTOUCHED;
    int offset = UNTOUCHED, result = vurn_get_module_time(&when, &offset);
    return result_name(result) + shown(static_cast<int>(when)) + shown(offset);
  }
  void start_scenario(const std::string& name) {
    simulated_ = std::make_unique<SimulatedFarEnd>(
        sim::load_scenario(SCENARIOS "/" + name + ".toml"), world.now());
    world.far_end = simulated_.get();
  }
  // A command of the library: its result, its outputs, and what it prints itself.
  static std::string library(const Words& command) {
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
  void use_late_modem() {
    close_module();
    gDeferredThreadCreated = false;
    late_ = LateModem();
    world.write_room = SIZE_MAX;
    world.far_end = &late_;
  }
  // A listener that is about to ask for a screen.
  void listen() {
    use_late_modem();
    vurn_open();
    world.advance(30s);  // the first snapshot is over
    prv_set_field_testing(true, true);
    world.advance(1200ms);
  }
  void recover() {
    world.write_room = SIZE_MAX;
    late_.recover(world.now());
  }
  // Pieces separated by commas, each 30 ms after the one before: bytes, or the payload of a frame.
  void send_instead(const std::string& line) {
    for (const Words& piece : word_groups(line, ",")) {
      bool framed = piece[0] == "frame";
      Bytes bytes = framed ? frame(bytes_of(std::span(piece).subspan(1))) : bytes_of(piece);
      late_.instead.push_back({bytes, late_.instead.empty() ? 0ms : 30ms});
    }
  }
  // Whether the next commands get their own answers, of different kinds and of the same.
  std::string own_answers() {
    std::string wrong;
    for (int i = 0; i < 3; ++i) {
      for (auto [command, request] : {std::pair{"zop_get_field_information", "cf 34 00"},
                                      {"zop_get_rac", "cf 2f 00"},
                                      {"zop_get_rscp", "cf 27 00"}}) {
        Outputs out;
        out.clear();
        unsigned result = call_command({command}, out);
        int got =
            command == std::string("zop_get_field_information") ? out.bytes[0] : out.numbers[0];
        bool own = result == ZOP_SUCCESS && (got & 0xFF) == late_.asked[hex(request)];
        if (!own) wrong += " " + std::string(command) + ": " + std::to_string(result);
      }
    }
    return wrong.empty() ? "own answers" : "wrong answers:" + wrong;
  }
  static std::string bands() {
    std::string accepted = "accepted:";
    for (uint32_t band = 0; band < 256; ++band) {
      if (zop_set_band(band) == ZOP_SUCCESS) accepted += " " + std::to_string(band);
    }
    return accepted;
  }
  // The bars at each RSSI of GSM, or at one of WCDMA for each Ec/Io of an active cell.
  std::string bars_at(const Words& words) {
    bool gsm = words[0] == "gsm";
    std::string all;
    for (size_t i = gsm ? 1 : 2; i < words.size(); ++i) {
      std::string cell = words[i] == "none" || gsm ? "" : " @124 16:0 16:100 16:" + words[i];
      std::string screen = " 32:" + words[gsm ? i : 1] + cell + " @350";
      answers["cf 34 00"] =
          to_hex(hex("cf 34 00 01 00 " + std::string(gsm ? "03" : "05") + " @95" + screen));
      int32_t bars = UNTOUCHED;
      testing::internal::CaptureStdout();
      zop_get_bars(&bars);
      fflush(stdout);
      testing::internal::GetCapturedStdout();
      all += all.empty() ? std::to_string(bars) : shown(bars);
    }
    return all;
  }

  LateModem late_;
  bool whole_reports_ = false;
  std::vector<std::string> stamps_;  // of reports
  TemporaryFolder folder_;
  std::unique_ptr<SimulatedFarEnd> simulated_;
  std::map<std::string, Function> commands_ = {
      // What a host calls
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
      {"log-string", [this](auto& w) { return log_string(number_of(w[0])); }},
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
      {"supplement", [this](auto& w) { return supplement(w); }},
      {"link", [](auto&) { return std::string(diag_status() != 0 ? "link open" : "link closed"); }},
      {"state", [this](auto&) { return state(); }},
      {"report", [this](auto& w) { return report_items(world, w, false); }},
      {"syslog", [this](auto& w) { return report_items(world, w, true); }},
      {"bands", [](auto&) { return bands(); }},
      {"bars-at", [this](auto& w) { return bars_at(w); }},
      {"render", [](auto& w) { return render(number_of(w[0])); }},
      {"whole-reports", step([this](auto&) { whole_reports_ = true; })},
      {"whole-log-string",
       [](auto&) {
         std::string text(8192, '\0');
         vurn_get_log_string(text.data(), 8192);
         text.resize(strlen(text.c_str()) - 1);
         return text;
       }},
      {"names", code_names},
      {"plans", [](auto& w) { return plans(static_cast<DeferredState>(number_of(w[0]))); }},
      // The modem
      {"answer", step([this](auto& w) { answer(w, " 00 00 "); })},
      {"raw", step([this](auto& w) { answer(w, "raw"); })},
      {"refuse", step([this](auto& w) { answer(w, " 01 00 "); })},
      {"garble", step([this](auto& w) { answers[request_and_rest(w).first] = ""; })},
      {"zeros", step([this](auto& w) { answers.erase(request_and_rest(w).first); })},
      {"mute", step([this](auto&) { answers.clear(); })},
      {"next", step([this](auto& w) { next_answers.push_back(bytes_of(w)); })},
      {"delay", step([this](auto& w) { modem.delay = time_of(w[0]); })},
      {"unplug", step([this](auto&) { modem.unplugged = true; })},
      {"plug", step([this](auto&) { modem.unplugged = false; })},
      {"scenario", step([this](auto& w) { start_scenario(w[0]); })},
      {"sim-ready-after", step([this](auto& w) { ready_after(time_of(w[0])); })},
      {"operators", step([this](auto& w) { operators(static_cast<uint8_t>(number_of(w[0]))); })},
      {"requests", [this](auto&) { return requests(); }},
      {"forget", step([this](auto&) { modem.payloads.clear(); })},
      {"set", step(set_record)},
      // A sick line
      {"late-modem", step([this](auto&) { use_late_modem(); })},
      {"listener", step([this](auto&) { listen(); })},
      {"latency", step([this](auto& w) { late_.latency = time_of(w[0]); })},
      {"one-at-a-time", step([this](auto&) { late_.one_at_a_time = true; })},
      {"gap", step([this](auto& w) { late_.gap = time_of(w[0]); })},
      {"silent", step([this](auto&) { late_.ignores = [](auto&) { return true; }; })},
      {"deaf-to", step([this](auto& w) {
         late_.ignores = [code = hex(w[0])[0], left = number_of(w[1])](auto& request) mutable {
           return request[0] == code && left > 0 && left-- > 0;
         };
       })},
      {"babble", step([this](auto&) { late_.babbles = true; })},
      {"instead", step([this](auto& w) { send_instead(text_of(w[0])); })},
      {"asked", step([this](auto& w) { late_.asked[hex(text_of(w[0]))] = hex(w[1])[0]; })},
      {"room", step([this](auto& w) { world.write_room = number_of(w[0]); })},
      {"recover", step([this](auto&) { recover(); })},
      {"own-answers", [this](auto&) { return own_answers(); }},
      {"seen", [this](auto&) { return std::to_string(late_.requests_seen) + " requests"; }},
      {"stop-listener", step([](auto&) { zop_debug_stop(); })},
      {"field-testing-off", step([](auto&) { prv_set_field_testing(false, true); })},
      // The system
      {"advance", step([this](auto& w) { world.advance(time_of(w[0])); })},
      {"time-zone", step([](auto& w) { setenv("TZ", w[0].c_str(), 1), tzset(); })},
      {"clock-error", step([this](auto& w) { world.clock_error = std::stoi(w[0]); })},
      {"thread-error", step([this](auto& w) { world.thread_error = std::stoi(w[0]); })},
      {"no-memory", step([this](auto&) { world.malloc_failures = 1; })},
      {"write-error", step([this](auto& w) { world.writes.push_back(Fail{std::stoi(w[0])}); })},
      {"open-error", step([this](auto& w) { world.missing[w[0]] = std::stoi(w[1]); })},
      {"file", step([this](auto& w) { std::ofstream(own(w[0])) << text_of(w[1]); })},
      {"folder", step([this](auto& w) { fs::create_directories(own(w[0])); })},
      {"full", step([this](auto& w) { fs::create_symlink("/dev/full", own(w[0])); })},
      {"redirect", step([this](auto& w) { world.files[w[0]] = w[1]; })},
      {"permissions", [this](auto& w) { return permissions(own(w[0])); }},
      {"own", step([this](auto& w) { own(w[0]); })},
      {"remove", step([this](auto& w) { fs::remove_all(own(w[0])); })},
      {"cat", [this](auto& w) { return content(w[0]); }},
      {"process", step([this](auto& w) { process(w); })},
      {"ppp0", step([this](auto& w) {
         world.ppp0_error = 0, world.ppp0_addresses = {w[0], w[1]};
       })},
      {"ppp0-error", step([this](auto& w) { world.ppp0_error = std::stoi(w[0]); })},
      {"socket-error", step([this](auto& w) { world.socket_error = std::stoi(w[0]); })},
  };
};

const bool REGISTERED =
    register_transcripts(TRANSCRIPTS "/module", [] { return std::make_unique<HostSession>(); });

}  // namespace
