// The NV items that are known: what the module itself reads and writes. The meaning of all others
// is the modem's.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace zopctl {

struct KnownNvItem {
  uint16_t number;
  uint8_t value_at;  // the byte that has the value
  bool secret;       // it is not shown unless asked for by name, nor left in redacted files
  const char* name;  // for the command line
  const char* meaning;
};

inline constexpr KnownNvItem KNOWN_NV_ITEMS[] = {
    {10, 1, false, "preferred-mode", "preferred mode"},
    {850, 1, false, "service-domain", "preferred service domain"},
    {5895, 0, false, "mgrf-supported", "MGRF supported, 0 or 1"},
    {16685, 0, true, "sim-pin", "copy of the SIM PIN"},
    {16687, 0, false, "band-order", "acquisition band order"},
};

inline constexpr uint32_t NV_NEVER_WRITTEN = 5;

const KnownNvItem* known_nv_item(uint32_t number);  // null: not known

// By number or name; no value if it is neither.
std::optional<uint16_t> nv_item_of(const std::string& word);

std::string nv_status_text(uint32_t nv_status);  // "never written"

}  // namespace zopctl
