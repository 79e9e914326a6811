// Counts the test process's descriptors and threads, to find leaks.
#pragma once

#include <sched.h>

#include <cstddef>
#include <filesystem>

namespace test {

struct Holdings {
  size_t descriptors, threads;
  bool operator==(const Holdings&) const = default;
};

inline size_t entries_of(const char* folder) {
  auto found = std::filesystem::directory_iterator(folder);
  return static_cast<size_t>(std::distance(begin(found), end(found)));
}

inline Holdings holdings() { return {entries_of("/proc/self/fd"), entries_of("/proc/self/task")}; }

// Waits for the holdings to equal before, and returns the last ones: the kernel lists a thread for
// a moment after it was joined.
inline Holdings holdings_like(const Holdings& before) {
  constexpr int MAX_ATTEMPTS = 10'000;
  Holdings now = holdings();
  for (int attempt = 0; now != before && attempt < MAX_ATTEMPTS; ++attempt) {
    sched_yield();
    now = holdings();
  }
  return now;
}

}  // namespace test
