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
  std::string name;  // from the modem, printable
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

  // A descriptor for writing; done is what the file holds already. -1 with errno.
  int open_part(size_t index, uint32_t& done);

  // Bytes saved of a region.
  uint64_t size(size_t index) const;

  // Gives the file its name if it has all bytes.
  void close_part(size_t index);

  // Writes dump.json, and SHA256SUMS at the end.
  void write_regions() const;
  void write_sums(const std::vector<std::string>& lines) const;

 private:
  DumpFolder(std::string path, mode_t mode);
  void read_regions();
  void find_whole(size_t index);
  void write_text(const char* name, const std::string& text) const;
  std::string file_of(size_t index) const;

  std::string path_;
  mode_t mode_;
  int fd_;
  std::vector<SavedRegion> regions_;
};

}  // namespace zopctl
