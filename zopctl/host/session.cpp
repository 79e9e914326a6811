// Each step of opening needs the ones before it.
#include "zopctl/host/session.h"

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>

#include "zopctl/host/device_choice.h"
#include "zopctl/host/device_sharing.h"
#include "zopctl/host/host_calls.h"
#include "zopctl/host/standard_output.h"
#include "zopctl/host/refusals.h"
#include "zopctl/host/signals.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/words.h"

namespace zopctl {

// Checks the device before the module does: the module would try for five seconds, and its result
// would not say why.
std::optional<std::string> device_problem(const std::string& path) {
  int fd = open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
  int error = errno;
  bool terminal = fd >= 0 && isatty(fd) != 0;
  if (fd >= 0) close(fd);
  if (auto holder = reservation_of(path)) return *holder;
  if (terminal) {
    auto holder = holder_of(path);
    if (!holder) return std::nullopt;
    return path + " is in use by " + *holder + "; end that first: two programs on one port take " +
           "each other's answers";
  }
  if (fd >= 0) return path + " is not a serial device; give the modem's DIAG port with --device";
  switch (error) {
    case ENOENT:
    case ENODEV:
    case ENXIO:
      return "no modem at " + path +
             "; is it plugged in and its driver loaded? --device names another port, "
             "--sim starts a simulated modem";
    case EACCES:
    case EPERM:
      return "no permission for " + path + "; run as root or join the group that owns it";
    case EBUSY:
      return path + " is in use by another program; end that first";
    default:
      return "can't open " + path + ": " + strerror(error) + "; " + records::advice_after(error);
  }
}

static void show_log(const ModuleLibrary& module, unsigned mask) {
  catch_log([](int, const std::string& line) { fprintf(stderr, "%s\n", line.c_str()); });
  module.vurn_set_log_mask(mask);
}

static void open_link(const ModuleLibrary& module) {
  unsigned result = module.zop_open(MODULE_DEVICE);
  check_signals();
  if (answers_as_boot_rom()) throw Failure(CRASHED, 1, SAVE_MEMORY);
  if (result == ZOP_OPEN_UP) return;
  throw Failure("no modem answers on the port: zop_open, result " + std::to_string(result) +
                "; is this the DIAG port? zopctl devices lists those that answer");
}

// What is open now.
static Session::Need open_modem(const ModuleLibrary& module, Session::Need need) {
  if (need == Session::LINK) return open_link(module), need;
  int result = module.vurn_open();
  if (result == VURN_OK) return Session::MODULE;
  check_signals();
  if (answers_as_boot_rom()) throw Failure(CRASHED, 1, SAVE_MEMORY);
  if (need == Session::AT_LEAST_LINK) return open_link(module), Session::LINK;
  std::string refusal = take_refusal();
  std::string why = refusal.empty() ? "no answer on the port, or no usable SIM" : refusal;
  throw Failure("the modem could not be opened: vurn_open, " + vurn_result(result) + ": " + why, 1,
                "zopctl sim status shows the SIM, --log error what the module says");
}

// What must not be disturbed is not begun without a lock.
static void check_lock(const PortLock& lock, Session::Need need) {
  if (lock.problem().empty()) return;
  std::string problem = "the port can't be reserved: " + lock.problem();
  if (need == Session::PORT)
    throw Failure(problem, 1, "ZOPCTL_LOCK_DIR names another folder for all programs that use it");
  fprintf(stderr, "zopctl: %s; it is used all the same\n", problem.c_str());
}

Session::Session(const Setting& setting, Need need) {
  if (!setting.capture.empty()) {
    capture_ = std::make_unique<Capture>(setting.capture, setting.redact);
  }
  if (setting.simulate) {
    root_ = std::make_unique<FakeRoot>();
    simulator_ = std::make_unique<SimulatorProcess>(
        SimulatorProcess::Setting{setting.scenario, root_->device(), setting.sim_speed});
    map_device(root_->device());
  } else {
    std::string device = MODULE_DEVICE;
    if (need != LIBRARY) device = choose_device({setting.device, setting.wait});
    map_device(std::filesystem::absolute(device));
    if (need != LIBRARY && need != DEVICE) {
      lock_ = std::make_unique<PortLock>(mapped_device(), setting.doing);
      check_lock(*lock_, need);
    }
  }
  set_speed(setting.sim_speed);
  bool opens = need == MODULE || need == LINK || need == AT_LEAST_LINK;
  if (opens) {
    if (auto problem = device_problem(mapped_device())) throw Failure(*problem);
  }
  module_ = std::make_unique<ModuleLibrary>(setting.library);
  if (setting.log_mask) show_log(*module_, *setting.log_mask);
  check_signals();
  QuietOutput quiet;
  watch_refusals();
  if (opens || need == DEVICE) waits_ = std::make_unique<WaitTeller>();
  if (opens) open_ = open_modem(*module_, need);
  if (setting.shows_progress) waits_.reset();
  take_refusal();  // the modem has opened without what it refused
}

Session::~Session() {
  if (!module_) return;
  if (open_ == LINK) module_->zop_close();
  if (open_ == MODULE) module_->vurn_close(1);
}

}  // namespace zopctl
