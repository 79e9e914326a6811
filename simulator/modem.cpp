// The modem: frames in, answers out, the time line in between. A fault damages one answer; the
// request has taken effect by then, as on a real modem. Only a refused request has no effect.
#include "simulator/modem.h"

#include <algorithm>

#include "simulator/trace.h"

namespace sim {

using namespace std::chrono_literals;

constexpr Time RESTART_DELAY = 200ms;
constexpr Time BOOT_TIME = 6s;
constexpr Time MODE_CHANGE_TIME = 2s;  // into the boot ROM, or into a programmer
constexpr uint8_t FLAG = 0x7E;

// cppcheck-suppress passedByValue ; it is moved from, part by part
Modem::Modem(Scenario scenario, unsigned seed, Trace trace)
    : model_(std::move(scenario.model)),
      timeline_(std::move(scenario.timeline)),
      faults_(std::move(scenario.faults), seed),
      trace_(std::move(trace)) {
  if (model_.device.crashed != 0) start_in(Mode::BOOT_ROM);
}

// Frames of the download protocols begin with a flag too.
static Bytes flagged(const Bytes& payload) {
  Bytes wire = frame(payload);
  wire.insert(wire.begin(), FLAG);
  return wire;
}

void Modem::receive(View bytes, Time now) {
  advance(now);
  bool lone_flag = bytes.size() == 1 && bytes[0] == FLAG;
  if (lone_flag && mode_ == Mode::PROGRAMMER && !download_.last_answer().empty()) {
    if (trace_) trace_(trace_note(now, "a lone flag: repeats the last answer"));
    return send(flagged(download_.last_answer()), now);
  }
  for (uint8_t byte : bytes) {
    switch (deframer_.take(byte)) {
      case Deframer::PENDING:
        break;
      case Deframer::GOOD:
        answer(deframer_.payload(), now);
        break;
      case Deframer::BAD_CHECK:
        if (trace_) trace_(trace_note(now, "frame with a bad check, dropped"));
        break;
      case Deframer::TOO_LONG:
        if (trace_) trace_(trace_note(now, "frame too long, dropped"));
        break;
    }
  }
}

void Modem::answer_download(View packet, Time now) {
  std::string name = packet_name(mode_, packet);
  if (trace_) trace_(trace_line(now, '>', name, packet));
  std::optional<Fault> fault = faults_.strike(name);
  if (fault && trace_)
    trace_(trace_note(now, std::string("fault ") + fault_name(fault->kind) + " on " + name));
  bool refused = fault && fault->kind == FaultKind::ERROR;
  Bytes payload = refused ? refusal(fault->value, packet) : download_.answer(mode_, packet);
  if (auto next = download_.leads_to(mode_)) restart(now, *next);
  if (payload.empty()) return;
  if (fault && !refused) return send_damaged(*fault, std::move(payload), now);
  if (trace_) trace_(trace_line(now, '<', name, payload));
  send(flagged(payload), now);
}

void Modem::answer(View request, Time now) {
  if (mode_ != Mode::DIAGNOSTIC) return answer_download(request, now);
  std::string name = name_of(request);
  if (trace_) trace_(trace_line(now, '>', name, request));
  std::optional<Fault> fault = faults_.strike(name);
  if (fault && trace_)
    trace_(trace_note(now, std::string("fault ") + fault_name(fault->kind) + " on " + name));
  if (fault && fault->kind == FaultKind::ERROR) {
    return send(frame(refusal(fault->value, request)), now);
  }
  Answer answer = answer_to({model_, request, now});
  Bytes payload = std::move(answer.content);
  if (answer.then != Answer::STAYS) {
    bool boot_rom = answer.then == Answer::ENTERS_BOOT_ROM;
    restart(now, boot_rom ? Mode::BOOT_ROM : Mode::DIAGNOSTIC);
  }
  if (answer.then == Answer::RESTARTS_WITHOUT_ANSWER) return;
  if (fault) return send_damaged(*fault, std::move(payload), now);
  if (trace_) trace_(trace_line(now, '<', name, payload));
  send(frame(payload), now);
}

// The answer is still sent; then the device is gone while it boots, and it needs the PIN again.
void Modem::restart(Time now, Mode next) {
  if (model_.sim.lock == ZOP_PIN_VERIFIED) model_.sim.lock = ZOP_PIN_ENABLED;
  if (model_.sim.lock == ZOP_PIN_ENABLED) model_.sim.status = ZOP_SIM_NOT_INITIALISED;
  model_.state.call = ZOP_CALL_IDLE;
  model_.device.debug_mode = 0;
  model_.device.events = 0;
  next_mode_ = next;
  Time away = next == Mode::DIAGNOSTIC ? BOOT_TIME : MODE_CHANGE_TIME;
  put({now + RESTART_DELAY, Output::HANGS_UP, {}});
  put({now + RESTART_DELAY + away, Output::COMES_BACK, {}});
}

// A programmed modem runs its new firmware.
void Modem::start_in(Mode mode) {
  if (mode_ == Mode::PROGRAMMER) model_.device.partition = download_.programmer.partition;
  if (mode_ == Mode::PROGRAMMER && mode == Mode::DIAGNOSTIC) {
    std::string version = version_in(download_.programmer.images[5]);
    if (!version.empty()) model_.identity.firmware = model_.identity.build = version;
  }
  if (mode != Mode::PROGRAMMER) {
    download_ = DownloadMode();
    download_.programmer.partition = model_.device.partition;
    download_.rom.regions = model_.device.memory;
  }
  mode_ = mode;
}

void Modem::send_damaged(const Fault& fault, Bytes payload, Time now) {
  if (fault.kind == FaultKind::OTHER) {
    uint8_t request[] = {VENDOR, static_cast<uint8_t>(fault.value), 0};
    payload = answer_to({model_, request, now}).content;
  }
  std::vector<Output> outputs = damaged(fault, std::move(payload), free_at(now));
  for (Output& output : outputs) put(std::move(output));
}

// When all earlier answers are on the line: a late one keeps the next ones back.
Time Modem::free_at(Time now) const {
  for (const Output& output : output_) {
    if (output.kind == Output::SENDS) now = std::max(now, output.at);
  }
  return now;
}

void Modem::put(Output output) {
  auto later = std::ranges::upper_bound(output_, output.at, {}, &Output::at);
  output_.insert(later, std::move(output));
}

void Modem::advance(Time now) {
  while (next_entry_ < timeline_.size() && timeline_[next_entry_].at <= now) {
    const TimelineEntry& entry = timeline_[next_entry_++];
    for (auto& change : entry.changes) change(model_);
    if (entry.line == TimelineEntry::HANGS_UP) put({entry.at, Output::HANGS_UP, {}});
    if (entry.line == TimelineEntry::COMES_BACK) put({entry.at, Output::COMES_BACK, {}});
    if (trace_)
      trace_(trace_note(entry.at,
                        "scenario: " + std::to_string(entry.changes.size()) + " settings change"));
  }
}

std::optional<Time> Modem::next_due() const {
  std::optional<Time> due;
  if (!output_.empty()) due = output_.front().at;
  if (next_entry_ < timeline_.size()) {
    Time next = timeline_[next_entry_].at;
    due = due ? std::min(*due, next) : next;
  }
  return due;
}

std::optional<Output> Modem::take_output(Time now) {
  advance(now);
  if (output_.empty() || output_.front().at > now) return std::nullopt;
  Output output = std::move(output_.front());
  output_.pop_front();
  if (output.kind == Output::HANGS_UP) {
    gone_ = true;
    deframer_ = Deframer();
    std::erase_if(output_, [](const Output& o) { return o.kind == Output::SENDS; });
    if (trace_) trace_(trace_note(now, "the device is gone"));
  }
  if (output.kind == Output::COMES_BACK) {
    gone_ = false;
    start_in(next_mode_);
    if (trace_) trace_(trace_note(now, "the device is back"));
  }
  return output;
}

}  // namespace sim
