// Looking up requests in a capture.
#include "simulator/replay.h"

#include <algorithm>

#include "simulator/requests/requests.h"
#include "simulator/trace.h"

namespace sim {

constexpr Time AWAY_AFTER_HANG_UP = std::chrono::seconds(2);

Replay::Replay(std::vector<CapturedPacket> packets, Modem::Trace trace) : trace_(std::move(trace)) {
  std::chrono::microseconds asked_at{0};
  for (CapturedPacket& packet : packets) {
    if (packet.direction == CapturedPacket::TO_MODEM && !packet.bytes.empty()) {
      asked_at = packet.at;
      exchanges_.push_back({std::move(packet.bytes), {}});
    } else if (!exchanges_.empty()) {
      Time after = std::max(Time{0}, Time(packet.at - asked_at));
      exchanges_.back().answers.push_back({after, std::move(packet.bytes)});
    }
  }
  if (exchanges_.empty()) throw CaptureError("the capture has no requests");
}

// The payload of a frame, with or without an opening flag.
static Bytes payload_of(View wire) {
  Deframer deframer;
  for (uint8_t byte : wire) {
    if (deframer.take(byte) == Deframer::GOOD) return deframer.payload();
  }
  return {};
}

// Command and subcommand: arguments may differ, or be blanked in the capture.
static bool same_command(View one, View other) {
  constexpr size_t COMMAND = 2;
  Bytes a = payload_of(one), b = payload_of(other);
  a.resize(std::min(a.size(), COMMAND));
  b.resize(std::min(b.size(), COMMAND));
  return !a.empty() && a == b;
}

// Each request has its own position: two threads of the host may now ask in another order.
const Replay::Exchange* Replay::find(View request) {
  auto least_played = [&](auto matches) {
    Exchange* found = nullptr;
    for (Exchange& exchange : exchanges_) {
      bool earlier = found == nullptr || exchange.played < found->played;
      if (earlier && matches(exchange)) found = &exchange;
    }
    return found;
  };
  Exchange* found =
      least_played([&](const Exchange& e) { return std::ranges::equal(e.request, request); });
  if (found == nullptr)
    found = least_played([&](const Exchange& e) { return same_command(e.request, request); });
  if (found != nullptr) ++found->played;
  return found;
}

void Replay::answer(View request, Time now) {
  Bytes payload = payload_of(request);
  if (trace_) trace_(trace_line(now, '>', name_of(payload), payload));
  const Exchange* found = find(request);
  if (found == nullptr) return refuse(request, now);
  for (const Exchange::Answer& answer : found->answers) {
    bool hangs_up = answer.bytes.empty();
    put({now + answer.after, hangs_up ? Output::HANGS_UP : Output::SENDS, answer.bytes});
    if (hangs_up) put({now + answer.after + AWAY_AFTER_HANG_UP, Output::COMES_BACK, {}});
  }
}

// The module polls for events every half second; silence would make it close the link for a fault
// that the captured modem did not have. Frames of the download protocols, which
// begin with a flag, have no such refusal.
void Replay::refuse(View request, Time now) {
  if (trace_) trace_(trace_note(now, "not in the capture"));
  Bytes payload = payload_of(request);
  if (payload.empty() || request.front() == FLAG) return;
  put({now, Output::SENDS, frame(refusal(BAD_COMMAND, payload))});
}

void Replay::put(Output output) {
  auto later = std::ranges::upper_bound(output_, output.at, {}, &Output::at);
  output_.insert(later, std::move(output));
}

// A frame ends in a flag after other bytes; a lone flag is a request by itself.
void Replay::receive(View bytes, Time now) {
  bool lone_flag = pending_.empty() && bytes.size() == 1 && bytes[0] == FLAG;
  if (lone_flag) return answer(bytes, now);
  for (uint8_t byte : bytes) {
    pending_.push_back(byte);
    if (byte != FLAG || pending_.size() == 1) continue;
    answer(pending_, now);
    pending_.clear();
  }
}

std::optional<Time> Replay::next_due() const {
  return output_.empty() ? std::nullopt : std::optional<Time>(output_.front().at);
}

std::optional<Output> Replay::take_output(Time now) {
  if (output_.empty() || output_.front().at > now) return std::nullopt;
  Output output = std::move(output_.front());
  output_.pop_front();
  if (output.kind == Output::HANGS_UP) pending_.clear();
  if (trace_ && output.kind == Output::SENDS) {
    Bytes payload = payload_of(output.bytes);
    trace_(payload.empty() ? trace_note(now, "no good frame, as captured")
                           : trace_line(now, '<', name_of(payload), payload));
  }
  return output;
}

}  // namespace sim
