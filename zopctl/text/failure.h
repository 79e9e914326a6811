// Errors that end a verb.
#pragma once

#include <stdexcept>
#include <string>

namespace zopctl {

// A failure to report to the user; what() is the whole message.
struct Failure : std::runtime_error {
  explicit Failure(const std::string& what, int code = 1)
      : std::runtime_error(what), exit_code(code) {}
  int exit_code;
};

// Bad usage.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace zopctl
