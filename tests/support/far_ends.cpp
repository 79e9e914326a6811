// Scripted modems. Each piece's delay counts from when the previous piece is due.
#include "tests/support/far_ends.h"

#include <algorithm>
#include <boost/crc.hpp>

namespace test {

static const Bytes PROBE = {0x1D};

static uint16_t crc(std::span<const uint8_t> bytes) {
  boost::crc_optimal<16, 0x1021, 0xFFFF, 0xFFFF, true, true> sum;
  sum.process_bytes(bytes.data(), bytes.size());
  return sum.checksum();
}

Bytes frame(std::span<const uint8_t> payload) {
  uint16_t sum = crc(payload);
  Bytes plain(payload.begin(), payload.end());
  plain.push_back(static_cast<uint8_t>(sum));
  plain.push_back(static_cast<uint8_t>(sum >> 8));
  Bytes wire;
  for (uint8_t byte : plain) {
    bool stuffed = byte == 0x7D || byte == 0x7E;
    if (stuffed) wire.push_back(0x7D);
    wire.push_back(static_cast<uint8_t>(stuffed ? byte ^ 0x20 : byte));
  }
  wire.push_back(0x7E);
  return wire;
}

Bytes unframe(std::span<const uint8_t> wire) {
  Bytes plain;
  for (size_t i = 0; i + 1 < wire.size(); ++i) {
    bool stuffed = wire[i] == 0x7D && i + 2 < wire.size();
    plain.push_back(stuffed ? static_cast<uint8_t>(wire[++i] ^ 0x20) : wire[i]);
  }
  if (plain.size() < 2) return {};
  Bytes payload(plain.begin(), plain.end() - 2);
  bool good = crc(payload) == (plain.end()[-2] | plain.end()[-1] << 8);
  return good ? payload : Bytes{};
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
