// The questions that an operator asks of a fleet. Each is an SQL text that all engines take.
#pragma once

#include <string>
#include <vector>

#include "fleet/store.h"

namespace fleet {

struct Question {
  std::string name;
  std::string meaning;  // the comment at its head
  std::string sql;
};

const std::vector<Question>& questions();

// Null when there is none of this name.
const Question* find_question(const std::string& name);

// Where to look, unless the user says otherwise: a week, up to the newest report.
constexpr int64_t USUAL_SPAN_S = int64_t{7} * 86'400;
constexpr int64_t USUAL_SILENCE_S = int64_t{26} * 3600;
constexpr int64_t USUAL_ROWS = 1000;
int64_t newest_time(Store& store);  // 0 without any

// At most as many rows as the values allow.
Answer answer_of(Store& store, const Question& question, const Ask& values);

}  // namespace fleet
