// Texts of a modem or a module on a terminal: control characters never reach it.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace zopctl {

// Control characters become '?', but for those in kept.
std::string printable(std::string_view text, std::string_view kept = "");

// A text field of fixed width, up to its terminator.
std::string printable(std::span<const uint8_t> field);

// All that is not ASCII becomes '?', too: a column a byte.
std::string printable_ascii(std::string_view text);

}  // namespace zopctl
