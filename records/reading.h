// How reading a file fails, and what it calls back meanwhile.
#pragma once

#include <stdexcept>
#include <string>

namespace records {

// A file can't be read or is not what it should be; what() is a whole sentence.
struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct Callbacks {
  void (*check)();                        // between two pieces; an exception ends the reading
  void (*warn)(const std::string& text);  // of a fault in a file that is read on
};

}  // namespace records
