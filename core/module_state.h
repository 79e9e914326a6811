// Shared by the whole module: its lock, its open flag, its clock.
//
// gModuleMutex serialises the host's calls and with them the command library, which has one request
// and one response buffer. It is not recursive: do not call a vurn_ getter while holding it.
#pragma once

#include <pthread.h>
#include <stdint.h>
#include <time.h>

extern pthread_mutex_t gModuleMutex;

// Both under gModuleMutex.
extern bool gModuleOpen;    // from a successful zop_open to zop_close
extern bool gRefetchPlmns;  // the next refresh reads the SIM's PLMN lists

// Holds a mutex until the end of the scope.
class ScopedLock {
 public:
  explicit ScopedLock(pthread_mutex_t& mutex) : mutex_(mutex) { pthread_mutex_lock(&mutex_); }
  ~ScopedLock() { pthread_mutex_unlock(&mutex_); }
  ScopedLock(const ScopedLock&) = delete;
  ScopedLock& operator=(const ScopedLock&) = delete;

 private:
  pthread_mutex_t& mutex_;
};

// Records the current process when it opens the port or starts a thread, and whether it is still
// the current one: after a fork the child has none of the threads, and the port belongs to its
// parent.
void prv_note_process();
bool prv_is_noted_process();

// The wall-clock time that many seconds from now, as timed waits for threads need it.
timespec prv_wall_clock_in(int seconds);

// Signed, and correct across an overflow.
inline int32_t prv_seconds_between(int32_t then, int32_t now) {
  return static_cast<int32_t>(static_cast<uint32_t>(now) - static_cast<uint32_t>(then));
}

// Whole seconds of the monotonic clock; 0 and an "E" line if it can't be read.
int32_t prv_get_monotonic_seconds();
