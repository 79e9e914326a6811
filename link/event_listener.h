// The modem event listener: one thread that asks the modem for its events and its field-test screen
// while field testing is on.
//
// The state words are atomics: host threads, the port's failure path, signal handlers and the
// listener share them without a lock.
#pragma once

#include <pthread.h>
#include <stdint.h>
#include <time.h>

#include <atomic>

enum ListenerState : uint32_t {
  LISTENER_STOPPED = 0,
  LISTENER_RUNNING = 1,
  LISTENER_TIMES_CALL = 2,  // and ends a test call after call_end_timeout
  LISTENER_ENDED_CALL = 3,  // the call has been ended by the time-out
};
extern std::atomic<uint32_t> THREAD_STATUS;

// Seconds that a test call may last, set together with LISTENER_TIMES_CALL.
extern std::atomic<uint32_t> call_end_timeout;

// 1 while a stop of the listener is scheduled after a link failure.
extern std::atomic<uint8_t> zop_debug_end_callback_status;

// Has a running listener end the test call after so many seconds. False when none runs.
bool time_call_by_listener(uint32_t timeout_s);

// Told by the port after every fatal error: schedules a stop, a second later, on another thread.
void zop_debug_end_callback();

// SIGALRM: ends a test call whose time is over; tries again a second later while the port is busy.
void callback_function(int signal);

// At the end of the library: stops the listener and waits for it until the wall clock says end, and
// no longer. The link is closed.
void stop_listener_until(const timespec& end);

// A host that unloads the module must not be sent into code that is gone.
void remove_alarm_handlers();

// SIGALRM: stops the listener of a link that has failed.
void callback_debug_close(int signal);

// Runs start on a new thread that never receives an asynchronous signal of the host's: handlers
// that join or wait must not run on the module's own threads. 0, or pthread_create's error.
int create_module_thread(pthread_t* thread, void* (*start)(void*), void* argument);
