// Texts of modems and files, which may hold any bytes, as UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace records {

// Length of the UTF-8 character at the start of a text; 0 when there is none.
size_t utf8_length(std::string_view text);

// Invalid bytes become U+FFFD.
std::string as_utf8(std::string_view text);

// What is shown instead of a character that could command a terminal or disguise a text; empty for
// a character that is shown as it is. An empty character stands for an invalid byte.
std::string instead_of(std::string_view character);

// A text that is safe to show; the characters in kept, which are ASCII, stay.
std::string safe_text(std::string_view text, std::string_view kept = "");

// At most this many bytes of a text, cut between characters, with an ellipsis when it was longer.
std::string shortened(std::string_view text, size_t most);

}  // namespace records
