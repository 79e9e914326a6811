// Gives the terminal back, as it was, whatever ends the program: a second signal and a crash too.
#pragma once

namespace zopctl {

// While it lives. Made after the screen's library has set the terminal up, with the settings of
// before taken by remember_terminal().
void remember_terminal(int fd);

class TerminalRescue {
 public:
  TerminalRescue();
  ~TerminalRescue();
  TerminalRescue(const TerminalRescue&) = delete;
  TerminalRescue& operator=(const TerminalRescue&) = delete;
};

}  // namespace zopctl
