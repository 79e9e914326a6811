// The words, by state.
#include "zopctl/firmware/modem_state.h"

#include <fmt/format.h>

namespace zopctl {

namespace {
struct StateRow {
  ModemState state;
  UpdateExit exit_code;
  const char* fact;
  const char* advice;  // {}: the folder of the images
};
}  // namespace
constexpr char AGAIN[] =
    "run zopctl firmware update {} again, without --modem-only; it finds the modem in its download "
    "mode; if it does not, power-cycle the modem first";
constexpr char BACK[] =
    "power-cycle the modem to run its old firmware again, or run the update again";
static const StateRow STATES[] = {
    {ModemState::UNTOUCHED, NOT_CHANGED, "nothing was changed", ""},
    {ModemState::UNKNOWN, NOT_CHANGED,
     "this run has written nothing; it is not known whether the modem has a usable firmware",
     "power-cycle the modem; if zopctl status then shows its version it runs that firmware, if "
     "not, "
     "update it from its download mode: zopctl firmware update {}"},
    {ModemState::SWITCHING, NOT_CHANGED,
     "nothing was written; the modem was told to switch to its download mode and may be there",
     BACK},
    {ModemState::DOWNLOAD_MODE, NOT_CHANGED,
     "nothing was written; the modem is in its download mode", BACK},
    {ModemState::BROKEN_BEFORE, NO_FIRMWARE,
     "this run has written nothing, but an earlier update broke off while it wrote: the modem may "
     "have no usable firmware",
     AGAIN},
    {ModemState::DOUBTFUL, NO_FIRMWARE,
     "it is not known whether the modem has taken the first packet that changes it",
     "power-cycle the modem; if zopctl status does not show its old version, run zopctl firmware "
     "update {} again, without --modem-only"},
    {ModemState::HALF_WRITTEN, NO_FIRMWARE,
     "the modem is half written and has no usable firmware until an update succeeds", AGAIN},
    {ModemState::WRITTEN, NOT_STARTED,
     "the firmware is written, but the end of the update is not done",
     "run zopctl firmware finish when the modem answers zopctl status; power-cycle it if it does "
     "not"},
};

LastWord last_word(ModemState state, const std::string& images) {
  const StateRow& row = STATES[static_cast<size_t>(state)];
  return {row.exit_code, row.fact, fmt::format(fmt::runtime(row.advice), images)};
}

const char* meaning_of(const std::string& mark) {
  static constexpr std::pair<const char*, const char*> MEANINGS[] = {
      {"wait", "the device did not come back in download mode"},
      {"STAGE1: Err-Load Config", "an image can no longer be read"},
      {"STAGE1: Err-Load RAM",
       "the modem is not in download mode, or does not accept the programmer"},
      {"load", "the device did not come back with the programmer"},
      {"STAGE1: Err-RAM Entry", "the programmer in the modem's RAM does not answer"},
      {"STAGE2: Err-Erasing", "the modem did not accept the partition table"},
      {"STAGE3: Err-Writing", "writing failed"},
      {"version", "the modem does not say its version"},
      {"first-start", "the modem did not start, or its NV items are not restored"},
  };
  for (auto [known, meaning] : MEANINGS) {
    if (mark == known) return meaning;
  }
  return "the update failed";
}

std::string in_words(const JournalEntry& entry) {
  std::string version = entry.new_version.empty() ? "" : " to " + entry.new_version;
  std::string before = entry.version_before.empty() ? "" : " from " + entry.version_before;
  const char* when = entry.only_switched ? "before it wrote"
                     : entry.is_written  ? "after the images were written"
                                         : "while it wrote";
  return fmt::format("an update{}{}, begun {} with {}, broke off {}", before, version, entry.begun,
                     entry.images, when);
}

}  // namespace zopctl
