// This program, run once more for one verb, and all that it printed.
#pragma once

#include <string>
#include <vector>

namespace zopctl {

struct ChildResult {
  int exit_code = -1;  // -1: it could not be run, or a signal ended it
  std::string output, errors, capture;
};

// The capture is empty unless a word is CAPTURE_FILE, which stands for the path to write it to.
// Nothing is left on the disk. Throws Interrupted after the child has ended.
inline constexpr char CAPTURE_FILE[] = "{capture}";
ChildResult run_again(std::vector<std::string> words);

}  // namespace zopctl
