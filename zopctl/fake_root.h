// The device around a simulated modem: files of its kernel and configuration, in a folder of their
// own that is gone with this object.
#pragma once

#include <filesystem>

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
  std::filesystem::path folder_;
};

}  // namespace zopctl
