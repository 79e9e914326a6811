// Restores the terminal whatever ends the program, even a second signal or a crash.
#pragma once

namespace zopctl {

// Call remember_terminal() before the screen's library sets the terminal up, and create a
// TerminalRescue after it.
void remember_terminal(int fd);

class TerminalRescue {
 public:
  TerminalRescue();
  ~TerminalRescue();
  TerminalRescue(const TerminalRescue&) = delete;
  TerminalRescue& operator=(const TerminalRescue&) = delete;
};

}  // namespace zopctl
