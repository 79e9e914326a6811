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
  std::string header;   // its kind; empty if the file can have none or was not looked at
  bool is_boot_loader = false;
};

struct ImageSet {
  enum Seal { NONE, WHOLE, BROKEN };

  std::string folder;
  std::string folder_problem;
  // In sending order, and around them the seal and version_info when they have a problem.
  std::vector<ImageFile> files;
  std::string version;  // from version_info, printable; empty if missing
  bool has_version_info = false;
  Seal seal = NONE;
  std::vector<std::string> notes;  // worth knowing, but no reason not to write the set

  bool is_good() const;
  std::string problems() const;  // in words; empty if it is good
  uint64_t size_of(const std::string& name) const;
  // Bytes sent to the modem.
  uint64_t bytes_to_send(bool modem_only) const;
};

ImageSet read_image_set(const std::string& folder);

// Whether the second version is older than the first. Only versions like "Q71XEB22.001" have an
// order: for any other text it is false.
bool is_downgrade(const std::string& from, const std::string& to);

}  // namespace zopctl
