// Where the secrets are in requests and answers. An answer begins like its request; an error answer
// is a code and the request.
#include "zopctl/host/redaction.h"

#include <algorithm>
#include <cstdint>

#include "simulator/requests/requests.h"

namespace zopctl {

using sim::Bytes;
using sim::View;

enum : uint8_t {
  ESN = 0x01,
  MEMORY_READ = 0x12,
  MEMORY = 0x13,
  NV_READ = 0x26,
  NV_WRITE = 0x27,
  VENDOR = 0xCF,
  SMS = 0xD0,
  SIM = 0xD2,
};
constexpr int ANY = -1;
constexpr size_t REST = SIZE_MAX;
constexpr size_t MEMORY_DATA = 7;
constexpr uint8_t BLANK = '0';
constexpr uint8_t FLAG = 0x7E;

namespace {
struct Rule {
  uint8_t command;
  int subcommand;  // the second byte
  size_t at, length;
};
}  // namespace
constexpr Rule RULES[] = {
    {ESN, ANY, 1, 4},        {SIM, ANY, 11, REST},      // PINs and keys
    {SMS, ANY, 1, REST},     {VENDOR, 0x07, 5, 36},     // phone number
    {VENDOR, '#', 5, 20},                               // ICCID
    {VENDOR, 'g', 5, 16},                               // IMEI
    {VENDOR, 'h', 5, 16},                               // IMSI
    {VENDOR, '4', 40, 32},                              // both, in a screen
    {VENDOR, 'c', 3, REST},                             // the called number
    {VENDOR, 'K', 9, REST},                             // a file of the SIM
    {NV_READ, 0x2D, 3, 128}, {NV_WRITE, 0x2D, 3, 128},  // NV item 16685 (0x412D), a PIN
};

static void blank_range(std::span<uint8_t> bytes, size_t at, size_t length) {
  if (at >= bytes.size()) return;
  for (uint8_t& byte : bytes.subspan(at, std::min(length, bytes.size() - at))) {
    if (byte != 0) byte = BLANK;
  }
}

static void blank_secrets(std::span<uint8_t> payload) {
  if (payload.empty()) return;
  if (sim::error_text(payload[0]) != nullptr) payload = payload.subspan(1);
  if (payload.size() < 2) return;
  for (const Rule& rule : RULES) {
    bool applies =
        payload[0] == rule.command && (rule.subcommand == ANY || payload[1] == rule.subcommand);
    if (applies) blank_range(payload, rule.at, rule.length);
  }
}

Bytes Redaction::blank(const sim::CapturedPacket& packet) {
  sim::Deframer deframer;
  auto verdict = sim::Deframer::PENDING;
  for (uint8_t byte : packet.bytes) verdict = deframer.take(byte);
  if (verdict != sim::Deframer::GOOD) {
    Bytes blanked = packet.bytes;
    for (uint8_t& byte : blanked) byte = byte == FLAG ? FLAG : BLANK;
    return blanked;
  }
  Bytes payload = deframer.payload();
  bool memory = memory_was_asked_for_ && payload[0] == MEMORY && payload.size() > MEMORY_DATA;
  if (memory) blank_range(payload, MEMORY_DATA, REST);
  if (!memory) blank_secrets(payload);
  if (packet.direction == sim::CapturedPacket::TO_MODEM) {
    memory_was_asked_for_ = payload[0] == MEMORY_READ && payload.size() == MEMORY_DATA;
  }
  Bytes wire = sim::frame(payload);
  if (packet.bytes.front() == FLAG) wire.insert(wire.begin(), FLAG);
  return wire;
}

}  // namespace zopctl
