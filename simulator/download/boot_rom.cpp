// Strict: a packet of the wrong length, or a write that leaves a gap, is refused with a NAK.
#include "simulator/download/boot_rom.h"

#include <algorithm>
#include <iterator>

namespace sim {

enum : uint8_t { ACK = 0x02, NAK = 0x03, PARAMETERS = 0x08, REGIONS = 0x11, MEMORY = 0x13 };
namespace {
enum Reason : uint8_t { BAD_ADDRESS = 2, BAD_LENGTH = 3, TOO_LARGE = 5, BAD_COMMAND = 6 };
}  // namespace
constexpr size_t MAX_WRITE = 1017;
constexpr uint32_t MAX_READ = 1024;

static void put16(Bytes& out, uint32_t value) {
  out.push_back(static_cast<uint8_t>(value >> 8));
  out.push_back(static_cast<uint8_t>(value));
}
static void put32(Bytes& out, uint32_t value) {
  put16(out, value >> 16);
  put16(out, value & 0xFFFF);
}
static uint32_t get16(View p, size_t at) { return static_cast<uint32_t>(p[at] << 8 | p[at + 1]); }
static uint32_t get32(View p, size_t at) { return get16(p, at) << 16 | get16(p, at + 2); }

Bytes MemoryRegion::read(size_t offset, size_t count) const {
  Bytes content(count, fill.value_or(0));
  if (fill) return content;
  for (uint8_t& byte : content) {
    uint32_t address = base + static_cast<uint32_t>(offset & ~size_t{3});
    byte = static_cast<uint8_t>(address >> 8 * (3 - (offset & 3)));
    ++offset;
  }
  return content;
}

Bytes BootRom::refusal(uint8_t reason) { return {NAK, 0, reason}; }

Bytes BootRom::write(View packet) {
  if (packet.size() < 7 || packet.size() - 7 != get16(packet, 5)) return refusal(BAD_LENGTH);
  View data = packet.subspan(7);
  if (data.empty() || data.size() > MAX_WRITE) return refusal(TOO_LARGE);
  uint32_t offset = get32(packet, 1) - RAM_ADDRESS;
  if (offset > ram.size()) return refusal(BAD_ADDRESS);
  ram.resize(std::max<size_t>(ram.size(), offset + data.size()));
  std::copy(data.begin(), data.end(), ram.begin() + offset);
  return {ACK};
}

Bytes BootRom::region_list() const {
  Bytes list;
  for (const MemoryRegion& region : regions) {
    list.push_back(static_cast<uint8_t>(region.preference));
    put32(list, region.base);
    put32(list, static_cast<uint32_t>(region.length));
    for (const std::string* text : {&region.description, &region.name}) {
      std::ranges::copy(*text, std::back_inserter(list));
      list.push_back(0);
    }
  }
  Bytes answer = {REGIONS};
  put16(answer, static_cast<uint32_t>(list.size()));
  std::ranges::copy(list, std::back_inserter(answer));
  return answer;
}

Bytes BootRom::read(View packet) const {
  if (packet.size() != 7) return refusal(BAD_LENGTH);
  uint32_t address = get32(packet, 1);
  uint32_t length = get16(packet, 5);
  if (length == 0 || length > MAX_READ) return refusal(TOO_LARGE);
  for (const MemoryRegion& region : regions) {
    uint64_t offset = uint64_t{address} - region.base;
    if (address < region.base || offset + length > region.length) continue;
    if (offset + length > region.unreadable) return refusal(BAD_ADDRESS);
    Bytes answer = {MEMORY};
    put32(answer, address);
    put16(answer, length);
    std::ranges::copy(region.read(static_cast<size_t>(offset), length), std::back_inserter(answer));
    return answer;
  }
  return refusal(BAD_ADDRESS);
}

Bytes BootRom::answer(View packet) {
  if (packet.empty()) return refusal(BAD_LENGTH);
  switch (packet[0]) {
    case 0x05:
      started = packet.size() == 5 && get32(packet, 1) == RAM_ADDRESS && !ram.empty();
      return started ? Bytes{ACK} : refusal(BAD_ADDRESS);
    case 0x06:
      return {ACK};
    case 0x07:
      return {PARAMETERS, 3, 3, 0x03, 0xF9, 0, 0, 0};
    case 0x0F:
      return write(packet);
    case 0x10:
      return region_list();
    case 0x12:
      return read(packet);
    default:
      return refusal(BAD_COMMAND);
  }
}

}  // namespace sim
