// Standard output while the module runs: the module prints on it, and this program's own output
// must stay clean.
#pragma once

#include <cstdio>
#include <optional>
#include <string>
#include <vector>

namespace zopctl {

// Where standard output goes now, as a file of its own; null when there is no descriptor left.
FILE* duplicate_standard_output(const char* mode = "w");

// Standard output goes elsewhere while it lives.
class RedirectedOutput {
 public:
  explicit RedirectedOutput(int fd);  // takes the descriptor
  ~RedirectedOutput();
  RedirectedOutput(const RedirectedOutput&) = delete;
  RedirectedOutput& operator=(const RedirectedOutput&) = delete;

 private:
  int before_;
};

// Nothing of what the module prints is seen.
class QuietOutput : RedirectedOutput {
 public:
  QuietOutput();
};

// What the module prints is read by this program, whose own output goes to user() meanwhile.
class ModuleOutput {
 public:
  ModuleOutput();  // throws Failure
  ~ModuleOutput();
  ModuleOutput(const ModuleOutput&) = delete;
  ModuleOutput& operator=(const ModuleOutput&) = delete;

  FILE* user() const { return user_; }

  // The lines that have come since the last call. The pipe holds hundreds: call this now and then.
  std::vector<std::string> new_lines();

 private:
  FILE* user_;
  int pipe_;
  std::optional<RedirectedOutput> redirected_;
  std::string rest_;
};

}  // namespace zopctl
