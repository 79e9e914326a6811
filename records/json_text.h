// A text as a JSON string with its quotes, safe to show on a terminal. For long outputs, which
// nlohmann::json would hold in memory.
#pragma once

#include <string>
#include <string_view>

namespace records {

void append_json(std::string& out, std::string_view text);

}  // namespace records
