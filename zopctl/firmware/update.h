// An update from the first look at the modem to the version that it runs afterwards, or only its
// end. Until the first packet that changes the modem's flash a signal stops it; from then on a
// first signal is noted, and a second one ends the program with the last word on the modem's state.
#pragma once

#include <optional>

#include "zopctl/firmware/journal.h"
#include "zopctl/firmware/line_follower.h"
#include "zopctl/firmware/modem_state.h"
#include "zopctl/firmware/progress.h"
#include "zopctl/firmware/stall_watch.h"
#include "zopctl/host/host_calls.h"
#include "zopctl/host/module_library.h"
#include "zopctl/host/signals.h"
#include "zopctl/host/standard_output.h"

namespace zopctl {

class Update {
 public:
  struct Options {
    bool modem_only = false;
    bool erase = false;
    bool json = false;
    bool confirmed = false;  // by --yes: nobody is asked
  };
  Update(const ModuleLibrary& module, const ImageSet& set, const Options& options);
  ~Update();
  Update(const Update&) = delete;
  Update& operator=(const Update&) = delete;

  // Both throw Failure with the last word on the modem.
  void run();
  void finish();  // only the end step of an update that has written its images

 private:
  void steps();
  void end_steps();
  void guarded(void (Update::*part)());
  bool on_line(Direction direction, std::span<const uint8_t> piece);
  bool may_be_sent(std::span<const uint8_t> piece);
  bool goes_on();
  void note_tries();
  void show(const Amount& amount);
  void poll_events();
  void take_line(const std::string& line);
  bool open_modem();
  void warn_of_downgrade();
  bool switch_mode();
  void enter_download_mode();
  void await_device();
  void download();
  void first_start();
  void check_version();
  std::optional<std::string> version_of_modem();
  JournalEntry entry() const;
  void note_switch();
  void resume_nv_work();
  void end_journal();
  void note(void (*change)(JournalEntry&));
  void require_stage(bool good);
  void know(ModemState state);
  void prepare_last_word();
  bool is_held() const;
  ModemState state() const;
  [[noreturn]] void fail(const std::string& meaning);
  [[noreturn]] void stop(int signal);

  const ModuleLibrary& module_;
  const ImageSet& set_;
  Options options_;
  ModuleOutput output_;
  Progress progress_;
  DownloadFollower follower_;
  Journal journal_;
  std::optional<JournalEntry> found_;  // in it, by an earlier update
  StallWatch stall_;
  uint64_t reached_ = 0;  // bytes
  ModemState state_ = ModemState::UNTOUCHED;
  std::string version_before_;
  std::string error_line_;  // from the module
  std::string refused_;     // why this program has cut the line
  bool warned_ = false;
};

}  // namespace zopctl
