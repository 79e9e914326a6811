// What an update sees while it goes on: the packets on the line, what the module prints and
// signals. What it knows of the modem by that, and how a step fails. A piece that is refused here
// cuts the line.
#include <fmt/chrono.h>
#include <fmt/format.h>

#include "zopctl/firmware/update.h"
#include "zopctl/text/failure.h"

namespace zopctl {

constexpr std::chrono::seconds LONGEST_STALL{300};  // before anything is written

// ---- what is known of the modem ----

ModemState Update::state() const {
  bool was_broken = state_ == ModemState::BROKEN_BEFORE;
  switch (state_ == ModemState::WRITTEN ? DownloadFollower::WRITTEN : follower_.flash()) {
    case DownloadFollower::UNCHANGED:
      if (state_ == ModemState::SWITCHING && reached_ > 0) return ModemState::DOWNLOAD_MODE;
      return state_;
    case DownloadFollower::DOUBTFUL:
      return was_broken ? ModemState::HALF_WRITTEN : ModemState::DOUBTFUL;
    case DownloadFollower::CHANGED:
      return ModemState::HALF_WRITTEN;
    case DownloadFollower::WRITTEN:
      break;
  }
  return ModemState::WRITTEN;
}

// From its first packet that changes the modem to the end it must not be disturbed.
bool Update::is_held() const {
  return state_ == ModemState::WRITTEN || follower_.flash() != DownloadFollower::UNCHANGED;
}

void Update::know(ModemState state) {
  state_ = state;
  prepare_last_word();
}

// What a second signal says, which ends the program at once.
void Update::prepare_last_word() {
  LastWord word = last_word(state(), set_.folder);
  progress_.on_hard_exit("stopped: " + word.fact, word.advice,
                         word.exit_code == NOT_CHANGED ? 0 : word.exit_code);
}

void Update::fail(const std::string& meaning) {
  LastWord word = last_word(state(), set_.folder);
  std::string text = meaning + "; " + word.fact;
  if (!error_line_.empty() && refused_.empty()) text += " (the module: " + error_line_ + ")";
  Failure failure(text, word.exit_code, word.advice);
  failure.details = {{"stage", progress_.stage_key()}, {"module_line", error_line_}};
  throw failure;
}

void Update::stop(int signal) {
  LastWord word = last_word(state(), set_.folder);
  bool as_before = word.exit_code == NOT_CHANGED;
  Failure failure("stopped: " + word.fact, as_before ? 128 + signal : word.exit_code, word.advice);
  failure.result = "interrupted";
  failure.details = {{"stage", progress_.stage_key()}};
  throw failure;
}

// ---- the journal ----

JournalEntry Update::entry() const {
  auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
  return journal_.continued({.begun = fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", now),
                             .images = std::filesystem::absolute(set_.folder),
                             .new_version = set_.version,
                             .has_version_info = set_.has_version_info,
                             .version_before = version_before_});
}

// In its download mode the modem will not say any more what it ran.
void Update::note_switch() {
  if (journal_.entry() && journal_.entry()->has_nv_work_left()) return;
  JournalEntry switched = entry();
  switched.only_switched = true;
  journal_.write(switched);
}

// Called below the module, through which no exception can pass.
void Update::note(void (*change)(JournalEntry&)) {
  if (!journal_.entry()) return;
  JournalEntry entry = *journal_.entry();
  change(entry);
  try {
    journal_.write(entry);
  } catch (const std::exception& failure) {
    progress_.note(failure.what());
  }
}

// ---- progress of the module ----

// Before a packet that changes the modem leaves: it may have to stay here.
bool Update::may_be_sent(std::span<const uint8_t> piece) {
  if (follower_.ends_writing(piece)) note([](JournalEntry& entry) { entry.is_written = true; });
  if (!DownloadFollower::changes_flash(piece)) return true;
  if (options_.modem_only && DownloadFollower::overrides_partition(piece)) {
    refused_ =
        "the modem's partition table is not the set's, which would erase the modem and write its "
        "boot loaders too; --modem-only does neither";
    return false;
  }
  if (follower_.flash() != DownloadFollower::UNCHANGED) return true;
  try {
    journal_.write(entry());
  } catch (const std::exception& failure) {  // it can't pass through the module
    refused_ = failure.what();
    return false;
  }
  hold_on();
  return true;
}

// False when the user wants to end, and may, or when nothing happens any more.
bool Update::goes_on() {
  if (is_held()) return true;
  if (has_caught_signal()) return false;
  if (progress_.stage_key() != "load") return true;
  stall_.refused(follower_.refusal());
  std::string what = stall_.refusal().empty() ? "the modem does not answer as it should"
                                              : "the boot ROM refuses " + stall_.refusal();
  if (stall_.is_to_be_reported(modem_now()))
    progress_.note(what + "; it is asked again, Ctrl-C ends the update");
  if (stall_.lasts(modem_now()) < LONGEST_STALL) return true;
  refused_ = what;
  return false;
}

bool Update::on_line(Direction direction, std::span<const uint8_t> piece) {
  poll_events();
  bool to_modem = direction == Direction::TO_MODEM;
  if (to_modem && (!goes_on() || !may_be_sent(piece))) return false;
  auto known = follower_.flash();
  std::optional<Amount> amount;
  if (to_modem)
    amount = follower_.to_modem(piece);
  else
    follower_.from_modem(piece);
  if (follower_.flash() != known) prepare_last_word();
  if (to_modem) note_tries();
  if (amount) show(*amount);
  return to_modem || goes_on();
}

// The module asks a programmer for minutes.
void Update::note_tries() {
  constexpr unsigned NOTICED = 3;
  const std::string& stage = progress_.stage_key();
  bool programmer = stage == "programmer" || stage == "erase" || stage == "write";
  if (!programmer || follower_.tries() != NOTICED) return;
  const std::string& refusal = follower_.refusal();
  std::string what = refusal.empty() ? "the programmer does not answer as it should"
                                     : "the programmer refuses " + refusal;
  progress_.note(what + "; it is asked again" + (is_held() ? "" : ", Ctrl-C ends the update"));
}

void Update::show(const Amount& amount) {
  if (amount.done != reached_) stall_.progress(modem_now());
  reached_ = amount.done;
  progress_.amount(amount);
}

void Update::poll_events() {
  for (const std::string& line : output_.new_lines()) take_line(line);
  if (!has_caught_signal() || !is_held() || warned_) return;
  warned_ = true;
  bool written = state() == ModemState::WRITTEN;
  const char* now = written ? "the firmware is written, but the end of the update is not done"
                            : "the modem is being written";
  progress_.note(fmt::format("{}: the update continues; press Ctrl-C again to end it anyway", now));
}

void Update::take_line(const std::string& line) {
  struct StageLine {
    const char* line;
    const char* key;
    const char* text;
    void (*noted)(JournalEntry&);
  };
  static const StageLine STAGES[] = {
      {"STAGE1: Loading Success", "programmer", "connecting to the programmer", nullptr},
      {"STAGE2: Erasing Start", "erase",
       "erasing the modem's file system, this takes up to half a minute", nullptr},
      {"STAGE3: Writing Start", "write", "writing the images", nullptr},
      {"DLOAD: NV Backup", "first-start", "the modem has backed up its NV items",
       [](JournalEntry& entry) { entry.nv_step = MODEM_NV_BACKED_UP; }},
      {"DLOAD: NV Rebuild", "first-start", "the modem rebuilds its NV items",
       [](JournalEntry& entry) { entry.nv_step = MODEM_NV_REBUILT; }},
      {"DLOAD: NV Restore", "first-start", "the modem has restored its NV items",
       [](JournalEntry& entry) { entry.nv_step = MODEM_NV_RESTORED; }},
  };
  if (line.find("Err-") != std::string::npos) error_line_ = line;
  for (const StageLine& row : STAGES) {
    if (line != row.line) continue;
    if (row.noted != nullptr) note(row.noted);
    if (progress_.stage_key() == row.key) return progress_.note(row.text);
    return progress_.stage(row.key, row.text);
  }
}

void Update::require_stage(bool good) {
  poll_events();
  if (good) return;
  check_signals();
  if (!refused_.empty()) fail(refused_);
  fail(meaning_of(error_line_.empty() ? progress_.stage_key() : error_line_));
}

}  // namespace zopctl
