// Removes what identifies a person or a place from texts and JSON that are given to others.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

namespace zopctl {

// A line of the log, or a message: long numbers, addresses, and values called by such a name.
std::string redacted(std::string_view text);

// The values of verbs by their keys, and the strings as above. Null stays, others become "removed".
nlohmann::ordered_json redacted(const nlohmann::ordered_json& value);

}  // namespace zopctl
