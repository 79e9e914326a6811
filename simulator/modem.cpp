// The modem: frames in, answers out, the time line in between. A fault damages one answer; the
// request has taken effect by then, as on a real modem. Only a refused request has no effect.
#include "simulator/modem.h"

#include <algorithm>
#include <utility>

#include "simulator/trace.h"

namespace sim {

using namespace std::chrono_literals;

constexpr Time RESTART_DELAY = 200ms;
constexpr Time BOOT_TIME = 6s;
constexpr Time MODE_CHANGE_TIME = 2s;  // into the boot ROM, or into a programmer

// cppcheck-suppress passedByValue ; it is moved from, part by part
Modem::Modem(Scenario scenario, unsigned seed, Trace trace)
    : model_(std::move(scenario.model)),
      timeline_(std::move(scenario.timeline)),
      faults_(std::move(scenario.faults), seed),
      trace_(std::move(trace)) {
  start_in(model_.device.crashed != 0 ? Mode::BOOT_ROM : Mode::DIAGNOSTIC);
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

// Returns the fault that hits it.
std::optional<Fault> Modem::take_request(const std::string& name, View request, Time now) {
  if (trace_) trace_(trace_line(now, '>', name, request));
  if (on_request) on_request(name);
  std::optional<Fault> fault = faults_.strike(name);
  if (fault && trace_)
    trace_(trace_note(now, std::string("fault ") + fault_name(fault->kind) + " on " + name));
  return fault;
}

void Modem::answer_download(View packet, Time now) {
  std::string name = packet_name(mode_, packet);
  std::optional<Fault> fault = take_request(name, packet, now);
  bool refused = fault && fault->kind == FaultKind::ERROR;
  Bytes payload = refused ? download_.refuse(mode_, fault->value) : download_.answer(mode_, packet);
  if (mode_ == Mode::PROGRAMMER) keep_flash();
  if (auto next = download_.leads_to(mode_)) restart(now, *next);
  if (payload.empty()) return;
  if (fault && !refused) return send_damaged(*fault, std::move(payload), now);
  if (trace_) trace_(trace_line(now, '<', name, payload));
  send(flagged(payload), now);
}

void Modem::answer(View request, Time now) {
  if (mode_ != Mode::DIAGNOSTIC) return answer_download(request, now);
  std::string name = name_of(request);
  std::optional<Fault> fault = take_request(name, request, now);
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

// The answer is still sent; then the device is gone while it boots.
void Modem::restart(Time now, Mode next) {
  if (start_) return;  // it no longer listens
  end_session();
  Time away = next == Mode::DIAGNOSTIC ? BOOT_TIME : MODE_CHANGE_TIME;
  start_ = {now + RESTART_DELAY + away, next};
  put({now + RESTART_DELAY, Output::HANGS_UP, {}});
  put({start_->at, Output::COMES_BACK, {}});
}

void Modem::unplug(Time now) {
  start_.reset();
  std::erase_if(output_, [now](const Output& o) { return o.at >= now; });
  if (!gone_) put({now, Output::HANGS_UP, {}});
}

void Modem::replug(Time now) {
  unplug(now);
  end_session();
  start_ = {now, Mode::DIAGNOSTIC};
  put({now, Output::COMES_BACK, {}});
}

// What ends with the power or a restart: the PIN is needed again.
void Modem::end_session() {
  if (model_.sim.lock == ZOP_PIN_VERIFIED) model_.sim.lock = ZOP_PIN_ENABLED;
  if (model_.sim.lock == ZOP_PIN_ENABLED) model_.sim.status = ZOP_SIM_NOT_INITIALISED;
  model_.state.call = ZOP_CALL_IDLE;
  model_.device.debug_mode = 0;
  model_.device.events = 0;
}

// A modem that is half written gets no further than its boot ROM.
void Modem::start_in(Mode mode) {
  if (mode == Mode::DIAGNOSTIC && model_.device.half_written != 0) mode = Mode::BOOT_ROM;
  if (mode != Mode::PROGRAMMER) {
    download_ = DownloadMode();
    download_.programmer.partition = model_.device.partition;
    download_.programmer.missing = model_.device.half_written;
    download_.rom.regions = model_.device.memory;
  }
  mode_ = mode;
}

// The flash changes with each packet, not only at the reset: the power may go at any time.
void Modem::keep_flash() {
  const Programmer& programmer = download_.programmer;
  int written = model_.device.half_written & ~programmer.missing;
  model_.device.partition = programmer.partition;
  model_.device.half_written = programmer.missing;
  auto firmware = programmer.images.find(FIRMWARE_TYPE);
  if ((written & FIRMWARE) == 0 || firmware == programmer.images.end()) return;
  std::string version = version_in(firmware->second);
  if (!version.empty()) model_.identity.firmware = model_.identity.build = version;
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
    if (entry.line == TimelineEntry::HANGS_UP) unplug(entry.at);
    if (entry.line == TimelineEntry::COMES_BACK) replug(entry.at);
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

static const char* back_in(Mode mode) {
  switch (mode) {
    case Mode::DIAGNOSTIC:
      return "the device is back";
    case Mode::BOOT_ROM:
      return "the device is back, in its boot ROM";
    case Mode::PROGRAMMER:
      return "the device is back, running a programmer";
  }
  return "";
}

std::optional<Output> Modem::take_output(Time now) {
  // One thing after the other: an entry of the time line may undo an output that is due later.
  for (auto due = next_due(); due && *due <= now; due = next_due()) {
    advance(*due);
    if (!output_.empty() && output_.front().at <= *due) break;
  }
  if (output_.empty() || output_.front().at > now) return std::nullopt;
  Output output = std::move(output_.front());
  output_.pop_front();
  if (output.kind == Output::HANGS_UP) {
    gone_ = true;
    deframer_ = Deframer();
    std::erase_if(output_, [](const Output& o) { return o.kind == Output::SENDS; });
    if (trace_) trace_(trace_note(output.at, "the device is gone"));
  }
  if (output.kind == Output::COMES_BACK) {
    gone_ = false;
    bool starts = start_ && start_->at <= output.at;  // otherwise it goes on as it was
    if (starts) start_in(std::exchange(start_, std::nullopt)->mode);
    if (trace_) trace_(trace_note(output.at, back_in(mode_)));
  }
  return output;
}

}  // namespace sim
