// What a host can ask of the modem, each function with plausible arguments: the rows of the matrix.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/support/world.h"

namespace test {

// What a call outcome: its result, and all that it wrote as bytes, when it succeeded.
struct Outcome {
  int result = 0;
  std::string output;
  bool operator==(const Outcome&) const = default;
};

struct Call {
  std::string name;
  enum Needs {
    CLOSED_LINK,  // opens it itself
    LINK,
    CLOSED_MODULE,
    MODULE,
  } needs = LINK;
  std::function<Outcome()> make;

  bool gathers = false;  // what it can get; the rest of its output is missing, or older
};

const std::vector<Call>& every_call();

// Exported functions that talk to no modem, or over another protocol, and why they have no row.
struct Silent {
  const char* name;
  const char* why;
};
const std::vector<Silent>& silent_functions();

}  // namespace test
