// What the signal handler needs is prepared in advance: the terminal's settings, and the text that
// leaves the full screen.
#include "zopctl/live/terminal_rescue.h"

#include <curses.h>
#include <signal.h>
#include <term.h>
#include <termios.h>
#include <unistd.h>

#include <iterator>
#include <string>

#include "zopctl/host/signals.h"

namespace zopctl {

static int terminal = -1;
static termios settings_before;
static char leave_text[256];
static size_t leave_size = 0;

static constexpr int FATAL_SIGNALS[] = {SIGSEGV, SIGBUS, SIGABRT, SIGFPE, SIGILL, SIGQUIT};
static struct sigaction actions_before[std::size(FATAL_SIGNALS)];

void remember_terminal(int fd) { terminal = tcgetattr(fd, &settings_before) == 0 ? fd : -1; }

static void restore() {
  if (terminal < 0) return;
  tcsetattr(terminal, TCSANOW, &settings_before);
  if (write(terminal, leave_text, leave_size) < 0) return;  // the terminal is gone
}

static void on_fatal_signal(int signal) {
  restore();
  for (size_t i = 0; i < std::size(FATAL_SIGNALS); ++i) {
    if (FATAL_SIGNALS[i] == signal) sigaction(signal, &actions_before[i], nullptr);
  }
  raise(signal);  // delivered when this handler returns
}

// A capability without its padding marks "$<5>".
static std::string capability(const char* name) {
  const char* text = tigetstr(name);
  if (text == nullptr || text == reinterpret_cast<const char*>(-1)) return "";
  std::string taken = text;
  for (size_t mark; (mark = taken.find("$<")) != std::string::npos;) {
    size_t end = taken.find('>', mark);
    taken.erase(mark, end == std::string::npos ? end : end - mark + 1);
  }
  return taken;
}

TerminalRescue::TerminalRescue() {
  std::string leave = capability("sgr0") + capability("cnorm") + capability("rmcup");
  leave_size = leave.copy(leave_text, sizeof leave_text);
  struct sigaction action = {};
  action.sa_handler = on_fatal_signal;
  for (size_t i = 0; i < std::size(FATAL_SIGNALS); ++i) {
    sigaction(FATAL_SIGNALS[i], &action, &actions_before[i]);
  }
  before_hard_exit(restore);
}

TerminalRescue::~TerminalRescue() {
  before_hard_exit(nullptr);
  for (size_t i = 0; i < std::size(FATAL_SIGNALS); ++i) {
    sigaction(FATAL_SIGNALS[i], &actions_before[i], nullptr);
  }
  terminal = -1;
}

}  // namespace zopctl
