// The device around a simulated modem: files of its kernel and configuration, in a folder that is
// removed with this object. Its clock runs and its traffic grows.
#pragma once

#include <chrono>
#include <filesystem>
#include <mutex>
#include <string>

namespace zopctl {

class FakeRoot {
 public:
  FakeRoot();  // points the module at it; throws Failure
  ~FakeRoot();
  FakeRoot(const FakeRoot&) = delete;
  FakeRoot& operator=(const FakeRoot&) = delete;

  // Path of the simulated modem's device node.
  std::string device() const { return folder_ / "modem"; }

 private:
  explicit FakeRoot(const std::string& folder);  // an empty one, which it owns
  void update();

  std::filesystem::path folder_;
  std::chrono::system_clock::time_point start_;
  std::mutex mutex_;
  std::chrono::seconds updated_{-1};  // since the start, in the modem's time
};

}  // namespace zopctl
