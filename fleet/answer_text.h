// Answers for people and programs. Columns that end in "time" are seconds in an answer, and UTC in
// a text.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "fleet/store.h"

namespace fleet {

// "2026-11-22T17:56:28Z"
std::string time_text(int64_t seconds);

// "2026-11-22 17:56"
std::string short_time_text(int64_t seconds);

// The cell of a column that the answer has.
const Cell& named(const Answer& answer, size_t row, std::string_view column);

// For a sentence: "unknown" without a value, and the number without one is 0.
std::string word(const Cell& cell);
double number(const Cell& cell);

// A cell as it is shown; empty when there is nothing.
std::string cell_text(const Answer& answer, size_t row, size_t column);
bool is_time(const Answer& answer, size_t column);

// Texts of logs are in it as they are: what prints it makes them harmless.
std::string as_table(const Answer& answer);
std::string as_csv(const Answer& answer);  // as in RFC 4180
nlohmann::ordered_json as_json(const Answer& answer);

}  // namespace fleet
