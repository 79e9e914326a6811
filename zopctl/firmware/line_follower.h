// Follows a download or a memory dump by the packets on the line: what part is under way, how far
// it is, and whether the modem is being written.
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

  // A piece before it goes to the modem. How far the download is with it, when that has changed.
  std::optional<Amount> to_modem(sim::View piece);

  // From the first packet on that changes what the modem keeps.
  bool is_writing() const { return writing_; }

 private:
  std::optional<Amount> follow(sim::View packet);
  std::optional<Amount> reached(uint64_t part_done);

  const ImageSet& set_;
  sim::Deframer deframer_;
  bool writing_ = false;
  std::string part_;
  uint64_t before_part_ = 0;  // bytes of the parts that are done
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

  // What the module says of the modem's next region, before it reads any.
  void save_next();
  void leave_next_out() { ++told_; }

  // What is told at the end.
  Amount all_saved() const;

  // Those that are saved.
  const std::vector<DumpRegion>& regions() const { return regions_; }

 private:
  std::optional<Amount> asked_for(uint32_t address);
  sim::Deframer requests_, answers_;
  std::vector<DumpRegion> listed_;  // by the modem
  size_t told_ = 0;                 // so many of them has the module told of
  std::vector<DumpRegion> regions_;
  uint64_t total_ = 0;
  size_t current_ = 0;   // region that is being read
  uint64_t offset_ = 0;  // in it
  uint64_t before_ = 0;  // bytes of the regions before it
};

}  // namespace zopctl
