// Follows a download or a memory dump by its packets: which part is being transferred, how far it
// is, and whether the modem is being written.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "simulator/line/frame.h"
#include "zopctl/firmware/image_set.h"
#include "zopctl/firmware/progress.h"

namespace zopctl {

class DownloadFollower {
 public:
  DownloadFollower(const ImageSet& set, bool modem_only);

  // Takes bytes about to be sent. Returns the new progress if they change it.
  std::optional<Amount> to_modem(sim::View piece);

  // True from the first packet that changes the modem's flash.
  bool is_writing() const { return writing_; }

 private:
  std::optional<Amount> follow(sim::View packet);
  std::optional<Amount> reached(uint64_t part_done);

  const ImageSet& set_;
  sim::Deframer deframer_;
  bool writing_ = false;
  std::string part_;
  uint64_t before_part_ = 0;  // bytes of the finished parts
  uint64_t part_done_ = 0;
  uint64_t total_;
};

struct DumpRegion {
  std::string name;  // printable
  uint32_t base;
  uint32_t length;
};

class DumpFollower {
 public:
  std::optional<Amount> to_modem(sim::View piece);
  void from_modem(sim::View piece);

  // The module's decision on the next region of the list, before it reads any.
  void save_next();
  void skip_next() { ++announced_; }

  // The final progress.
  Amount all_saved() const;

  // The regions to save.
  const std::vector<DumpRegion>& regions() const { return regions_; }

 private:
  std::optional<Amount> asked_for(uint32_t address);
  sim::Deframer requests_, answers_;
  std::vector<DumpRegion> listed_;  // all that the modem offers
  size_t announced_ = 0;            // how many of them the module has decided on
  std::vector<DumpRegion> regions_;
  uint64_t total_ = 0;
  size_t current_ = 0;   // index of the region being read
  uint64_t offset_ = 0;  // in that region
  uint64_t before_ = 0;  // bytes of the earlier regions
};

}  // namespace zopctl
