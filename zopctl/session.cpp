// Sessions. The first SIGINT, SIGTERM or SIGHUP lets the query under way end, cuts the module's
// waiting short and closes the modem; a second one ends the program at once.
#include "zopctl/session.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <string.h>
#include <sys/eventfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <filesystem>

#include "zopctl/device_sharing.h"
#include "zopctl/host_calls.h"
#include "zopctl/quiet_output.h"
#include "zopctl/words.h"

namespace zopctl {

// Written by the signal handler and by keys, read by any thread. Atomic without a lock.
static std::atomic<int> caught_signal = 0;
static std::atomic<int> held_on = 0;  // what is under way must not break off
static std::atomic<int> end_is_asked = 0;
static int wake_up = -1;  // an eventfd: a signal just before a wait must end it too
static std::atomic<const char*> scratch_folder = nullptr;
static void (*hard_exit_call)() = nullptr;

static void wake() {
  uint64_t one = 1;
  if (write(wake_up, &one, sizeof one) < 0) return;  // full: it is awake already
}

// Calls nothing that a signal handler may not; so the folder is another program's work.
[[noreturn]] static void end_at_once(int signal) {
  if (hard_exit_call != nullptr) hard_exit_call();
  if (isatty(STDERR_FILENO) != 0 && write(STDERR_FILENO, "\n", 1) < 0) _exit(1);  // after a bar
  const char* folder = scratch_folder;
  pid_t pid = folder != nullptr ? _Fork() : -1;
  if (pid == 0) execl("/bin/rm", "rm", "-rf", "--", folder, nullptr);
  if (pid > 0) waitpid(pid, nullptr, 0);
  _exit(128 + signal);
}

static void on_signal(int signal) {
  if (signal == SIGHUP && held_on != 0) return;  // the terminal is gone, the work goes on
  if (caught_signal != 0) end_at_once(signal);
  int saved_errno = errno;
  caught_signal = signal;
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

bool has_caught_signal() { return caught_signal != 0; }
static bool may_hurry() { return (has_caught_signal() || end_is_asked != 0) && held_on == 0; }
void hold_on() { held_on = 1; }
void leave_nothing_of(const char* folder) { scratch_folder = folder; }

static void set_speed(double factor) {
  speed = factor;
  speed_up_sleeps(factor);
}

void watch_signals() {
  hurry_when(may_hurry);
  wake_up = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  struct sigaction action = {};
  action.sa_handler = on_signal;
  for (int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction before = {};
    sigaction(signal, nullptr, &before);
    if (before.sa_handler != SIG_IGN) sigaction(signal, &action, nullptr);  // as under nohup
  }
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

void check_signals() {
  if (may_hurry()) throw Interrupted{caught_signal};
}

// Looks at the device before the module does: the module would try for five seconds, and its
// result would not say why.
std::optional<std::string> device_problem(const std::string& path) {
  int fd = open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
  int error = errno;
  bool terminal = fd >= 0 && isatty(fd) != 0;
  if (fd >= 0) close(fd);
  if (terminal) {
    auto holder = holder_of(path);
    if (!holder) return std::nullopt;
    return path + " is in use by " + *holder + "; end that first: two programs on one port take " +
           "each other's answers";
  }
  if (fd >= 0) return path + " is no serial device; give the modem's DIAG port by --device";
  switch (error) {
    case ENOENT:
    case ENODEV:
    case ENXIO:
      return "no modem at " + path +
             "; is it plugged in and its driver loaded? Another node is given by --device, "
             "a simulated modem by --sim";
    case EACCES:
    case EPERM:
      return "no permission for " + path + "; run as root or join the group that owns it";
    case EBUSY:
      return path + " is in use by another program; end that first";
    default:
      return "can't open " + path + ": " + strerror(error);
  }
}

static void show_log(const ModuleLibrary& module, unsigned mask) {
  catch_log([](int, const std::string& line) { fprintf(stderr, "%s\n", line.c_str()); });
  module.vurn_set_log_mask(mask);
}

static void open_modem(const ModuleLibrary& module, Verb::Need need) {
  if (need == Verb::LINK) {
    if (unsigned result = module.zop_open(MODULE_DEVICE)) {
      check_signals();
      throw Failure("no modem answers on the port: zop_open, result " + std::to_string(result) +
                    "; is this the DIAG port?");
    }
    return;
  }
  if (int result = module.vurn_open()) {
    check_signals();
    throw Failure("the modem could not be opened: vurn_open, " + vurn_result(result) +
                  ": no answer on the port, or no usable SIM; zopctl sim status tells of the SIM, "
                  "--log error shows what the module says");
  }
}

Session::Session(const Options& options, Verb::Need need) : need_(need) {
  if (!options.capture.empty()) {
    capture_ = std::make_unique<Capture>(options.capture, options.redact);
  }
  if (options.simulate) {
    root_ = std::make_unique<FakeRoot>();
    simulator_ = std::make_unique<SimulatorProcess>(
        SimulatorProcess::Setting{options.scenario, root_->device(), options.sim_speed});
    map_device(root_->device());
    set_speed(options.sim_speed);
  } else {
    std::string device = options.device.empty() ? MODULE_DEVICE : options.device;
    map_device(std::filesystem::absolute(device));  // a verb may change the folder
  }
  if (need != Verb::LIBRARY) {
    if (auto problem = device_problem(mapped_device())) throw Failure(*problem);
  }
  module_ = std::make_unique<ModuleLibrary>(options.library);
  if (options.log_mask) show_log(*module_, *options.log_mask);
  check_signals();
  QuietOutput quiet;
  if (need_ != Verb::LIBRARY) open_modem(*module_, need_);
}

Session::~Session() {
  if (!module_) return;
  if (need_ == Verb::LINK) module_->zop_close();
  if (need_ == Verb::MODULE) module_->vurn_close(1);
}

}  // namespace zopctl
