// An image set of a firmware download, looked at before anything is touched.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zopctl {

struct ImageFile {
  std::string name;
  std::string role;
  uint64_t size = 0;
  std::string problem;  // empty: it can be written
};

struct ImageSet {
  std::string folder;
  std::string folder_problem;
  std::vector<ImageFile> files;  // in the order in which they are sent
  std::string version;           // of its version_info, printable; empty without one
  bool has_version_info = false;

  bool is_good() const;
  uint64_t size_of(const std::string& name) const;
  // Bytes that go to the modem.
  uint64_t bytes_to_send(bool modem_only) const;
};

ImageSet look_at_images(const std::string& folder);

}  // namespace zopctl
