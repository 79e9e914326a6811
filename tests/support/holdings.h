// Descriptors and threads of the test's process, to see what a run leaves behind.
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

// What is held once it is as before, or does not become so: a thread that was joined leaves the
// kernel's list a moment later.
inline Holdings holdings_like(const Holdings& before) {
  constexpr int MOST_LOOKS = 10'000;
  Holdings now = holdings();
  for (int look = 0; now != before && look < MOST_LOOKS; ++look) {
    sched_yield();
    now = holdings();
  }
  return now;
}

}  // namespace test
