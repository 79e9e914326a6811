// Keeps control characters in texts of the modem or the module away from the terminal.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace zopctl {

// Replaces control characters by '?', except those in kept.
std::string printable(std::string_view text, std::string_view kept = "");

// A text field of fixed width, up to its terminator, if any.
std::string printable(std::span<const uint8_t> field);

// Also replaces what is not ASCII, so that each byte takes one column.
std::string printable_ascii(std::string_view text);

}  // namespace zopctl
