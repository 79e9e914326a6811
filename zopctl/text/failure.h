// What ends a verb before its time.
#pragma once

#include <stdexcept>
#include <string>

namespace zopctl {

// Something went wrong that the user must know; what() is a whole sentence.
struct Failure : std::runtime_error {
  explicit Failure(const std::string& what, int code = 1)
      : std::runtime_error(what), exit_code(code) {}
  int exit_code;
};

// The command line asks for what can't be.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace zopctl
