// Standard output kept clean while the module runs.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

namespace zopctl {

// zop_get_bars prints what it computes from on standard output, which is this program's.
class QuietOutput {
 public:
  QuietOutput() {
    fflush(stdout);
    saved_ = dup(STDOUT_FILENO);
    int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(null, STDOUT_FILENO);
    close(null);
  }
  ~QuietOutput() {
    fflush(stdout);
    dup2(saved_, STDOUT_FILENO);
    close(saved_);
  }

 private:
  int saved_;
};

}  // namespace zopctl
