// What the whole module shares: its lock, its open flag, its clock.
//
// gModuleMutex serialises the host's calls and with them the command library, which works on one
// request and one response buffer. It is not recursive: no code calls a vurn_ getter with it held.
#pragma once

#include <pthread.h>
#include <stdint.h>
#include <time.h>

extern pthread_mutex_t gModuleMutex;

extern bool gModuleOpen;    // from a good zop_open to zop_close; under gModuleMutex
extern bool gRefetchPlmns;  // the next refresh reads the SIM's PLMN lists; under gModuleMutex

// Holds a mutex for the length of a scope.
class ScopedLock {
 public:
  explicit ScopedLock(pthread_mutex_t& mutex) : mutex_(mutex) { pthread_mutex_lock(&mutex_); }
  ~ScopedLock() { pthread_mutex_unlock(&mutex_); }
  ScopedLock(const ScopedLock&) = delete;
  ScopedLock& operator=(const ScopedLock&) = delete;

 private:
  pthread_mutex_t& mutex_;
};

// The process that has opened the port or made a thread: a fork's child has none of the threads,
// and the port is its parent's.
void prv_note_process();
bool prv_is_noted_process();

// The wall clock so many seconds from now, which bounded waits for threads take.
timespec prv_wall_clock_in(int seconds);

// Signed, and right across an overflow.
inline int32_t prv_seconds_between(int32_t then, int32_t now) {
  return static_cast<int32_t>(static_cast<uint32_t>(now) - static_cast<uint32_t>(then));
}

// Whole seconds of the monotonic clock; 0, and an "E" line, when it can't be read.
int32_t prv_get_monotonic_seconds();
