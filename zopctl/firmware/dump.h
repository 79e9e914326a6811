// A dump of a crashed modem's memory, region by region, into a folder of its own. Nothing in the
// modem changes, so Ctrl-C stops it at any time; what was saved is kept, and --resume goes on from
// there.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "zopctl/firmware/block_check.h"
#include "zopctl/firmware/dump_folder.h"
#include "zopctl/firmware/line_follower.h"
#include "zopctl/firmware/progress.h"
#include "zopctl/firmware/stall_watch.h"
#include "zopctl/host/host_calls.h"
#include "zopctl/host/module_library.h"
#include "zopctl/host/standard_output.h"

namespace zopctl {

struct DumpOptions {
  std::string dir = ".";
  std::string resume;            // folder; empty for a new one
  std::set<std::string> wanted;  // names or numbers of regions; empty for all
  StallWatch::Seconds timeout{60};
  mode_t mode = 0600;
  bool wait = false;
  bool json = false;
};

class Dump {
 public:
  Dump(const ModuleLibrary& module, const DumpOptions& options);
  ~Dump();
  Dump(const Dump&) = delete;
  Dump& operator=(const Dump&) = delete;

  // Throws Failure unless every region is saved.
  void run();

 private:
  void ask_for_regions();
  void say_while_waiting(const std::string& why);
  void save();
  void pass();
  uint64_t work_done() const;
  int take_region(const mem_dump_region& region, uint32_t& done);
  int open_region(size_t index, uint32_t& done);
  bool is_wanted(const std::string& name);
  std::string resume_text() const;
  void begin_reading();
  bool on_line(Direction direction, std::span<const uint8_t> piece);
  bool from_modem(std::span<const uint8_t> piece);
  void read_anew(size_t index);
  bool goes_on();
  void close_parts(size_t count);
  void take_module_lines();
  void check_wanted() const;
  void take_error(const std::exception& failure);
  std::string no_regions() const;
  Progress::Json show_files();
  Progress::Json show_file(size_t index, std::vector<std::string>& sums);
  void end_whole(Progress::Json details);
  std::vector<std::string> missing() const;
  std::string why_missing() const;
  [[noreturn]] void fail(const std::string& what, const std::string& advice,
                         Progress::Json details);

  const ModuleLibrary& module_;
  const DumpOptions& options_;
  ModuleOutput output_;
  Progress progress_;
  std::optional<DumpFolder> folder_;

  // Of all passes.
  std::vector<size_t> regions_;             // wanted ones, as numbered in the folder
  std::map<size_t, std::string> given_up_;  // why
  std::set<std::string> found_;             // of the wanted names and numbers
  std::vector<std::string> offered_;
  std::vector<std::string> whole_before_;  // files that an earlier run has saved
  uint64_t total_ = 0;                     // bytes of the wanted regions
  size_t anew_ = 0;                        // regions begun again
  std::string error_, advice_;             // what ends the dump, and what to do about it
  std::string waits_for_;                  // said last

  // Of the current pass.
  struct Open {
    size_t region;
    uint32_t done;
    BlockCheck check;
  };
  DumpFollower follower_;
  StallWatch stall_;
  std::vector<Open> open_;
  std::map<std::string, size_t> seen_;  // equal regions
  size_t listed_ = 0;
  bool known_ = false;    // regions_ are all
  bool listing_ = false;  // nothing is read, to see first whether the wanted ones are there
  bool reading_ = false;
  bool cut_ = false;   // the pass ends
  bool more_ = false;  // another pass is needed
  uint64_t reached_ = 0;
};

}  // namespace zopctl
