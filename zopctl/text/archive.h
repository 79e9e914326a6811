// A compressed tar archive (.tar.gz), for files of some kilobytes.
#pragma once

#include <ctime>
#include <string>
#include <string_view>

namespace zopctl {

class Archive {
 public:
  // A file in it, for its owner only. The name has at most 99 bytes.
  void add(const std::string& name, std::string_view content);

  // Writes it to a file of mode 0600, whole or not at all. Throws Failure.
  void write(const std::string& path) const;

 private:
  std::time_t time_ = std::time(nullptr);  // of all files in it
  std::string tar_;
};

}  // namespace zopctl
