// A text as a JSON string, quotes included. Bytes that are no UTF-8 become U+FFFD. For long
// outputs; elsewhere nlohmann::json does it.
#pragma once

#include <string>
#include <string_view>

namespace zopctl {

void append_json(std::string& out, std::string_view text);

// Length of the UTF-8 character that a text begins with, 0 when it begins with none.
size_t utf8_length(std::string_view text);

}  // namespace zopctl
