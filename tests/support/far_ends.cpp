// Scripted modems. Each piece's delay counts from when the previous piece is due.
#include "tests/support/far_ends.h"

#include <algorithm>

#include "simulator/line/frame.h"

namespace test {

static const Bytes PROBE = {0x1D};

Bytes frame(std::span<const uint8_t> payload) { return sim::frame(payload); }

Bytes unframe(std::span<const uint8_t> wire) {
  sim::Deframer deframer;
  sim::Deframer::Verdict verdict = sim::Deframer::PENDING;
  for (uint8_t byte : wire) verdict = deframer.take(byte);
  return verdict == sim::Deframer::GOOD ? deframer.payload() : Bytes{};
}

void Script::receive(std::span<const uint8_t> bytes, Time now) {
  for (uint8_t byte : bytes) {
    request_.push_back(byte);
    if (byte != 0x7E) continue;
    if (keeps_requests) requests.push_back(request_);
    Time at = std::max(now, due_.empty() ? now : due_.back().at);
    for (Piece& piece : answer_to(request_)) {
      at += piece.after;
      due_.push_back({at, std::move(piece.bytes)});
    }
    request_.clear();
  }
}

Answer Script::answer_to(const Bytes&) {
  if (answers.empty()) return {};
  Answer answer = answers.front();
  answers.pop_front();
  return answer;
}

std::optional<Time> Script::next_due() const {
  if (due_.empty()) return std::nullopt;
  return due_.front().at;
}

Bytes Script::take(Time now) {
  if (due_.empty() || due_.front().at > now) return {};
  Bytes bytes = std::move(due_.front().bytes);
  due_.pop_front();
  return bytes;
}

Answer AnsweringModem::answer_to(const Bytes& request) {
  Bytes payload = unframe(request);
  if (payload == PROBE) return {{frame(hex("1d 00 00 00 00 00 00 00 00"))}};
  if (keeps_requests) payloads.push_back(payload);
  std::optional<Bytes> answer = function_(payload);
  if (!answer) return {};
  return {{frame(*answer), delay}};
}

}  // namespace test
