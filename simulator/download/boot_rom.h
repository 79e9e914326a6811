// The modem's boot ROM (DMSS download): loads a program into its RAM and starts it, and lets a host
// read the memory after a crash. Multi-byte fields are big-endian.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "simulator/line/frame.h"

namespace sim {

struct MemoryRegion {
  int preference;
  uint32_t base;
  Bytes content;
  std::string description;
  std::string name;
};

// Content that shows where it was read from: each big-endian 32-bit word is its own address.
Bytes memory_of_addresses(uint32_t base, size_t length);

class BootRom {
 public:
  // The answer to a packet; empty when there is none.
  Bytes answer(View packet);

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
