// A text as a JSON string, quotes included. Bytes that are no UTF-8 become U+FFFD. For long
// outputs; elsewhere nlohmann::json does it.
#pragma once

#include <string>
#include <string_view>

namespace records {

void append_json(std::string& out, std::string_view text);

}  // namespace records
