// What stands out in a fleet, in sentences: who is in trouble, and what those devices share.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "fleet/store.h"

namespace fleet {

// By the question's name.
using Answers = std::map<std::string, Answer, std::less<>>;

struct Standout {
  std::string text;
  std::string details;
  std::string question;  // whose rows it counts
  bool is_trouble;
};

// The answers are those to totals, stuck, rejected, silent, versions, reject-areas, weak-cells,
// weak-areas and changed.
std::vector<Standout> standouts(const Answers& answers);

// How many devices a column "host" names.
size_t devices_in(const Answer& answer);

}  // namespace fleet
