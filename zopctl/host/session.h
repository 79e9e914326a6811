// An open modem: device or simulator, library, and vurn_open or only the link; all closed at the
// end. vurn_open needs a ready SIM: a locked one can be reached only by the link.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "zopctl/host/capture.h"
#include "zopctl/host/fake_root.h"
#include "zopctl/host/module_library.h"
#include "zopctl/host/port_lock.h"
#include "zopctl/host/simulator_process.h"
#include "zopctl/host/wait_teller.h"

namespace zopctl {

class Session {
 public:
  // Which modem, through which library, and what is shown of it.
  struct Setting {
    bool simulate = false;
    std::string scenario;          // with simulate; empty: the simulator's default
    double sim_speed = 1;          // of its clock
    std::string device;            // empty: the usual one, or the only one
    std::optional<unsigned> wait;  // seconds to wait for it, 0 without an end
    std::string capture;           // file for all that goes over the line; "-" is standard output
    bool redact = false;           // blank secrets in it
    std::string doing;             // what other programs are told that want the port
    std::string library;           // empty: found beside the program or by the loader
    std::optional<unsigned> log_mask;
    bool shows_progress = false;  // once the modem is open; waiting is told only before
  };
  // What is opened: all by vurn_open, which needs a ready SIM; only the serial link; all, or only
  // the link if there is no SIM; nothing, but the port is reserved; nothing, but the port is
  // chosen; or nothing.
  enum Need { MODULE, LINK, AT_LEAST_LINK, PORT, DEVICE, LIBRARY };

  // Throws Failure when there is no device, no library, or no modem.
  Session(const Setting& setting, Need need);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  const ModuleLibrary& module() const { return *module_; }

 private:
  std::unique_ptr<PortLock> lock_;
  std::unique_ptr<Capture> capture_;
  std::unique_ptr<FakeRoot> root_;
  std::unique_ptr<SimulatorProcess> simulator_;
  std::unique_ptr<ModuleLibrary> module_;
  std::unique_ptr<WaitTeller> waits_;
  Need open_ = LIBRARY;  // MODULE or LINK: is to be closed
};

// Why the device can't be a modem's port, with what to do about it; nothing when it can.
std::optional<std::string> device_problem(const std::string& path);

}  // namespace zopctl
