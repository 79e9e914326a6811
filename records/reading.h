// How reading a file fails, and what it calls back meanwhile.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace records {

// A file can't be read or is not what it should be; what() is the whole message but for the advice.
struct Failure : std::runtime_error {
  explicit Failure(const std::string& what, std::string what_to_do = "")
      : std::runtime_error(what), advice(std::move(what_to_do)) {}
  std::string advice;
};

struct Callbacks {
  void (*check)();                        // between two pieces; an exception ends the reading
  void (*warn)(const std::string& text);  // of a fault in a file that is read on
};

}  // namespace records
