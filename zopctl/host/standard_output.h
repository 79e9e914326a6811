// Standard output while the module runs: the module prints on it, and this program's output must
// stay clean.
#pragma once

#include <cstdio>
#include <optional>
#include <string>
#include <vector>

namespace zopctl {

// A file that goes where standard output goes now; null when there is no descriptor left.
FILE* duplicate_standard_output(const char* mode = "w");

// While it exists, standard output goes elsewhere.
class RedirectedOutput {
 public:
  explicit RedirectedOutput(int fd);  // which it closes
  ~RedirectedOutput();
  RedirectedOutput(const RedirectedOutput&) = delete;
  RedirectedOutput& operator=(const RedirectedOutput&) = delete;

 private:
  int before_;
};

// What the module prints is dropped.
class QuietOutput : RedirectedOutput {
 public:
  QuietOutput();
};

// What the module prints is read by this program, which writes its own output to user() meanwhile.
class ModuleOutput {
 public:
  ModuleOutput();  // throws Failure
  ~ModuleOutput();
  ModuleOutput(const ModuleOutput&) = delete;
  ModuleOutput& operator=(const ModuleOutput&) = delete;

  FILE* user() const { return user_; }

  // The lines since the last call. The pipe holds some hundreds: call it often enough.
  std::vector<std::string> new_lines();

 private:
  FILE* user_;
  int pipe_;
  std::optional<RedirectedOutput> redirected_;
  std::string rest_;
};

}  // namespace zopctl
