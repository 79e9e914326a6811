// One row: a newly loaded module in its own World, the call with the fault, a second call if the
// link is still open, then what a host does to recover, and the call again.
#include "tests/faults/matrix.h"

#include <signal.h>

#include <algorithm>
#include <cstring>
#include <sstream>

#include "include/zop.h"
#include "link/serial_port.h"
#include "tests/support/fresh_module.h"

namespace test {

using namespace std::chrono_literals;

static const char DEVICE[] = "/dev/tts/USB1";
static constexpr Time SNAPSHOT_LASTS = 12s;  // the one that an open starts
static constexpr Time SCENES_APART = 100s;

// ---- the scene ----

namespace {
class Scene {
 public:
  explicit Scene(const Call& call) : call_(call) {
    world_.far_end = &line;
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

  FaultyLine line;
  Time now() const { return world_.now(); }
  void wait_until(Time moment) {
    if (moment > now()) world_.advance(moment - now());
  }
  bool is_open() const { return diag_status() != 0; }
  bool port_is_open() const { return world_.port_is_open(); }

  // Opens what the call needs. The module's open continues in the background after it returns.
  bool open() {
    if (call_.needs == Call::LINK) return zop_open(DEVICE) == 0;
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

 private:
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
  World world_;
  const Call& call_;
};
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
    scene.line.watch();
    healthy.outcome = call.make();
    healthy.frames = scene.line.frames();
  }
  if (!call.gathers) return healthy;
  healthy.honest_lines = lines_of(healthy.outcome.output);
  for (size_t answer = 0; answer < healthy.frames.size(); ++answer) {
    Scene scene(call);
    if (!scene.open()) break;
    scene.line.strike({FaultKind::SILENCE, answer});
    healthy.honest_lines.merge(lines_of(call.make().output));
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
  auto is_honest = [&](const std::string& line) { return healthy.honest_lines.contains(line); };
  return std::ranges::all_of(lines_of(outcome.output), is_honest) ? Row::PARTIAL : Row::WRONG;
}

// Empty if the host has recovered, whatever is still in transit when the port is opened.
static std::string recover(Scene& scene, const Call& call, const Healthy& healthy, FaultKind kind) {
  scene.close();
  if (scene.port_is_open()) return "the port stays open";
  auto late = scene.line.last_due();
  if (late && kind != FaultKind::LATE_AT_ONCE) scene.wait_until(*late);
  if (!scene.open()) return "can't be opened again";
  Outcome outcome = call.make();
  if (outcome.result != healthy.outcome.result) {
    return "afterwards the result is " + std::to_string(outcome.result);
  }
  return outcome == healthy.outcome ? "" : "afterwards the output is wrong";
}

Row make_row(const Call& call, const Healthy& healthy, const Fault& fault) {
  Row row;
  row.fault = fault;
  Scene scene(call);
  if (!scene.open()) {
    row.complaint = "can't be opened";
    return row;
  }
  scene.line.strike(fault);
  Time start = scene.now();
  Outcome outcome = call.make();
  row.took = scene.now() - start;
  row.result = outcome.result;
  row.output = judge(call, healthy, outcome);
  scene.line.mend();
  if (scene.is_open()) row.next = ask_another(call);
  row.complaint = recover(scene, call, healthy, fault.kind);
  if (!scene.line.has_struck()) row.complaint = "the fault was not met";
  return row;
}

}  // namespace test
