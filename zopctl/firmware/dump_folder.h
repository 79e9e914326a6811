// The folder of a dump: a file for each region, called NAME.part until it is whole, dump.json with
// the regions, and SHA256SUMS of the whole files. Its own for each dump; only --resume uses one
// again.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

namespace zopctl {

struct SavedRegion {
  std::string name;  // from the modem, printable ASCII
  std::string file;  // in the folder
  uint32_t base = 0;
  uint32_t length = 0;
  bool whole = false;
};

class DumpFolder {
 public:
  // Makes sure that a folder can be made there. Throws Failure.
  static void prepare(const std::string& dir);
  // Makes DIR/dump_YYYYMMDD_HHMMSS. mode is that of the files.
  static DumpFolder make(const std::string& dir, mode_t mode);
  // Opens that of a dump that broke off.
  static DumpFolder reopen(const std::string& path, mode_t mode);
  ~DumpFolder();
  DumpFolder(DumpFolder&& other) noexcept;
  DumpFolder& operator=(DumpFolder&&) = delete;

  const std::string& path() const { return path_; }
  const std::vector<SavedRegion>& regions() const { return regions_; }

  // The index of a region of the modem. A region that is new to the folder gets a file name that no
  // other has; the k-th of equal ones is the k-th there too.
  size_t region(const std::string& name, uint32_t base, uint32_t length, size_t number);

  // A file for writing. Its last block is to be read and compared again; reading starts there.
  struct Part {
    int fd = -1;  // with errno
    uint32_t done = 0;
    std::vector<uint8_t> last;  // at done
  };
  Part open_part(size_t index);

  // Bytes saved of a region.
  uint64_t size(size_t index) const;

  // Gives the file its name if it has all bytes. Throws Failure.
  void close_part(size_t index);

  // Removes a part, which is not of the memory that the modem has now.
  void discard_part(size_t index);

  // Writes dump.json, and SHA256SUMS at the end.
  void write_regions() const;
  void write_sums(const std::vector<std::string>& lines) const;

 private:
  DumpFolder(std::string path, mode_t mode);
  void read_regions();
  void find_whole(size_t index);
  bool has_all(size_t index) const;
  void name_part(size_t index);
  void write_text(const char* name, const std::string& text) const;
  std::string file_of(size_t index) const;

  std::string path_;
  mode_t mode_;
  int fd_;
  std::vector<SavedRegion> regions_;
};

}  // namespace zopctl
