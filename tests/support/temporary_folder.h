// A folder of a test's own, gone with all that is in it.
#pragma once

#include <cstdlib>
#include <filesystem>

namespace test {

struct TemporaryFolder {
  TemporaryFolder() {
    std::string name = std::filesystem::temp_directory_path() / "zop-XXXXXX";
    path = mkdtemp(name.data());
  }
  ~TemporaryFolder() { std::filesystem::remove_all(path); }
  std::filesystem::path path;
};

}  // namespace test
