// One row: a newly loaded module in its own World, the call with the fault, a second call if the
// link is still open, then what a host does to recover, and the call again.
#include "tests/faults/matrix.h"

#include <fmt/format.h>
#include <signal.h>

#include <algorithm>
#include <cstring>
#include <numeric>
#include <sstream>

#include "include/zop.h"
#include "link/serial_port.h"
#include "tests/support/fresh_module.h"
#include "tests/support/simulated_far_end.h"

namespace test {

using namespace std::chrono_literals;

static constexpr Time SNAPSHOT_LASTS = 12s;  // the one that an open starts
static constexpr Time SCENES_APART = 100s;
static constexpr size_t MANY_BYTES = 250;

// ---- the faults ----

// 5.5 s is over the limit for an answer; 20 s is longer than any call.
const std::vector<Column>& columns() {
  static const char LATE[] = "delay=5500:at={byte},skip={answer},count=1";
  static const std::vector<Column> list = {
      {"silence", "silence:skip={answer}"},
      {"late", LATE, {0}, 5500ms},
      {"late, reopened at once", LATE},
      {"cut", "cut={byte}:skip={answer},count=1"},
      {"bad check", "bad-crc:skip={answer},count=1"},
      {"flipped bit", "flip={value}:at={byte},skip={answer},count=1", {0, 1, 2, 3, 4, 5, 6, 7}},
      {"byte inserted", "insert={value}:at={byte},skip={answer},count=1", {0x00, 0x7E, 0x7D}},
      {"byte lost", "lose={byte}:skip={answer},count=1"},
      {"other answer", "other={value}:skip={answer},count=1", {'/', 'g'}},  // RAC and IMEI
      {"refusal", "error={value}:skip={answer},count=1", {19, 20, 21, 24, 66, 71}},
      {"twice", "duplicate={value}:skip={answer},count=1", {0, 1}},
      {"gone", "hang-up={byte}:back=20000,skip={answer},count=1"},
      {"gone and back", "hang-up={byte}:back=0,skip={answer},count=1"},
  };
  return list;
}

static void add_faults(size_t column, size_t answer, size_t byte, bool all_bits,
                       std::vector<Fault>& faults) {
  const auto& [name, fault, values, host_waits] = columns()[column];
  bool one_bit = !all_bits && values.size() == 8;
  for (int value : values) {
    if (one_bit && static_cast<size_t>(value) != byte % 8) continue;
    faults.push_back({column, fmt::format(fmt::runtime(fault), fmt::arg("value", value),
                                          fmt::arg("byte", byte), fmt::arg("answer", answer))});
  }
}

std::vector<Fault> all_faults(const Healthy& healthy) {
  const std::vector<size_t>& sizes = healthy.answers;
  bool all_bits = std::reduce(sizes.begin(), sizes.end()) <= MANY_BYTES;
  std::vector<Fault> faults;
  for (size_t column = 0; column < columns().size(); ++column) {
    bool every_byte = strstr(columns()[column].fault, "{byte}") != nullptr;
    for (size_t answer = 0; answer < sizes.size(); ++answer) {
      for (size_t byte = 0; byte < (every_byte ? sizes[answer] : 1); ++byte) {
        add_faults(column, answer, byte, all_bits, faults);
      }
    }
  }
  return faults;
}

// ---- the scene ----

// The modem's values differ from each other, so that an answer shows which request it belongs to.
static sim::Scenario distinct_values() {
  sim::Scenario scenario;
  sim::Model& model = scenario.model;
  model.network.roaming = 1;
  model.network.carrier = 23;
  model.sim.user = {{"262", "07"}};
  model.sim.forbidden = {{"234", "15"}, {"208", "20"}};
  model.state.mm_attach_error = 11;
  model.state.gmm_attach_error = 12;
  model.state.mm_lu_error = 13;
  model.state.gmm_rau_error = 14;
  model.state.rau_type = 15;
  model.device.backup_ready = 16;
  model.device.debug_mode = 1;
  model.device.events = sim::EVENT_ACTIVATED;
  model.device.memory.clear();  // large, and never asked for
  return scenario;
}

namespace {
class Scene {
 public:
  explicit Scene(const Call& call) : call_(call) {
    world_.far_end = &far_end_;
    world_.keeps_log = false;
    for (const char* path :
         {"/proc/uptime", "/proc/net/dev", "/etc/resolv.conf", "/proc", "/var/local/wan/mcc"}) {
      world_.missing[path] = EACCES;
    }
    start_later_than_the_last();
    fresh_module(world_);
  }
  ~Scene() {
    close_module();
    zop_close();
  }

  Time now() const { return world_.now(); }
  bool is_open() const { return diag_status() != 0; }
  bool port_is_open() const { return world_.port_is_open(); }

  // Opens what the call needs. The module's open continues in the background after it returns.
  bool open() {
    if (call_.needs == Call::LINK) return zop_open(MODEM_DEVICE) == 0;
    if (call_.needs != Call::MODULE) return true;
    if (vurn_open() != VURN_OK) return false;
    world_.advance(SNAPSHOT_LASTS);
    return true;
  }
  void close() {
    set_off_alarm();
    bool link_only = call_.needs == Call::LINK || call_.needs == Call::CLOSED_LINK;
    link_only ? zop_close() : static_cast<void>(vurn_close(0));
  }
  // The call meets a modem that has kept nothing of earlier ones, not even the time.
  Outcome make_call() {
    far_end_.modem.model() = SCENARIO.model;
    far_end_.modem.model().clock.start -= static_cast<time_t>(now() / 1s);
    return call_.make();
  }
  void inject(const std::string& fault) { far_end_.modem.faults().add(sim::parse_fault(fault)); }
  void repair() { far_end_.modem.faults() = sim::Faults(); }
  bool fault_has_hit() const { return fault_has_hit_; }
  const std::vector<size_t>& answers() const { return far_end_.answers; }
  void forget_answers() { far_end_.answers.clear(); }

  void wait(Time time) {
    world_.advance(time);
    while (far_end_.gone(now())) world_.advance(1s);
  }

 private:
  struct CountedFarEnd : SimulatedFarEnd {
    using SimulatedFarEnd::SimulatedFarEnd;
    std::vector<size_t> answers;  // bytes of each
    Bytes take(Time now) override {
      Bytes answer = SimulatedFarEnd::take(now);
      if (!answer.empty()) answers.push_back(answer.size());
      return answer;
    }
  };

  // Ages the times that the module keeps; reports still show the same time of day.
  void start_later_than_the_last() {
    static Time start{0};
    start += SCENES_APART;
    world_.advance(start);
    world_.wall_clock_start -= static_cast<time_t>(start / 1s);
  }
  void set_off_alarm() {
    if (world_.alarm.value_or(0) == 0) return;
    world_.advance(std::chrono::seconds(*world_.alarm));
    callback_debug_close(SIGALRM);
  }
  static const sim::Scenario SCENARIO;
  World world_;
  bool fault_has_hit_ = false;
  CountedFarEnd far_end_{SCENARIO, Time{0}, [this](const std::string& line) {
                           if (line.find(" fault ") != std::string::npos) fault_has_hit_ = true;
                         }};
  const Call& call_;
};
const sim::Scenario Scene::SCENARIO = distinct_values();
}  // namespace

static std::set<std::string> lines_of(const std::string& text) {
  std::set<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.insert(line);
  return lines;
}

Healthy make_healthy(const Call& call) {
  Healthy healthy;
  {
    Scene scene(call);
    if (!scene.open()) return healthy;
    scene.forget_answers();
    healthy.outcome = scene.make_call();
    healthy.answers = scene.answers();
  }
  if (!call.gathers) return healthy;
  healthy.true_lines = lines_of(healthy.outcome.output);
  for (size_t answer = 0; answer < healthy.answers.size(); ++answer) {
    Scene scene(call);
    if (!scene.open()) break;
    scene.inject("silence:skip=" + std::to_string(answer));
    healthy.true_lines.merge(lines_of(scene.make_call().output));
  }
  return healthy;
}

// ---- a row ----

// Another query on the same link, whose answer is known.
static Row::Next ask_another(const Call& call) {
  const char imsi[] = "001010123456789";
  uint8_t text[64] = "";
  uint32_t size = sizeof text;
  bool link_only = call.needs == Call::LINK || call.needs == Call::CLOSED_LINK;
  unsigned result = link_only ? zop_get_imsi(text, &size)
                              : static_cast<unsigned>(vurn_get_imsi(
                                    static_cast<char*>(static_cast<void*>(text)), sizeof text));
  if (result != 0) return Row::NEXT_FAILS;
  return memcmp(text, imsi, sizeof imsi - 1) == 0 ? Row::NEXT_RIGHT : Row::NEXT_WRONG;
}

static Row::Output judge(const Call& call, const Healthy& healthy, const Outcome& outcome) {
  if (outcome.result != 0) return Row::FAILED;
  if (outcome == healthy.outcome) return Row::RIGHT;
  if (!call.gathers) return Row::WRONG;
  auto is_true = [&](const std::string& line) { return healthy.true_lines.contains(line); };
  return std::ranges::all_of(lines_of(outcome.output), is_true) ? Row::PARTIAL : Row::WRONG;
}

// Empty if the host has recovered, whatever is still in transit when the port is opened.
static std::string recover(Scene& scene, const Healthy& healthy, Time host_waits) {
  scene.close();
  if (scene.port_is_open()) return "the port stays open";
  scene.wait(host_waits);
  if (!scene.open()) return "can't be opened again";
  Outcome outcome = scene.make_call();
  if (outcome.result != healthy.outcome.result) {
    return "afterwards the result is " + std::to_string(outcome.result);
  }
  return outcome == healthy.outcome ? "" : "afterwards the output is wrong";
}

Row make_row(const Call& call, const Healthy& healthy, const Fault& fault) {
  Row row;
  Scene scene(call);
  if (!scene.open()) {
    row.complaint = "can't be opened";
    return row;
  }
  scene.inject(fault.text);
  Time start = scene.now();
  Outcome outcome = scene.make_call();
  row.took = scene.now() - start;
  row.result = outcome.result;
  row.output = judge(call, healthy, outcome);
  scene.repair();
  if (scene.is_open()) row.next = ask_another(call);
  row.complaint = recover(scene, healthy, columns()[fault.column].host_waits);
  if (!scene.fault_has_hit()) row.complaint = "no request was hit by the fault";
  return row;
}

}  // namespace test
