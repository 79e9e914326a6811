// Counts how often the module's threads wake up in a real minute without field testing and in one
// with it, by the kernel's count of their context switches. Fails if a thread wakes up without
// field testing, or more often than its work needs with it.
// Usage: idle_minute [SECONDS]
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>

#include "bench/answering_modem.h"
#include "include/vurn.h"
#include "include/zop.h"

enum { SNAPSHOT_S = 12 };  // the five screens of an open take 7.5 s

static std::set<std::string> threads() {
  std::set<std::string> found;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task"))
    found.insert(entry.path());
  return found;
}

static long times_woken(const std::set<std::string>& of) {
  long sum = 0;
  for (const std::string& thread : of) {
    std::ifstream status(thread + "/status");
    for (std::string line; std::getline(status, line);) {
      if (line.starts_with("voluntary_ctxt_switches:")) sum += std::stol(line.substr(24));
    }
  }
  return sum;
}

// In that many seconds, of the threads that were not there before the module.
static long times_woken_in(unsigned seconds, const std::set<std::string>& others) {
  std::set<std::string> module = threads();
  for (const std::string& thread : others) module.erase(thread);
  long before = times_woken(module);
  for (time_t end = time(nullptr) + static_cast<time_t>(seconds); time(nullptr) < end;) sleep(1);
  return times_woken(module) - before;
}

int main(int count, char** arguments) {
  unsigned seconds = count > 1 ? static_cast<unsigned>(atoi(arguments[1])) : 60;
  AnsweringModem modem;
  std::set<std::string> others = threads();
  if (vurn_open() != VURN_OK) return 1;
  sleep(SNAPSHOT_S);
  long off = times_woken_in(seconds, others);
  if (zop_debug_start(1) != ZOP_SUCCESS) return 1;
  long on = times_woken_in(seconds, others);
  vurn_close(1);
  fprintf(stderr, "idle: %ld wake-ups in %u s without field testing, %ld with it\n", off, seconds,
          on);
  // Each second the listener wakes up for two ticks and two answers, which may come in pieces;
  // every 1.5 s there is a screen for the deferred-action thread.
  long most = 6 * static_cast<long>(seconds);
  return off == 0 && on <= most ? 0 : 1;
}
