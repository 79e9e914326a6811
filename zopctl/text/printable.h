// Keeps what could command a terminal or disguise a text out of all output: texts of the modem, the
// module and files may hold any bytes.
#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <span>
#include <string>
#include <string_view>

namespace zopctl {

// Control characters become their pictures, except those in kept; invalid UTF-8, C1 controls,
// characters that change the direction of writing and separators of lines become U+FFFD.
std::string printable(std::string_view text, std::string_view kept = "");

// A text field of fixed width, up to its terminator, if any.
std::string printable(std::span<const uint8_t> field);

// With '?' for these and for what is not ASCII, so that each byte takes one column.
std::string printable_ascii(std::string_view text);

// JSON as text with all its strings printable; with an indentation of -1 on one line.
std::string printable_json(const nlohmann::ordered_json& value, int indent = -1);

}  // namespace zopctl
