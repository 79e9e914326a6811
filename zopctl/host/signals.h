// The user's wish to end the program, and waits that end with it. The first SIGINT, SIGTERM or
// SIGHUP lets the query under way end and cuts waiting short; a second one ends the program at
// once.
#pragma once

#include <chrono>

namespace zopctl {

// Ends the program with the signal's exit code if the user has asked for it; call between steps.
struct Interrupted {
  int signal;  // 0: by a key
};
void watch_signals();
void check_signals();                 // throws Interrupted
void wait_seconds(unsigned seconds);  // the same, as soon as the signal comes
void wait_ms(unsigned ms);            // both in the modem's time, which may be a simulated one

std::chrono::system_clock::time_point modem_now();

// The modem's time runs so many times faster from now on, and the module's sleeps with it.
void set_speed(double factor);

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
