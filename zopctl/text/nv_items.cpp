// The names are those of nv list; a number may be given for each.
#include "zopctl/text/nv_items.h"

#include <algorithm>

#include "zopctl/text/arguments.h"

namespace zopctl {

const KnownNvItem* known_nv_item(uint32_t number) {
  const auto* row = std::ranges::find(KNOWN_NV_ITEMS, number, &KnownNvItem::number);
  return row == std::end(KNOWN_NV_ITEMS) ? nullptr : row;
}

std::optional<uint16_t> nv_item_of(const std::string& word) {
  for (const KnownNvItem& row : KNOWN_NV_ITEMS) {
    if (word == row.name) return row.number;
  }
  if (auto number = number_of(word, 0, 0xFFFF)) return static_cast<uint16_t>(*number);
  return std::nullopt;
}

std::string nv_status_text(uint32_t nv_status) {
  constexpr uint32_t NO_SUCH_ITEM = 6;
  if (nv_status == 0) return "good";
  if (nv_status == NV_NEVER_WRITTEN) return "never written";
  return nv_status == NO_SUCH_ITEM ? "no such item" : "refused";
}

}  // namespace zopctl
