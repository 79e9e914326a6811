// Passes over the modem's list: the module saves some regions in each, and stops at one that is
// given up.
#include "zopctl/firmware/dump.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

#include "zopctl/host/session.h"
#include "zopctl/host/signals.h"
#include "zopctl/text/bytes_text.h"
#include "zopctl/text/counted.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/printable.h"
#include "zopctl/text/sha256.h"

namespace zopctl {

namespace fs = std::filesystem;
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
    return static_cast<Dump*>(dump)->take_region(*region, *done);
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

// Called by the module for each region of the modem's list, which must be the same in each pass. No
// exception can pass through the module.
int Dump::take_region(const mem_dump_region& region, uint32_t& done) try {
  std::string name = printable_ascii(region.name);
  ++listed_;
  if (!known_) offered_.push_back(name);
  size_t number = seen_[fmt::format("{} {} {}", name, region.base, region.length)]++;
  if (!is_wanted(name) || !error_.empty() || listing_) return -1;
  if (!folder_) folder_.emplace(DumpFolder::make(options_.dir, options_.mode));
  size_t index = folder_->region(name, region.base, region.length, number);
  bool listed_before = std::ranges::find(regions_, index) != regions_.end();
  if (known_ && !listed_before) throw Failure("the modem's list of regions changes");
  if (!known_) regions_.push_back(index), total_ += region.length;
  return open_region(index, done);
} catch (const std::exception& failure) {
  take_error(failure);
  return -1;
}

int Dump::open_region(size_t index, uint32_t& done) {
  const SavedRegion& region = folder_->regions()[index];
  if (region.whole || given_up_.contains(index)) return -1;
  more_ = more_ || open_.size() == AT_ONCE;
  if (open_.size() == AT_ONCE) return -1;
  DumpFolder::Part part = folder_->open_part(index);
  if (part.fd < 0) {
    given_up_[index] = strerror(errno);
    return -1;
  }
  done = part.done;
  open_.push_back({index, done, BlockCheck(region.base + done, std::move(part.last))});
  return part.fd;
}

// Of what happens within the module, which no exception can pass through.
void Dump::take_error(const std::exception& failure) {
  if (!error_.empty()) return;
  error_ = failure.what();
  if (const auto* ours = dynamic_cast<const Failure*>(&failure)) advice_ = ours->advice;
}

// ---- reading them ----

std::string Dump::resume_text() const {
  return "zopctl dump --resume " + folder_->path() + " goes on where it ended";
}

void Dump::begin_reading() {
  reading_ = true;
  stall_.progress(modem_now());
  if (!known_) {
    progress_.note(fmt::format("the modem offers {}, saving {}: {}, to {}",
                               counted(offered_.size(), "region"), regions_.size(),
                               size_text(total_), folder_->path()));
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
  if (has_caught_signal() || cut_) return false;
  if (direction == Direction::FROM_MODEM) return from_modem(piece);
  if (!open_.empty() && !reading_) begin_reading();
  if (auto amount = follower_.to_modem(piece)) {
    if (amount->done != reached_) stall_.progress(modem_now());
    reached_ = amount->done;
    progress_.amount(*amount);
    close_parts(follower_.current());
  }
  return !reading_ || goes_on();
} catch (const std::exception& failure) {  // it can't pass through the module
  take_error(failure);
  cut_ = true;
  return false;
}

// The module never gets, and so never saves, what does not belong to what is saved.
bool Dump::from_modem(std::span<const uint8_t> piece) {
  follower_.from_modem(piece);
  if (!reading_ || follower_.current() >= open_.size()) return true;
  Open& open = open_[follower_.current()];
  if (open.check.from_modem(piece)) return true;
  read_anew(open.region);
  return false;
}

void Dump::read_anew(size_t index) {
  progress_.note(folder_->regions()[index].file +
                 ": the modem's memory is no longer what was saved of it; it is read anew");
  if (anew_ == 0 && !whole_before_.empty())
    progress_.note("saved before, maybe in an earlier crash: " +
                   fmt::format("{}", fmt::join(whole_before_, ", ")));
  folder_->discard_part(index);
  ++anew_;
  more_ = cut_ = true;
}

// What was saved before counts only when the modem has shown that it is still the same.
void Dump::close_parts(size_t count) {
  for (size_t i = 0; i < std::min(count, open_.size()); ++i) {
    if (open_[i].check.is_done()) folder_->close_part(open_[i].region);
  }
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
  more_ = cut_ = true;
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
  if (!known_) offered_.clear();
  reading_ = cut_ = false;
  more_ = listing_;
  module_.mem_dump_process();
  take_module_lines();
  try {
    close_parts(open_.size());
  } catch (const Failure& failure) {
    take_error(failure);
  }
  known_ = known_ || (listed_ > 0 && !listing_);
}

void Dump::say_while_waiting(const std::string& why) {
  if (why != waits_for_)
    progress_.note(why + "; waiting for a modem that has crashed, Ctrl-C ends it");
  waits_for_ = why;
}

// A device that is there and can't be used is not waited for, unless it becomes so later: a program
// may look at each new device.
void Dump::ask_for_regions() {
  progress_.stage("regions", "asking the modem for its memory regions");
  listing_ = !options_.wanted.empty();
  for (;;) {
    auto problem = device_problem(mapped_device());
    bool may_wait = options_.wait && (!waits_for_.empty() || !fs::exists(mapped_device()));
    if (problem && !may_wait) throw Failure(*problem);
    if (!problem) pass();
    if (!options_.wait || listed_ > 0 || has_caught_signal()) break;
    say_while_waiting(problem ? *problem : no_regions());
    error_.clear();
    advice_.clear();
    wait_seconds(1);
  }
  listing_ = false;
}

uint64_t Dump::work_done() const {
  uint64_t done = anew_ + given_up_.size();
  for (size_t index : regions_) done += folder_->size(index) + folder_->regions()[index].whole;
  return done;
}

// The module saves some regions at once, and stops at one that is given up. A pass that brings
// nothing is the last one.
void Dump::save() {
  ask_for_regions();
  if (listed_ > 0) check_wanted();
  std::optional<uint64_t> before;
  while (more_ && error_.empty() && !has_caught_signal() && before != work_done()) {
    if (known_) before = work_done();
    if (auto problem = device_problem(mapped_device())) error_ = *problem;
    if (error_.empty()) pass();
  }
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
    Failure failure(fmt::format("--region: the modem has no region \"{}\"; it offers {}", word,
                                fmt::join(offered_, ", ")),
                    2);
    failure.details = {{"complete", false}};
    throw failure;
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

// Sums of all whole files of the folder, also of those that were saved before.
Json Dump::show_file(size_t index, std::vector<std::string>& sums) {
  const SavedRegion& region = folder_->regions()[index];
  std::string file = region.file + (region.whole ? "" : ".part");
  uint64_t size = folder_->size(index);
  std::string sum = size == 0 && !region.whole ? "" : sha256_of(folder_->path() + "/" + file);
  if (region.whole) sums.push_back(fmt::format("{}  {}", sum, file));
  std::string text = region.whole
                         ? size_text(size)
                         : fmt::format("{} of {}", size_text(size), size_text(region.length));
  if (!options_.json) progress_.note(fmt::format("{:64}  {}  {}", sum, file, text));
  return {{"file", file},
          {"size_bytes", size},
          {"length_bytes", region.length},
          {"whole", region.whole},
          {"sha256", sum}};
}

Json Dump::show_files() {
  if (missing().empty()) progress_.amount(follower_.all_saved());
  progress_.stage("summary", "SHA-256 of the saved files:");
  Json files = Json::array();
  std::vector<std::string> sums;
  try {
    for (size_t i = 0; i < folder_->regions().size(); ++i) files.push_back(show_file(i, sums));
    folder_->write_regions();
    folder_->write_sums(sums);
  } catch (const Failure& failure) {
    take_error(failure);
  }
  return files;
}

std::vector<std::string> Dump::missing() const {
  std::vector<std::string> names;
  for (size_t index : regions_) {
    const SavedRegion& region = folder_->regions()[index];
    std::string why = given_up_.contains(index) ? " (" + given_up_.at(index) + ")" : "";
    if (!region.whole) names.push_back(region.file + why);
  }
  return names;
}

std::string Dump::why_missing() const {
  if (!error_.empty()) return error_;
  bool all_given_up = std::ranges::all_of(regions_, [&](size_t index) {
    return folder_->regions()[index].whole || given_up_.contains(index);
  });
  return all_given_up ? "it was read as far as the modem allows" : "the modem no longer answers";
}

// With --region others may be missing yet.
void Dump::end_whole(Json details) {
  details["complete"] = std::ranges::all_of(folder_->regions(), &SavedRegion::whole);
  progress_.stage("done", fmt::format("done: {}, {}, in {}", counted(regions_.size(), "region"),
                                      size_text(total_), folder_->path()));
  Progress::Json end = {{"result", "done"}};
  end.update(details);
  progress_.event("end", end);
}

void Dump::run() {
  if (options_.resume.empty()) {
    DumpFolder::prepare(options_.dir);
  } else {
    folder_.emplace(DumpFolder::reopen(options_.resume, options_.mode));
    for (const SavedRegion& region : folder_->regions())
      if (region.whole) whole_before_.push_back(region.file);
  }
  size_t known = folder_ ? folder_->regions().size() : 0;
  save();
  constexpr char WAIT[] =
      "zopctl dump --wait waits for one that crashes, zopctl config error-fatal "
      "crashes one that is set up for dumps";
  if (regions_.empty() && !error_.empty())
    fail("the dump failed: " + error_, advice_, {{"complete", false}});
  if (regions_.empty()) fail(no_regions(), WAIT, {{"complete", false}});
  if (known > 0 && folder_->regions().size() != known)
    progress_.note("some regions are not those of " + folder_->path() + ": they are saved anew");
  Json files = show_files();
  Json details = {{"complete", false}, {"folder", folder_->path()}, {"files", files}};
  std::vector<std::string> names = missing();
  if (names.empty() && error_.empty()) return end_whole(details);
  details["missing"] = names;
  std::string list = names.empty() ? "" : fmt::format("; missing: {}", fmt::join(names, ", "));
  std::string first = advice_.empty() ? "" : advice_ + "; then ";
  fail("the dump is not complete: " + why_missing() + list, first + resume_text(), details);
}

}  // namespace zopctl
