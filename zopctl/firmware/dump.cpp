// Passes over the modem's list: the module saves some regions in each, and stops at one that is
// given up.
#include "zopctl/firmware/dump.h"

#include <fmt/format.h>

#include <algorithm>

#include "zopctl/host/session.h"
#include "zopctl/host/signals.h"
#include "zopctl/text/bytes_text.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/printable.h"
#include "zopctl/text/sha256.h"

namespace zopctl {

using Json = Progress::Json;

constexpr size_t AT_ONCE = 20;  // regions that the module saves in one go

Dump::Dump(const ModuleLibrary& module, const DumpOptions& options)
    : module_(module),
      options_(options),
      progress_(output_.user(), Progress::style_for(output_.user(), options.json)) {
  watch_line([this](Direction direction, std::span<const uint8_t> piece) {
    return on_line(direction, piece);
  });
  auto open = [](const mem_dump_region* region, uint32_t* done, void* dump) {
    return static_cast<Dump*>(dump)->open_region(*region, *done);
  };
  module_.mem_dump_set_files(open, this);
  progress_.on_hard_exit("stopped", "", 0);
}

Dump::~Dump() {
  watch_line({});
  module_.mem_dump_set_files(nullptr, nullptr);
  module_.zop_close();
}

// ---- the list of regions ----

bool Dump::is_wanted(const std::string& name) {
  if (options_.wanted.empty()) return true;
  bool wanted = false;
  for (const std::string& word : {name, std::to_string(listed_)}) {
    if (!options_.wanted.contains(word)) continue;
    found_.insert(word);
    wanted = true;
  }
  return wanted;
}

// Called by the module for each region of the modem's list, which is the same in each pass.
int Dump::open_region(const mem_dump_region& region, uint32_t& done) try {
  std::string name = printable_ascii(region.name);
  ++listed_;
  if (first_) offered_.push_back(name);
  size_t number = seen_[fmt::format("{} {} {}", name, region.base, region.length)]++;
  if (!is_wanted(name) || !error_.empty()) return -1;
  if (!folder_) folder_.emplace(DumpFolder::make(options_.dir, options_.mode));
  size_t index = folder_->region(name, region.base, region.length, number);
  if (first_) regions_.push_back(index), total_ += region.length;
  if (folder_->regions()[index].whole || given_up_.contains(index)) return -1;
  more_ = more_ || open_.size() == AT_ONCE;
  if (open_.size() == AT_ONCE) return -1;
  int fd = folder_->open_part(index, done);
  if (fd < 0) given_up_[index] = strerror(errno);
  if (fd >= 0) open_.push_back({index, done});
  return fd;
} catch (const Failure& failure) {  // it can't pass through the module
  error_ = failure.what();
  return -1;
}

// ---- reading them ----

std::string Dump::resume_text() const {
  return "zopctl dump --resume " + folder_->path() + " goes on where it ended";
}

void Dump::begin_reading() {
  reading_ = true;
  stall_.progress(modem_now());
  if (first_) {
    progress_.note(fmt::format("the modem offers {} regions, saving {}: {}, to {}", offered_.size(),
                               regions_.size(), size_text(total_), folder_->path()));
    progress_.stage("save", "saving the modem's memory");
  }
  folder_->write_regions();
  progress_.on_hard_exit("stopped", resume_text(), 0);
  uint64_t before = 0;
  for (size_t index : regions_) {
    bool is_open = std::ranges::find(open_, index, &Open::region) != open_.end();
    if (!is_open) before += folder_->size(index);
  }
  follower_.set_amounts(before, total_);
  for (const Open& open : open_) {
    const SavedRegion& region = folder_->regions()[open.region];
    auto place = std::ranges::find(regions_, open.region) - regions_.begin() + 1;
    follower_.add({fmt::format("{} ({} of {})", region.file, place, regions_.size()), region.base,
                   region.length, open.done});
  }
}

bool Dump::on_line(Direction direction, std::span<const uint8_t> piece) try {
  if (has_caught_signal()) return false;
  if (direction == Direction::FROM_MODEM) {
    follower_.from_modem(piece);
    return true;
  }
  if (!open_.empty() && !reading_) begin_reading();
  if (auto amount = follower_.to_modem(piece)) {
    if (amount->done != reached_) stall_.progress(modem_now());
    reached_ = amount->done;
    progress_.amount(*amount);
    for (size_t i = 0; i < follower_.current(); ++i) folder_->close_part(open_[i].region);
  }
  return !reading_ || goes_on();
} catch (const Failure& failure) {  // it can't pass through the module
  error_ = failure.what();
  return false;
}

// False when a region must be given up.
bool Dump::goes_on() {
  if (!follower_.refusal().empty()) stall_.refused(follower_.refusal());
  if (follower_.current() >= open_.size()) return true;
  size_t index = open_[follower_.current()].region;
  const SavedRegion& region = folder_->regions()[index];
  auto address = static_cast<uint32_t>(region.base + follower_.offset());
  std::string what =
      stall_.refusal().empty()
          ? fmt::format("no answer to the read of {:#010x}", address)
          : fmt::format("the modem refuses to read {:#010x}: {}", address, stall_.refusal());
  bool ends = options_.timeout.count() > 0;
  if (stall_.is_to_be_reported(modem_now())) {
    std::string next =
        ends ? fmt::format("; after {} s without an answer the dump goes on with the next region",
                           options_.timeout.count())
             : "";
    progress_.note(fmt::format("{}, {}; Ctrl-C ends the dump and keeps what is saved{}",
                               region.file, what, next));
  }
  if (!ends || stall_.lasts(modem_now()) < options_.timeout) return true;
  given_up_[index] = what;
  progress_.note(region.file + ": given up");
  more_ = true;
  return false;
}

void Dump::take_module_lines() {
  constexpr std::string_view START = "DUMP_MODE: ", PERCENT = "PERCENT=";
  for (const std::string& line : output_.new_lines()) {
    if (!line.starts_with(START) || line.substr(START.size()).starts_with(PERCENT)) continue;
    if (error_.empty()) error_ = line.substr(START.size());
  }
}

// ---- the dump ----

void Dump::pass() {
  follower_ = DumpFollower();
  open_.clear();
  seen_.clear();
  listed_ = 0;
  reading_ = more_ = false;
  module_.mem_dump_process();
  take_module_lines();
  for (const Open& open : open_) folder_->close_part(open.region);
  if (listed_ > 0) first_ = false;
}

void Dump::ask_for_regions() {
  progress_.stage("regions", "asking the modem for its memory regions");
  bool said = false;
  for (;;) {
    auto problem = device_problem(mapped_device());
    if (problem && !options_.wait) throw Failure(*problem);
    if (!problem) pass();
    if (!options_.wait || listed_ > 0 || has_caught_signal()) return;
    if (!said) progress_.note("waiting for a modem that has crashed; Ctrl-C ends it");
    said = true;
    error_.clear();
    wait_seconds(1);
  }
}

// The module saves some regions at once, and stops at one that is given up.
void Dump::save() {
  ask_for_regions();
  while (more_ && error_.empty() && !has_caught_signal()) pass();
}

std::string Dump::no_regions() const {
  switch (follower_.answer()) {
    case DumpFollower::NOTHING:
      return "the modem does not answer at " + mapped_device();
    case DumpFollower::RUNS:
      return "the modem runs; only one that has crashed into its boot ROM offers its memory";
    case DumpFollower::REFUSED:
      return "the modem refuses the request for its memory regions";
    case DumpFollower::REGIONS:
      break;
  }
  return "the modem's boot ROM offers no memory regions";
}

void Dump::check_wanted() const {
  for (const std::string& word : options_.wanted) {
    if (found_.contains(word)) continue;
    throw Failure(fmt::format("--region: the modem has no region \"{}\"; it offers {}", word,
                              fmt::join(offered_, ", ")),
                  2);
  }
}

void Dump::fail(const std::string& what, const std::string& advice, Json details) {
  Failure failure(what, 1, advice);
  if (int signal = caught_signal()) {
    failure = Failure("stopped", 128 + signal, advice);
    failure.result = "interrupted";
  }
  failure.details = std::move(details);
  throw failure;
}

Json Dump::show_files() {
  bool all = std::ranges::all_of(regions_, [&](size_t i) { return folder_->regions()[i].whole; });
  if (all) progress_.amount(follower_.all_saved());
  progress_.stage("summary", "SHA-256 of the saved files:");
  Json files = Json::array();
  std::vector<std::string> sums;
  for (size_t index : regions_) {
    const SavedRegion& region = folder_->regions()[index];
    std::string file = region.file + (region.whole ? "" : ".part");
    uint64_t size = folder_->size(index);
    std::string sum = size == 0 && !region.whole ? "" : sha256_of(folder_->path() + "/" + file);
    files.push_back({{"file", file},
                     {"size", size},
                     {"length", region.length},
                     {"whole", region.whole},
                     {"sha256", sum}});
    if (region.whole) sums.push_back(fmt::format("{}  {}", sum, file));
    if (options_.json) continue;
    std::string text = region.whole
                           ? size_text(size)
                           : fmt::format("{} of {}", size_text(size), size_text(region.length));
    progress_.note(fmt::format("{:64}  {}  {}", sum, file, text));
  }
  folder_->write_regions();
  folder_->write_sums(sums);
  return files;
}

void Dump::run() {
  if (options_.resume.empty()) {
    DumpFolder::prepare(options_.dir);
  } else {
    folder_.emplace(DumpFolder::reopen(options_.resume, options_.mode));
  }
  size_t known = folder_ ? folder_->regions().size() : 0;
  save();
  constexpr char WAIT[] =
      "zopctl dump --wait waits for one that crashes, zopctl config error-fatal "
      "crashes one that is set up for dumps";
  if (!error_.empty() && regions_.empty())
    fail("the dump failed: " + error_, "", {{"complete", false}});
  if (listed_ == 0) fail(no_regions(), WAIT, {{"complete", false}});
  check_wanted();
  if (known > 0 && folder_->regions().size() != known)
    progress_.note("some regions are not those of " + folder_->path() + ": they are saved anew");
  Json files = show_files();
  Json details = {{"complete", false}, {"folder", folder_->path()}, {"files", files}};
  std::vector<std::string> missing;
  for (size_t index : regions_) {
    const SavedRegion& region = folder_->regions()[index];
    if (region.whole) continue;
    std::string why = given_up_.contains(index) ? " (" + given_up_[index] + ")" : "";
    missing.push_back(region.file + why);
  }
  if (missing.empty() && error_.empty()) {
    details["complete"] = true;
    progress_.stage("done", fmt::format("done: {} regions, {}, in {}", regions_.size(),
                                        size_text(total_), folder_->path()));
    Progress::Json end = {{"result", "done"}};
    end.update(details);
    return progress_.event("end", end);
  }
  details["missing"] = missing;
  std::string why = !error_.empty() ? error_ : "the modem no longer answers";
  if (!given_up_.empty() && error_.empty()) why = "it was read as far as the modem allows";
  fail(fmt::format("the dump is not complete: {}; missing: {}", why, fmt::join(missing, ", ")),
       resume_text(), details);
}

}  // namespace zopctl
