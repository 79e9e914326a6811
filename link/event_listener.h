// The event listener: one thread that polls the modem for its events and its field-test screen
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
  LISTENER_TIMES_CALL = 2,  // will end the test call after call_end_timeout
  LISTENER_ENDED_CALL = 3,  // has ended it
};
extern std::atomic<uint32_t> THREAD_STATUS;

// Time limit of the test call in seconds, set together with LISTENER_TIMES_CALL.
extern std::atomic<uint32_t> call_end_timeout;

// 1 while a stop of the listener is scheduled after a link failure.
extern std::atomic<uint8_t> zop_debug_end_callback_status;

// Makes the listener end the test call after timeout_s. False if it is not running.
bool time_call_by_listener(uint32_t timeout_s);

// Called by the port after every fatal error: schedules a stop one second later, by SIGALRM.
void zop_debug_end_callback();

// SIGALRM: ends a test call whose time is over, or retries a second later if the port is busy.
void callback_function(int signal);

// For unloading, with the link closed: stops the listener and waits for it until the wall clock
// reaches end.
void stop_listener_until(const timespec& end);

// For unloading: no signal may call a handler that is no longer in memory.
void remove_alarm_handlers();

// SIGALRM: stops the listener of a link that has failed.
void callback_debug_close(int signal);

// Runs start on a new thread that receives no asynchronous signals: a handler that joins or waits
// must not run on the module's own threads. 0, or pthread_create's error.
int create_module_thread(pthread_t* thread, void* (*start)(void*), void* argument);
