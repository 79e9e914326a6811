// What reading files comes with: how it fails, and what it asks of the program that it is done for.
#pragma once

#include <stdexcept>
#include <string>

namespace records {

// A file that can't be read or is not what it should be; what() is a whole sentence.
struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct Caller {
  void (*check)();                        // between two pieces; what it throws ends the reading
  void (*tell)(const std::string& text);  // what is wrong with a file that is read on
};

}  // namespace records
