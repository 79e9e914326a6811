// The modem's boot ROM (DMSS download): loads a program into its RAM and starts it, and lets a host
// read the memory after a crash. Multi-byte fields are big-endian.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "simulator/line/frame.h"

namespace sim {

// Its content is made when it is read: it may be as large as a modem's memory.
struct MemoryRegion {
  int preference;
  uint32_t base;
  size_t length;
  std::optional<uint8_t> fill;  // of every byte; otherwise each big-endian word is its own address
  std::string description;
  std::string name;
  size_t unreadable = SIZE_MAX;  // reads of bytes from this offset on are refused

  Bytes read(size_t offset, size_t count) const;
};

class BootRom {
 public:
  // The answer to a packet; empty when there is none.
  Bytes answer(View packet);
  static Bytes refusal(uint8_t reason);

  Bytes ram;             // what has been written, from RAM_ADDRESS on
  bool started = false;  // by a go packet to RAM_ADDRESS
  std::vector<MemoryRegion> regions;

  static constexpr uint32_t RAM_ADDRESS = 0x00800028;

 private:
  Bytes write(View packet);
  Bytes region_list() const;
  Bytes read(View packet) const;
};

}  // namespace sim
