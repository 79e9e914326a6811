// Resets the link to its state at process start: closed, unclaimed, no answers owed.
#pragma once

#include "link/owed_answers.h"
#include "link/serial_port.h"

namespace test {

inline void fresh_link() {
  SER_SIG = 0;
  SIO_USED_LOCK = 0;
  efs_clear = 0;
  forget_owed();
}

}  // namespace test
