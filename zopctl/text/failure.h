// Errors that end a verb.
#pragma once

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

#include "records/file_error.h"

namespace zopctl {

// A failure to report to the user; what() is the whole message but for the advice.
struct Failure : std::runtime_error {
  explicit Failure(const std::string& what, int code = 1, std::string what_to_do = "")
      : std::runtime_error(what), exit_code(code), advice(std::move(what_to_do)) {}
  explicit Failure(const records::Failure& failure) : Failure(failure.what(), 1, failure.advice) {}
  int exit_code;
  std::string advice;                // what to do next, where what() does not say it
  const char* result = "failed";     // or "interrupted"
  nlohmann::ordered_json details{};  // for programs, of a verb that prints events
};

// "WHAT: No space left on device", with its advice. WHAT names the file.
inline Failure file_failure(const std::string& what, int error) {
  return Failure(records::file_failure(what, error));
}

// Of a file that is about to be read. Streams open folders.
inline void require_readable(const std::string& path) {
  if (int error = records::read_error(path)) throw file_failure(path, error);
}

// Bad usage.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// For programs: {"code": 2, "text": "what happened", "advice": "what to do next"}. The code is the
// exit code; null if it tells the signal. No advice is null.
inline nlohmann::ordered_json error_object(int code, const std::string& text,
                                           const std::string& advice) {
  nlohmann::ordered_json error = {{"code", nullptr}, {"text", text}, {"advice", nullptr}};
  if (code != 0) error["code"] = code;
  if (!advice.empty()) error["advice"] = advice;
  return error;
}

}  // namespace zopctl
