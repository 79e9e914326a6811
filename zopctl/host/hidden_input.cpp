// What a signal handler needs is prepared in advance: the terminal's settings with echo and
// without, and the question, which is asked again when the program goes on.
#include "zopctl/host/hidden_input.h"

#include <errno.h>
#include <poll.h>
#include <signal.h>
#include <termios.h>
#include <unistd.h>

#include <iterator>

#include "zopctl/host/signals.h"

namespace zopctl {

// Those that end or stop a program; SIGINT, SIGTERM, SIGHUP and SIGPIPE have their handler already.
static constexpr int ENDING[] = {SIGTSTP, SIGQUIT, SIGABRT, SIGSEGV, SIGBUS,
                                 SIGFPE,  SIGILL,  SIGUSR1, SIGUSR2, SIGALRM};

static termios visible, hidden;
static std::string question_text;
static struct sigaction actions_before[std::size(ENDING)], continue_before;

static void ask() {
  if (write(STDERR_FILENO, question_text.data(), question_text.size()) < 0) return;
}

static void show_input() { tcsetattr(STDIN_FILENO, TCSANOW, &visible); }
static void hide_input() { tcsetattr(STDIN_FILENO, TCSANOW, &hidden); }

static void watch_ending(int signal);

// The default action, now. Only a stop returns, when the program goes on.
static void end_by(int signal) {
  sigset_t this_one, before;
  sigemptyset(&this_one);
  sigaddset(&this_one, signal);
  ::signal(signal, SIG_DFL);
  pthread_sigmask(SIG_UNBLOCK, &this_one, &before);
  raise(signal);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

static void on_ending(int signal) {
  int error = errno;
  show_input();
  end_by(signal);
  watch_ending(signal);
  hide_input();
  ask();
  errno = error;
}

static void watch_ending(int signal) {
  struct sigaction action = {};
  action.sa_handler = on_ending;
  sigaction(signal, &action, nullptr);
}

// A shell may have changed the settings of a program that was stopped by SIGSTOP.
static void on_continue(int) {
  int error = errno;
  hide_input();
  errno = error;
}

namespace {
class HiddenInput {
 public:
  HiddenInput() {
    tcgetattr(STDIN_FILENO, &visible);
    hidden = visible;
    hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    for (size_t i = 0; i < std::size(ENDING); ++i) {
      sigaction(ENDING[i], nullptr, &actions_before[i]);
      if (actions_before[i].sa_handler == SIG_DFL) watch_ending(ENDING[i]);
    }
    struct sigaction action = {};
    action.sa_handler = on_continue;
    sigaction(SIGCONT, &action, &continue_before);
    before_hard_exit(show_input);
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden);
  }
  ~HiddenInput() {
    sigaction(SIGCONT, &continue_before, nullptr);
    show_input();
    before_hard_exit(nullptr);
    for (size_t i = 0; i < std::size(ENDING); ++i)
      sigaction(ENDING[i], &actions_before[i], nullptr);
    if (write(STDERR_FILENO, "\n", 1) < 0) return;
  }
  HiddenInput(const HiddenInput&) = delete;
  HiddenInput& operator=(const HiddenInput&) = delete;
};
}  // namespace

static void wait_for_input() {
  pollfd inputs[] = {{STDIN_FILENO, POLLIN, 0}, {end_descriptor(), POLLIN, 0}};
  while (poll(inputs, std::size(inputs), -1) < 0 && errno == EINTR) check_signals();
  check_signals();
}

std::string ask_hidden(const std::string& question) {
  question_text = question;
  HiddenInput input;
  ask();
  wait_for_input();
  char line[256];
  ssize_t size = read(STDIN_FILENO, line, sizeof line);
  std::string answer(line, size > 0 ? static_cast<size_t>(size) : 0);
  return answer.substr(0, answer.find('\n'));
}

}  // namespace zopctl
