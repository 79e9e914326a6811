// Descriptors and threads of the test's process, to see what a run leaves behind.
#pragma once

#include <unistd.h>

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

// A thread that was joined leaves the kernel's list a moment later; outside of a World.
inline Holdings holdings() {
  usleep(200);
  return {entries_of("/proc/self/fd"), entries_of("/proc/self/task")};
}

}  // namespace test
