// An image set for a firmware download, checked before the modem is touched.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zopctl {

struct ImageFile {
  std::string name;
  std::string role;
  uint64_t size = 0;
  std::string problem;  // empty if it can be written
};

struct ImageSet {
  std::string folder;
  std::string folder_problem;
  std::vector<ImageFile> files;  // in sending order
  std::string version;           // from version_info, printable; empty if missing
  bool has_version_info = false;

  bool is_good() const;
  uint64_t size_of(const std::string& name) const;
  // Bytes sent to the modem.
  uint64_t bytes_to_send(bool modem_only) const;
};

ImageSet read_image_set(const std::string& folder);

}  // namespace zopctl
