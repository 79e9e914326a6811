// The steps of an update, from opening the modem to the version that it runs afterwards.
#include "zopctl/firmware/update.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <array>
#include <chrono>
#include <optional>
#include <tuple>

#include "zopctl/firmware/image_set.h"
#include "zopctl/firmware/programmer.h"
#include "zopctl/host/consent.h"
#include "zopctl/host/session.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/printable.h"

namespace zopctl {

constexpr int DEVICE_GONE_S = 10, DEVICE_BACK_S = 60, START_S = 90;

Update::Update(const ModuleLibrary& module, const ImageSet& set, const Options& options)
    : module_(module),
      set_(set),
      options_(options),
      progress_(output_.user(), Progress::style_for(output_.user(), options.json)),
      follower_(set, options.modem_only),
      journal_(mapped_device()),
      found_(journal_.entry()) {
  watch_line([this](Direction direction, std::span<const uint8_t> piece) {
    return on_line(direction, piece);
  });
  watch_sleeps([this](unsigned seconds) {
    poll_events();
    progress_.countdown(seconds);
  });
}

Update::~Update() {
  watch_line({});
  watch_sleeps({});
  module_.zop_close();
}

std::optional<std::string> Update::version_of_modem() {
  std::array<uint8_t, 32> version = {};
  uint32_t size = version.size();
  if (module_.zop_get_firmware_version(version.data(), &size) != ZOP_SUCCESS) return std::nullopt;
  std::string text(version.begin(), std::ranges::find(version, 0));
  bool is_version =
      !text.empty() && text == printable(text);  // otherwise the answer to another request
  return is_version ? std::optional(text) : std::nullopt;
}

bool Update::open_modem() {
  bool answers = module_.zop_open(MODULE_DEVICE) == ZOP_OPEN_UP;
  check_signals();
  if (!answers) {
    module_.zop_close();
    progress_.note("no answer on the diagnostic link");
    return false;
  }
  if (auto version = version_of_modem()) {
    version_before_ = *version;
    progress_.note("the modem runs " + version_before_);
    warn_of_downgrade();
  }
  return true;
}

void Update::warn_of_downgrade() {
  if (!is_downgrade(version_before_, set_.version)) return;
  std::string danger = set_.version + " is older, this is a downgrade";
  if (options_.confirmed || !is_person_there()) return progress_.note("caution: " + danger);
  ask_consent(danger);
}

// A modem whose last update failed is already in that mode and can't answer this.
bool Update::switch_mode() {
  progress_.stage("switch", "switching the modem to download mode");
  note_switch();
  know(ModemState::SWITCHING);
  bool good = module_.modem_diag_process() == 1;
  module_.zop_close();
  if (good) know(ModemState::DOWNLOAD_MODE);
  check_signals();
  if (!good) progress_.note("the modem does not switch");
  return good;
}

// Identifies the node: another one may appear at the same path, with the same numbers.
static auto node() {
  using Node = std::tuple<dev_t, ino_t, time_t, long>;
  struct stat found;
  if (stat(mapped_device().c_str(), &found) != 0) return std::optional<Node>();
  return std::optional<Node>(
      {found.st_rdev, found.st_ino, found.st_ctim.tv_sec, found.st_ctim.tv_nsec});
}

// A simulated modem whose clock is fast needs some of this machine's time too.
template <typename Condition>
static bool wait_until(int seconds, Condition condition) {
  constexpr int STEP_MS = 100;
  auto end = modem_now() + std::chrono::seconds(seconds);
  auto least = std::chrono::steady_clock::now() + std::chrono::seconds(2);
  while (modem_now() <= end || std::chrono::steady_clock::now() < least) {
    if (condition()) return true;
    wait_ms(STEP_MS);
  }
  return false;
}

void Update::await_device() {
  progress_.stage("wait", "waiting for the device to disappear and come back");
  auto before = node();
  if (!wait_until(DEVICE_GONE_S, [&] { return node() != before; })) {
    progress_.note(
        fmt::format("the device did not disappear within {} s, continuing", DEVICE_GONE_S));
  }
  std::optional<std::string> problem;
  wait_until(DEVICE_BACK_S, [&] { return !(problem = device_problem(mapped_device())); });
  if (problem) progress_.note(*problem);
  require_stage(!problem);
}

// The module has read what the modem says, if it said something.
void Update::resume_nv_work() {
  JournalEntry next = entry();
  const std::string& before = next.version_before;
  if (!before.empty() || next.nv_step != MODEM_NV_UNTOUCHED)
    module_.modem_resume_update(before.c_str(), nullptr, next.nv_step);
  if (before.empty() && set_.has_version_info)
    progress_.note(
        "it is not known which version the modem ran: its NV items are rebuilt only if it asks");
}

void Update::download() {
  progress_.stage("load", "loading the programmer into the modem's RAM");
  stall_.progress(modem_now());
  resume_nv_work();
  module_.modem_set_config(set_.folder.c_str(), "", options_.modem_only ? 1 : 0,
                           options_.erase ? 1 : 0);
  require_stage(module_.modem_dload_process() == 1);
  know(ModemState::WRITTEN);
}

void Update::first_start() {
  progress_.stage("first-start", set_.has_version_info
                                     ? "waiting for the new firmware and its NV items"
                                     : "waiting for the new firmware");
  require_stage(module_.modem_dload_end_process(MODULE_DEVICE) == 1);
  note([](JournalEntry& entry) { entry.nv_step = MODEM_NV_RESTORED; });
}

// A journal that stays is only a nuisance: the modem is as it should be.
void Update::end_journal() {
  try {
    journal_.remove();
  } catch (const Failure& failure) {
    progress_.note(std::string(failure.what()) + "; remove it: it says that this update broke off");
  }
}

// The modem may still be restarting.
void Update::check_version() {
  progress_.stage("version", "reading the version");
  std::optional<std::string> version;
  require_stage(wait_until(START_S, [&] {
    wait_seconds(1);
    bool open = !device_problem(mapped_device()) && module_.zop_open(MODULE_DEVICE) == ZOP_OPEN_UP;
    if (open) version = version_of_modem();
    module_.zop_close();
    return version.has_value();
  }));
  end_journal();
  if (!set_.version.empty() && set_.version != *version) {
    Failure failure(fmt::format("the modem runs {} after the update, but the set is {}", *version,
                                set_.version),
                    OTHER_VERSION, "check the set with zopctl firmware info, and update again");
    failure.details = {{"version", *version}};
    throw failure;
  }
  progress_.stage("done", "done: the modem runs " + *version);
  progress_.event("end", {{"result", "done"}, {"version", *version}});
}

void Update::end_steps() {
  first_start();
  check_version();
}

// The module must not meet a programmer: it would wait for answers that never come.
void Update::enter_download_mode() {
  progress_.stage("open", "opening the modem at " + mapped_device());
  bool broken = found_ && found_->is_half_written();
  if (end_running_programmer()) {
    know(broken ? ModemState::BROKEN_BEFORE : ModemState::UNKNOWN);
    progress_.note("a programmer of an earlier update still runs: the modem is restarted");
    await_device();
  }
  bool switched = open_modem() && switch_mode();
  bool runs = switched || !version_before_.empty();  // a boot ROM refuses to say it
  if (!runs) know(broken ? ModemState::BROKEN_BEFORE : ModemState::UNKNOWN);
  if (switched) return await_device();
  progress_.note("checking whether it is already in download mode");
}

void Update::steps() {
  progress_.event("images", {{"folder", set_.folder},
                             {"version", set_.version},
                             {"total_bytes", set_.bytes_to_send(options_.modem_only)}});
  for (const std::string& note : set_.notes) progress_.note(note);
  journal_.prepare();
  know(ModemState::UNTOUCHED);
  if (journal_.entry()) progress_.note(in_words(*journal_.entry()));
  enter_download_mode();
  download();
  end_steps();
}

void Update::guarded(void (Update::*part)()) {
  try {
    (this->*part)();
  } catch (const Interrupted& interrupted) {
    stop(interrupted.signal);
  }
}

void Update::run() { guarded(&Update::steps); }

void Update::finish() {
  const JournalEntry& begun = *journal_.entry();
  progress_.note(in_words(begun));
  know(ModemState::WRITTEN);
  hold_on();
  module_.modem_resume_update(begun.version_before.c_str(),
                              begun.has_version_info ? begun.new_version.c_str() : nullptr,
                              begun.nv_step);
  guarded(&Update::end_steps);
}

}  // namespace zopctl
