// What the handler touches is atomic, and the folder that it removes is another program's work.
#include "zopctl/host/signals.h"

#include <errno.h>
#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <list>

#include "zopctl/host/host_calls.h"

namespace zopctl {

// Written by the signal handler and by keys, read by any thread. Lock-free.
static std::atomic<int> first_signal = 0;
static std::atomic<int> held_on = 0;  // what is under way must not break off
static std::atomic<int> end_is_asked = 0;
static int wake_up = -1;  // an eventfd: a signal just before a wait must end it too
static std::atomic<const char*> scratch_folder = nullptr;
static std::atomic<const char*> scratch_files[8] = {};
static void (*hard_exit_call)() = nullptr;
static std::atomic<const LastWords*> last_words = nullptr;

static void wake() {
  uint64_t one = 1;
  if (write(wake_up, &one, sizeof one) < 0) return;  // full: it is awake already
}

static void say(int fd, const std::string& text) {
  if (write(fd, text.data(), text.size()) < 0) return;  // nobody reads it
}

// Calls nothing that a signal handler may not; so the folder is another program's work.
[[noreturn]] static void end_at_once(int signal) {
  ::signal(SIGPIPE, SIG_IGN);  // nobody may read what is said here
  if (hard_exit_call != nullptr) hard_exit_call();
  bool after_bar = signal != SIGPIPE && isatty(STDERR_FILENO) != 0;
  if (after_bar && write(STDERR_FILENO, "\n", 1) < 0) _exit(1);
  for (const auto& slot : scratch_files)
    if (const char* file = slot) unlink(file);
  const char* folder = scratch_folder;
  pid_t pid = folder != nullptr ? _Fork() : -1;
  if (pid == 0) execl("/bin/rm", "rm", "-rf", "--", folder, nullptr);
  if (pid > 0) waitpid(pid, nullptr, 0);
  const LastWords* words = last_words;
  if (words == nullptr) _exit(128 + signal);
  say(STDERR_FILENO, words->text);
  say(words->event_fd, words->event);
  _exit(words->exit_code != 0 ? words->exit_code : 128 + signal);
}

// Earlier ones are kept to the end of the process: a signal handler may be reading them.
void set_last_words(const LastWords& words) {
  static auto& all = *new std::list<LastWords>;
  last_words = &all.emplace_back(words);
}
void forget_last_words() { last_words = nullptr; }

static void on_signal(int signal) {
  if (signal == SIGHUP && held_on != 0) return;  // the terminal is gone, the work goes on
  if (first_signal != 0 || signal == SIGPIPE) end_at_once(signal);
  int saved_errno = errno;
  first_signal = signal;
  wake();
  errno = saved_errno;
}

void ask_to_end() {
  end_is_asked = 1;
  wake();
}

int end_descriptor() { return wake_up; }
void before_hard_exit(void (*call)()) { hard_exit_call = call; }

static double speed = 1;  // of a simulated modem's clock

bool has_caught_signal() { return first_signal != 0; }
int caught_signal() { return first_signal; }
static bool may_hurry() { return (has_caught_signal() || end_is_asked != 0) && held_on == 0; }
void remove_on_hard_exit(const char* folder) { scratch_folder = folder; }

// In the first slot that holds before.
static void replace_scratch_file(const char* before, const char* file) {
  for (auto& slot : scratch_files) {
    if (slot != before) continue;
    slot = file;
    return;
  }
}
void unlink_on_hard_exit(const char* file) { replace_scratch_file(nullptr, file); }
void keep_on_hard_exit(const char* file) { replace_scratch_file(file, nullptr); }

void set_speed(double factor) {
  speed = factor;
  speed_up_sleeps(factor);
}

static void catch_signal(int signal) {
  struct sigaction action = {};
  action.sa_handler = on_signal;
  struct sigaction before = {};
  sigaction(signal, nullptr, &before);
  if (before.sa_handler != SIG_IGN) sigaction(signal, &action, nullptr);  // as under nohup
}

void watch_signals() {
  hurry_when(may_hurry);
  wake_up = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  for (int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) catch_signal(signal);
  signal(SIGXFSZ, SIG_IGN);  // a file that is too large is an error of that file
}

// Ctrl-\, which people try when Ctrl-C does not help, would leave a modem half written.
void hold_on() {
  held_on = 1;
  catch_signal(SIGQUIT);
}

std::chrono::system_clock::time_point modem_now() {
  using Clock = std::chrono::system_clock;
  static const Clock::time_point start = Clock::now();
  auto passed = std::chrono::duration<double>(Clock::now() - start) * speed;
  return start + std::chrono::duration_cast<Clock::duration>(passed);
}

void wait_seconds(unsigned seconds) { wait_ms(seconds * 1000); }

void wait_ms(unsigned ms) {
  auto us = static_cast<long>(ms / speed * 1000);
  timespec left = {us / 1'000'000, us % 1'000'000 * 1000};
  pollfd signals = {wake_up, POLLIN, 0};
  ppoll(&signals, held_on != 0 ? 0 : 1, &left, nullptr);
  check_signals();
}

bool wait_until(const std::function<bool()>& has_come, std::chrono::seconds of_modem,
                std::chrono::seconds of_machine) {
  using Clock = std::chrono::steady_clock;
  auto modem_end = modem_now() + of_modem;
  auto machine_end = Clock::now() + of_machine;
  double step_ms = std::clamp(1000 / speed, 100.0, 1000.0);  // of this machine's time
  while (!has_come()) {
    if (modem_now() >= modem_end && Clock::now() >= machine_end) return false;
    wait_ms(static_cast<unsigned>(step_ms * speed));
  }
  return true;
}

void check_signals() {
  if (may_hurry()) throw Interrupted{first_signal};
}

}  // namespace zopctl
