// One short function per shape of damage. Damage inside a frame parts it: the host's read that ends
// there is the worst case for one that looks for flags.
#include "simulator/damage.h"

#include <algorithm>

namespace sim {

using namespace std::chrono_literals;

constexpr Time PIECE_GAP = 10ms;
constexpr Time GOES_AFTER = 1ms;  // so that the host can read what was sent before
constexpr size_t STATUS_OFFSET = 3;
constexpr uint8_t NOISE = 0x55;

using Outputs = std::vector<Output>;

static Bytes part(const Bytes& wire, size_t from, size_t to) {
  from = std::min(from, wire.size());
  to = std::min(to, wire.size());
  return {wire.begin() + static_cast<ptrdiff_t>(from), wire.begin() + static_cast<ptrdiff_t>(to)};
}

static Outputs parted(const Bytes& wire, size_t at, Time first, Time second) {
  Outputs outputs;
  Bytes head = part(wire, 0, at), tail = part(wire, at, wire.size());
  if (!head.empty()) outputs.push_back({first, Output::SENDS, head});
  if (!tail.empty()) outputs.push_back({second, Output::SENDS, tail});
  return outputs;
}

static Outputs in_pieces(const Bytes& wire, size_t size, Time at) {
  Outputs outputs;
  for (size_t i = 0; i < wire.size(); i += size, at += PIECE_GAP) {
    outputs.push_back({at, Output::SENDS, part(wire, i, i + size)});
  }
  return outputs;
}

static Outputs twice(Bytes wire, Time now, Time gap) {
  if (gap > 0ms) return {{now, Output::SENDS, wire}, {now + gap, Output::SENDS, wire}};
  wire.insert(wire.end(), wire.begin(), wire.end());
  return {{now, Output::SENDS, wire}};
}

static Outputs hanging_up(const Bytes& wire, const Fault& fault, Time now) {
  Outputs outputs = parted(part(wire, 0, static_cast<size_t>(fault.value)), wire.size(), now, now);
  outputs.push_back({now + GOES_AFTER, Output::HANGS_UP, {}});
  if (fault.back < 0) return outputs;
  Time back = now + GOES_AFTER + std::chrono::milliseconds(fault.back);
  outputs.push_back({back, Output::COMES_BACK, {}});
  return outputs;
}

// The last check byte becomes another one that needs no escape.
static void break_check(Bytes& wire) {
  uint8_t& check = wire[wire.size() - 2];
  check ^= (check ^ 1) == FLAG || (check ^ 1) == ESCAPE ? 4 : 1;
}

static void set_status(Bytes& payload, int status) {
  payload.resize(std::max(payload.size(), STATUS_OFFSET + 2));
  payload[STATUS_OFFSET] = static_cast<uint8_t>(status);
  payload[STATUS_OFFSET + 1] = static_cast<uint8_t>(status >> 8);
}

Outputs damaged(const Fault& fault, Bytes payload, Time now) {
  auto value = static_cast<size_t>(fault.value);
  if (fault.kind == FaultKind::STATUS) set_status(payload, fault.value);
  if (fault.kind == FaultKind::WRONG_ECHO && value < payload.size()) payload[value] ^= 0x10;
  if (fault.kind == FaultKind::SHORTEN) payload.resize(std::min(value, payload.size()));
  Bytes wire = frame(payload);
  size_t at = std::min(static_cast<size_t>(fault.at), wire.size() - 1);
  switch (fault.kind) {
    case FaultKind::SILENCE:
      return {};
    case FaultKind::DELAY:
      return parted(wire, at, now, now + std::chrono::milliseconds(fault.value));
    case FaultKind::BAD_CRC:
      break_check(wire);
      break;
    case FaultKind::CUT:
      wire = part(wire, 0, value);
      break;
    case FaultKind::PIECES:
      return in_pieces(wire, value, now);
    case FaultKind::EXTRA:
      wire.insert(wire.begin(), value, NOISE);
      break;
    case FaultKind::INSERT:
      wire.insert(wire.begin() + static_cast<ptrdiff_t>(at), static_cast<uint8_t>(fault.value));
      return parted(wire, at + 1, now, now);
    case FaultKind::LOSE:
      at = std::min(value, wire.size() - 1);
      wire.erase(wire.begin() + static_cast<ptrdiff_t>(at));
      return parted(wire, at, now, now);
    case FaultKind::FLIP:
      at = (at + value / 8) % wire.size();
      wire[at] ^= static_cast<uint8_t>(1 << value % 8);
      return parted(wire, at + 1, now, now);
    case FaultKind::HANG_UP:
      return hanging_up(wire, fault, now);
    case FaultKind::DUPLICATE:
      return twice(wire, now, std::chrono::milliseconds(fault.value));
    case FaultKind::SHORTEN:
    case FaultKind::WRONG_ECHO:
    case FaultKind::STATUS:
    case FaultKind::OTHER:
    case FaultKind::ERROR:
      break;
  }
  return parted(wire, wire.size(), now, now);
}

}  // namespace sim
