// An open modem: device or simulator, library, vurn_open or the link alone; all of it undone at the
// end. A SIM that is locked can be reached by the link only: vurn_open wants a ready one.
#pragma once

#include <chrono>
#include <memory>
#include <optional>

#include "zopctl/capture.h"
#include "zopctl/fake_root.h"
#include "zopctl/module_library.h"
#include "zopctl/options.h"
#include "zopctl/simulator_process.h"
#include "zopctl/verbs.h"

namespace zopctl {

class Session {
 public:
  // Throws Failure when there is no device, no library, or no modem.
  Session(const Options& options, Verb::Need need);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  const ModuleLibrary& module() const { return *module_; }

 private:
  std::unique_ptr<Capture> capture_;
  std::unique_ptr<FakeRoot> root_;
  std::unique_ptr<SimulatorProcess> simulator_;
  std::unique_ptr<ModuleLibrary> module_;
  Verb::Need need_;
};

// Why the device can't be a modem's port, with what to do about it; nothing when it can.
std::optional<std::string> device_problem(const std::string& path);

// Ends the program with the signal's exit code if the user has asked for it; call between steps.
struct Interrupted {
  int signal;  // 0: by a key
};
void watch_signals();
void check_signals();                 // throws Interrupted
void wait_seconds(unsigned seconds);  // the same, as soon as the signal comes
void wait_ms(unsigned ms);            // both in the modem's time, which may be a simulated one

std::chrono::system_clock::time_point modem_now();

bool has_caught_signal();

// The user has asked by a key: from now on it is as after a first signal.
void ask_to_end();

// Readable when the user wants the program to end.
int end_descriptor();

// Called before a second signal ends the program; from a signal handler.
void before_hard_exit(void (*call)());

// From now on a first signal neither throws nor cuts a wait short, and a lost terminal is nothing:
// what is under way must not break off. A second SIGINT or SIGTERM still ends the program.
void hold_on();

// A folder that a second signal removes before it ends the program; the caller's text, which must
// live until nullptr takes its place.
void leave_nothing_of(const char* folder);

}  // namespace zopctl
