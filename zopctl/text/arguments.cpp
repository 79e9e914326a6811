// The whole word must be a number: "12x" is refused.
#include "zopctl/text/arguments.h"

#include <charconv>

#include "zopctl/text/failure.h"

namespace zopctl {

uint32_t Arguments::number(const std::string& name, uint32_t min, uint32_t max) const {
  const std::string& word = text(name);
  bool hex = word.starts_with("0x");
  const char* first = word.data() + (hex ? 2 : 0);
  const char* last = word.data() + word.size();
  uint32_t value = 0;
  auto [end, error] = std::from_chars(first, last, value, hex ? 16 : 10);
  if (error != std::errc{} || end != last || first == last || value < min || value > max) {
    throw UsageError(name + " must be a number from " + std::to_string(min) + " to " +
                     std::to_string(max) + ", not \"" + word + "\"");
  }
  return value;
}

}  // namespace zopctl
