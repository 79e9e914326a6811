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
  void from_modem(sim::View piece);

  // Whether these bytes would restart the modem after all its images.
  bool ends_writing(sim::View piece) const;

  // Whether these bytes would change the modem's flash.
  static bool changes_flash(sim::View piece);
  static bool overrides_partition(sim::View piece);

  // What is known of the modem's flash; it only ever goes on. DOUBTFUL: a packet that changes it
  // was sent, and the modem has not said that it took it: even one that it refuses may have erased.
  // WRITTEN: the programmer was told to restart after all images.
  enum Flash { UNCHANGED, DOUBTFUL, CHANGED, WRITTEN };
  Flash flash() const { return flash_; }

  // How often the last request was sent without being accepted.
  unsigned tries() const { return tries_; }

  // In words, what the modem has refused last; empty after it has accepted something.
  const std::string& refusal() const { return refusal_; }

 private:
  std::optional<Amount> follow(sim::View packet);
  std::optional<Amount> reached(uint64_t part_done);
  void take_answer(sim::View answer);

  const ImageSet& set_;
  sim::Deframer deframer_, answers_;
  Flash flash_ = UNCHANGED;
  sim::Bytes request_;  // the last one
  unsigned tries_ = 0;  // of it
  std::string refusal_;
  std::string part_;
  uint64_t before_part_ = 0;  // bytes of the finished parts
  uint64_t part_done_ = 0;
  uint64_t total_;
};

struct DumpRegion {
  std::string label;  // printable
  uint32_t base;
  uint32_t length;
  uint32_t done;  // bytes saved before
};

class DumpFollower {
 public:
  // Bytes of all regions, and those before the first one that is added.
  void set_amounts(uint64_t before, uint64_t total) { before_ = before, total_ = total; }

  // A region that will be read, after those added before.
  void add(const DumpRegion& region) { regions_.push_back(region); }

  std::optional<Amount> to_modem(sim::View piece);
  void from_modem(sim::View piece);

  // The region being read, by order of adding, and how far.
  size_t current() const { return current_; }
  uint64_t offset() const { return offset_; }

  Amount all_saved() const;

  // How the modem has answered the request for its regions.
  enum Answer { NOTHING, REGIONS, RUNS, REFUSED };
  Answer answer() const { return answer_; }

  // Why the last read was refused; empty if it was not.
  const std::string& refusal() const { return refusal_; }

 private:
  std::optional<Amount> asked_for(uint32_t address);
  sim::Deframer requests_, answers_;
  Answer answer_ = NOTHING;
  std::string refusal_;
  std::string label_;  // of the region last read
  std::vector<DumpRegion> regions_;
  uint64_t total_ = 0;
  size_t current_ = 0;
  uint64_t offset_ = 0;  // in the current region
  uint64_t before_ = 0;  // bytes of the earlier regions
};

}  // namespace zopctl
