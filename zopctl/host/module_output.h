// What the module prints on standard output, read by this program while the module runs. What the
// program itself has to say goes to user() meanwhile.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace zopctl {

class ModuleOutput {
 public:
  ModuleOutput();   // standard output goes into a pipe from now on; throws Failure
  ~ModuleOutput();  // and back to where it went
  ModuleOutput(const ModuleOutput&) = delete;
  ModuleOutput& operator=(const ModuleOutput&) = delete;

  FILE* user() const { return user_; }

  // The lines that have come since the last call. The pipe holds hundreds: call this now and then.
  std::vector<std::string> new_lines();

 private:
  int pipe_ = -1;
  FILE* user_ = nullptr;
  std::string rest_;
};

}  // namespace zopctl
