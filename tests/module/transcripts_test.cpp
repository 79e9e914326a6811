// The commands of the transcripts: what a host calls, what its modem answers, what its system
// holds.
#include <fcntl.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "report/field_test.h"
#include "report/rendering.h"
#include "report/supplement.h"
#include "report/wan_data.h"
#include "simulator/scenario/scenario.h"
#include "tests/commands/every_command.h"
#include "tests/module/host_calls.h"
#include "tests/module/late_modem.h"
#include "tests/module/module_world.h"
#include "tests/report/report_views.h"
#include "tests/support/simulated_far_end.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/transcript.h"

using namespace std::chrono_literals;
using namespace test;
namespace fs = std::filesystem;

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
    std::string printed = call(command[0])(words);
    if (!printed.empty()) printed += "\n";
    Time took = world.now() - before;
    auto ms = took / 1ms;
    if (ms != 0 && command[0] != "advance") printed += "after " + std::to_string(ms) + " ms\n";
    return printed + logged();
  }

  Function call(const std::string& name) const {
    if (name.starts_with("zop_")) {
      return [name](Words words) {
        words.insert(words.begin(), name);
        return library_call(words);
      };
    }
    auto own = commands_.find(name);
    return own != commands_.end() ? own->second : host_calls().at(name);
  }
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
  void start_scenario(const std::string& name) {
    simulated_ = std::make_unique<SimulatedFarEnd>(
        sim::load_scenario(SCENARIOS "/" + name + ".toml"), world.now());
    world.far_end = simulated_.get();
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
      {"supplement", [this](auto& w) { return supplement(w); }},
      {"state", [this](auto&) { return state(); }},
      {"report", [this](auto& w) { return report_items(world, w, false); }},
      {"syslog", [this](auto& w) { return report_items(world, w, true); }},
      {"bars-at", [this](auto& w) { return bars_at(w); }},
      {"whole-reports", step([this](auto&) { whole_reports_ = true; })},
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
