// A dump of a crashed modem's memory, region by region, into a folder of its own. Nothing in the
// modem changes, so Ctrl-C stops it at any time; what was saved is kept, and --resume goes on from
// there.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

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
  void save();
  void pass();
  int open_region(const mem_dump_region& region, uint32_t& done);
  bool is_wanted(const std::string& name);
  std::string resume_text() const;
  void begin_reading();
  bool on_line(Direction direction, std::span<const uint8_t> piece);
  bool goes_on();
  void take_module_lines();
  void check_wanted() const;
  std::string no_regions() const;
  Progress::Json show_files();
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
  uint64_t total_ = 0;  // bytes of the wanted regions
  std::string error_;   // what ends the dump

  // Of the current pass.
  struct Open {
    size_t region;
    uint32_t done;
  };
  DumpFollower follower_;
  StallWatch stall_;
  std::vector<Open> open_;
  std::map<std::string, size_t> seen_;  // equal regions
  size_t listed_ = 0;
  bool first_ = true;
  bool reading_ = false;
  bool more_ = false;  // another pass is needed
  uint64_t reached_ = 0;
};

}  // namespace zopctl
