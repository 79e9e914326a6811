// Every function that talks to the modem, with plausible arguments: the rows of the matrix.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/support/world.h"

namespace test {

// The result of a call and, if it succeeded, all its output as bytes.
struct Outcome {
  int result = 0;
  std::string output;
  bool operator==(const Outcome&) const = default;
};

struct Call {
  std::string name;
  enum Needs {
    CLOSED_LINK,  // the call opens it
    LINK,
    CLOSED_MODULE,
    MODULE,
  } needs = LINK;
  std::function<Outcome()> make;

  bool gathers = false;  // as much as it can; the rest of its output is missing or older
};

const std::vector<Call>& every_call();

}  // namespace test
