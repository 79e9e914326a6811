// The device around a simulated modem: files of its kernel and configuration, in a folder of their
// own that is gone with this object. Its clock and its traffic go on.
#pragma once

#include <chrono>
#include <filesystem>
#include <mutex>

namespace zopctl {

class FakeRoot {
 public:
  FakeRoot();  // points the module at it; throws Failure
  ~FakeRoot();
  FakeRoot(const FakeRoot&) = delete;
  FakeRoot& operator=(const FakeRoot&) = delete;

  // Where the simulated modem's device node stands while it is there.
  std::string device() const { return folder_ / "modem"; }

 private:
  void update();

  std::filesystem::path folder_;
  std::chrono::system_clock::time_point start_;
  std::mutex mutex_;
  std::chrono::seconds updated_{-1};  // since the start, in the modem's time
};

}  // namespace zopctl
