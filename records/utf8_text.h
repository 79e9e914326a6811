// Texts of modems and files, which may hold any bytes, as UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace records {

// Length of the UTF-8 character that a text begins with, 0 when it begins with none.
size_t utf8_length(std::string_view text);

// Bytes that are no UTF-8 become U+FFFD.
std::string as_utf8(std::string_view text);

// At most so many bytes of a text, cut between characters, with an ellipsis when it was longer.
std::string shortened(std::string_view text, size_t most);

}  // namespace records
