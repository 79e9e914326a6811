// The modem event listener: its state, and what the port and the open tell it.
//
// The state words are atomics: host threads, the port's failure path and signal handlers share
// them without a lock.
#pragma once

#include <stdint.h>

#include <atomic>

// 0 stopped, 1 running, 2 running and timing a test call, 3 running, the test call was ended.
extern std::atomic<uint32_t> THREAD_STATUS;

// Seconds that a test call may last, set together with state 2.
extern std::atomic<uint32_t> call_end_timeout;

// 1 while a stop of the listener is scheduled after a link failure.
extern std::atomic<uint8_t> zop_debug_end_callback_status;

// Told by the port after every fatal error.
void zop_debug_end_callback();

// SIGALRM: ends a test call whose time is over; tries again a second later while the port is busy.
void callback_function(int signal);
