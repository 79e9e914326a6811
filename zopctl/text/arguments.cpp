// The whole word must be a number: "12x" is refused.
#include "zopctl/text/arguments.h"

#include <charconv>
#include <limits>

#include "zopctl/text/failure.h"

namespace zopctl {

std::optional<uint32_t> number_of(const std::string& word, uint32_t min, uint32_t max) {
  bool hex = word.starts_with("0x");
  const char* first = word.data() + (hex ? 2 : 0);
  const char* last = word.data() + word.size();
  uint32_t value = 0;
  auto [end, error] = std::from_chars(first, last, value, hex ? 16 : 10);
  bool good = error == std::errc{} && end == last && first != last;
  return good && value >= min && value <= max ? std::optional(value) : std::nullopt;
}

uint32_t Arguments::number(const std::string& name) const {
  if (auto value = number_of(text(name), 0, std::numeric_limits<uint32_t>::max())) return *value;
  throw UsageError(name + " must be a number, not \"" + text(name) + "\"");
}

}  // namespace zopctl
