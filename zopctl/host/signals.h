// Ending the program for the user, and waits that end with it. The first SIGINT, SIGTERM or SIGHUP
// lets the current query finish and ends waits; a second one ends the program at once, as SIGPIPE
// does: nobody reads the output any more. Calls that speak of a second signal mean SIGPIPE too.
// What must go on without a reader, firmware and captures, ignores it.
#pragma once

#include <chrono>
#include <functional>
#include <string>

namespace zopctl {

// Ends the program with the signal's exit code.
struct Interrupted {
  int signal;  // 0: by a key
};
void watch_signals();
void check_signals();                 // between steps; throws Interrupted
void wait_seconds(unsigned seconds);  // throws it as soon as the signal comes
void wait_ms(unsigned ms);            // both in the modem's time, which may be simulated

std::chrono::system_clock::time_point modem_now();

// Waits until something has come that depends on both clocks, as what the module makes of the
// modem's data: the module's threads go by this machine's. False when it has not come although the
// modem has had its time and the machine its own.
bool wait_until(const std::function<bool()>& has_come, std::chrono::seconds of_modem,
                std::chrono::seconds of_machine);

// From now on the modem's time, and the module's sleeps, run this many times faster.
void set_speed(double factor);

bool has_caught_signal();
int caught_signal();  // 0: none

// The user has pressed a key to end: the same as a first signal.
void ask_to_end();

// Readable when the user wants the program to end.
int end_descriptor();

// What a second signal prints before it ends the program, and the exit code then.
struct LastWords {
  std::string text;   // on standard error
  std::string event;  // for programs, on event_fd
  int event_fd;
  int exit_code;  // 0: that of the signal
};
void set_last_words(const LastWords& words);
void forget_last_words();

// Called before a second signal ends the program; from a signal handler.
void before_hard_exit(void (*call)());

// From now on a first signal neither throws nor ends a wait, and a lost terminal is ignored: the
// work in progress must not be interrupted. A second SIGINT or SIGTERM still ends the program, and
// SIGQUIT is one of them.
void hold_on();

// A file that a second signal removes, one of a few; the caller's text, until it is to be kept.
void unlink_on_hard_exit(const char* file);
void keep_on_hard_exit(const char* file);

// A folder that a second signal removes before it ends the program; the caller's text, which must
// live until nullptr takes its place.
void remove_on_hard_exit(const char* folder);

}  // namespace zopctl
