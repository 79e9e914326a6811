// zopctl firmware update: the whole update, from switching the modem to download mode to checking
// the version that it runs afterwards. Until the first packet that changes the modem's flash,
// Ctrl-C stops the update and the old firmware stays; from then on it takes a second Ctrl-C.
#include <fmt/format.h>
#include <sys/stat.h>

#include <cstring>
#include <optional>

#include "zopctl/firmware/firmware.h"
#include "zopctl/firmware/line_follower.h"
#include "zopctl/firmware/progress.h"
#include "zopctl/host/host_calls.h"
#include "zopctl/host/standard_output.h"
#include "zopctl/host/session.h"
#include "zopctl/host/signals.h"
#include "zopctl/text/printable.h"
#include "zopctl/text/failure.h"

namespace zopctl {

constexpr int DEVICE_GONE_S = 10, DEVICE_BACK_S = 60, START_S = 90;
namespace {
enum ExitCode { AS_BEFORE = 1, INCOMPLETE = 3, NOT_STARTED = 4 };

// A point of failure, found by the module's error line or, if it printed none, by the stage's key.
struct Cause {
  const char* mark;
  ExitCode exit_code;
  const char* meaning;
  const char* advice;
};
}  // namespace
constexpr char OLD_FIRMWARE[] =
    "nothing was written; power-cycle the modem to keep its old firmware, or try again";
constexpr char AGAIN[] =
    "power-cycle the modem and run the update again, without --modem-only; until then it has no "
    "usable firmware";
static const Cause CAUSES[] = {
    {"wait", AS_BEFORE, "the device did not come back in download mode", OLD_FIRMWARE},
    {"STAGE1: Err-Load Config", AS_BEFORE, "an image can no longer be read", OLD_FIRMWARE},
    {"STAGE1: Err-Load RAM", AS_BEFORE,
     "the modem is not in download mode, or does not accept the programmer", OLD_FIRMWARE},
    {"load", AS_BEFORE, "the device did not come back with the programmer", OLD_FIRMWARE},
    {"start", AS_BEFORE, "the device did not come back with the programmer", OLD_FIRMWARE},
    {"STAGE1: Err-RAM Entry", AS_BEFORE, "the programmer in the modem's RAM does not answer",
     OLD_FIRMWARE},
    {"STAGE2: Err-Erasing", INCOMPLETE, "the modem did not accept the partition table", AGAIN},
    {"STAGE3: Err-Writing", INCOMPLETE, "writing failed", AGAIN},
    {"first-start", NOT_STARTED,
     "the firmware is written, but the modem did not start, or its NV items are not restored",
     "check the link with zopctl doctor; power-cycle the modem if it does not answer"},
};

namespace {
class Update {
 public:
  Update(const ModuleLibrary& module, const ImageSet& set, const Arguments& arguments)
      : module_(module),
        set_(set),
        modem_only_(arguments.has("--modem-only") && !arguments.has("--erase")),
        erase_(arguments.has("--erase")),
        progress_(output_.user(), Progress::style_for(output_.user(), arguments.json)),
        follower_(set, modem_only_) {
    watch_line([this](Direction direction, std::span<const uint8_t> piece) {
      return on_line(direction, piece);
    });
    watch_sleeps([this](unsigned seconds) {
      poll_events();
      progress_.countdown(seconds);
    });
  }
  ~Update() {
    watch_line({});
    watch_sleeps({});
    module_.zop_close();
  }
  Update(const Update&) = delete;
  Update& operator=(const Update&) = delete;

  void run() {
    progress_.event("images", {{"folder", set_.folder},
                               {"version", set_.version},
                               {"bytes", set_.bytes_to_send(modem_only_)}});
    if (open_modem() && switch_mode()) {
      await_download_mode();
    } else {
      progress_.note("checking whether it is already in download mode");
    }
    download();
    first_start();
    show_version();
  }

 private:
  bool on_line(Direction direction, std::span<const uint8_t> piece);
  void poll_events();
  void take_line(const std::string& line);
  bool open_modem();
  bool switch_mode();
  void await_download_mode();
  void download();
  void first_start();
  void show_version();
  std::optional<std::string> version_of_modem();
  void require_stage(bool good);
  [[noreturn]] void fail();

  const ModuleLibrary& module_;
  const ImageSet& set_;
  bool modem_only_, erase_;
  ModuleOutput output_;
  Progress progress_;
  DownloadFollower follower_;
  std::string error_line_;  // from the module
  bool warned_ = false;
};
}  // namespace

// ---- progress of the module ----

bool Update::on_line(Direction direction, std::span<const uint8_t> piece) {
  if (has_caught_signal() && !follower_.is_writing()) return false;
  poll_events();
  if (direction == Direction::FROM_MODEM) return true;
  std::optional<Amount> amount = follower_.to_modem(piece);
  if (follower_.is_writing()) hold_on();
  if (amount) progress_.amount(*amount);
  return true;
}

void Update::poll_events() {
  for (const std::string& line : output_.new_lines()) take_line(line);
  if (has_caught_signal() && follower_.is_writing() && !warned_) {
    warned_ = true;
    progress_.note(
        "the modem is being written, the update continues; press Ctrl-C again to end it anyway");
  }
}

void Update::take_line(const std::string& line) {
  struct StageLine {
    const char* line;
    const char* key;
    const char* text;
  };
  static const StageLine STAGES[] = {
      {"STAGE1: Loading Success", "programmer", "connecting to the programmer"},
      {"STAGE2: Erasing Start", "erase",
       "erasing the modem's file system, this takes up to half a minute"},
      {"STAGE3: Writing Start", "write", "writing the images"},
      {"DLOAD: NV Backup", "first-start", "the modem has backed up its NV items"},
      {"DLOAD: NV Rebuild", "first-start", "the modem rebuilds its NV items"},
      {"DLOAD: NV Restore", "first-start", "the modem has restored its NV items"},
  };
  if (line.find("Err-") != std::string::npos) error_line_ = line;
  for (const StageLine& row : STAGES) {
    if (line == row.line && progress_.stage_key() == row.key) return progress_.note(row.text);
    if (line == row.line) return progress_.stage(row.key, row.text);
  }
}

// ---- the steps ----

void Update::fail() {
  const Cause* found = nullptr;
  for (const Cause& cause : CAUSES) {
    if (error_line_ == cause.mark) found = &cause;
    if (found == nullptr && error_line_.empty() && progress_.stage_key() == cause.mark)
      found = &cause;
  }
  // For stages without a row: before and after writing has begun.
  static const Cause OTHERS[] = {{"", AS_BEFORE, "the update failed", OLD_FIRMWARE},
                                 {"", INCOMPLETE, "the update failed", AGAIN}};
  if (found == nullptr) found = &OTHERS[follower_.is_writing()];
  progress_.event("failed", {{"stage", progress_.stage_key()},
                             {"module_line", error_line_},
                             {"meaning", found->meaning},
                             {"advice", found->advice},
                             {"exit_code", found->exit_code}});
  std::string text = fmt::format("{}; {}", found->meaning, found->advice);
  if (!error_line_.empty()) text += " (the module: " + error_line_ + ")";
  throw Failure(text, found->exit_code);
}

void Update::require_stage(bool good) {
  poll_events();
  if (good) return;
  if (has_caught_signal() && !follower_.is_writing()) {
    progress_.event("interrupted", {{"stage", progress_.stage_key()}});
    progress_.note(std::string("stopped: ") + OLD_FIRMWARE);
  }
  check_signals();
  fail();
}

std::optional<std::string> Update::version_of_modem() {
  std::array<uint8_t, 32> version = {};
  uint32_t size = version.size();
  if (module_.zop_get_firmware_version(version.data(), &size) != ZOP_SUCCESS) return std::nullopt;
  return printable(version);
}

bool Update::open_modem() {
  progress_.stage("open", "opening the modem at " + mapped_device());
  bool answers = module_.zop_open(MODULE_DEVICE) == ZOP_OPEN_UP;
  check_signals();
  if (!answers) {
    module_.zop_close();
    progress_.note("no answer on the diagnostic link");
    return false;
  }
  if (auto version = version_of_modem()) progress_.note("the modem runs " + *version);
  return true;
}

// A modem whose last update failed is already in that mode and can't answer this.
bool Update::switch_mode() {
  progress_.stage("switch", "switching the modem to download mode");
  bool good = module_.modem_diag_process() == 1;
  module_.zop_close();
  if (!good) progress_.note("the modem does not switch");
  check_signals();
  return good;
}

// Identifies the node: another one may appear at the same path.
static std::optional<std::pair<dev_t, ino_t>> node() {
  struct stat found;
  if (stat(mapped_device().c_str(), &found) != 0) return std::nullopt;
  return std::pair(found.st_rdev, found.st_ino);
}

template <typename Condition>
static bool wait_until(int seconds, Condition condition) {
  constexpr int STEP_MS = 100;
  for (int waited = 0; waited <= seconds * 1000; waited += STEP_MS) {
    if (condition()) return true;
    wait_ms(STEP_MS);
  }
  return false;
}

void Update::await_download_mode() {
  progress_.stage("wait", "waiting for the device to disappear and come back");
  auto before = node();
  if (!wait_until(DEVICE_GONE_S, [&] { return node() != before; })) {
    progress_.note(
        fmt::format("the device did not disappear within {} s, continuing", DEVICE_GONE_S));
  }
  require_stage(wait_until(DEVICE_BACK_S, [] { return !device_problem(mapped_device()); }));
}

void Update::download() {
  progress_.stage("load", "loading the programmer into the modem's RAM");
  module_.modem_set_config(set_.folder.c_str(), "", modem_only_ ? 1 : 0, erase_ ? 1 : 0);
  require_stage(module_.modem_dload_process() == 1);
}

void Update::first_start() {
  progress_.stage("first-start", set_.has_version_info
                                     ? "waiting for the new firmware and its NV items"
                                     : "waiting for the new firmware");
  require_stage(module_.modem_dload_end_process(MODULE_DEVICE) == 1);
}

// The modem may still be restarting.
void Update::show_version() {
  std::optional<std::string> version;
  require_stage(wait_until(START_S, [&] {
    wait_seconds(1);
    bool open = !device_problem(mapped_device()) && module_.zop_open(MODULE_DEVICE) == ZOP_OPEN_UP;
    if (open) version = version_of_modem();
    module_.zop_close();
    return version.has_value();
  }));
  progress_.stage("done", "done: the modem runs " + *version);
  progress_.event("done", {{"version", *version}});
  if (!set_.version.empty() && set_.version != *version) {
    progress_.note("but version_info says " + set_.version);
  }
}

static ImageSet good_images(const std::string& folder) {
  ImageSet set = read_image_set(folder);
  std::string problems = set.folder_problem;
  for (const ImageFile& file : set.files) {
    bool report = !file.problem.empty() && set.folder_problem.empty();
    if (report) problems += (problems.empty() ? "" : ", ") + file.name + " " + file.problem;
  }
  if (problems.empty()) return set;
  throw Failure(folder + ": " + problems + "; the modem was not touched");
}

static Findings update(const ModuleLibrary& module, const Arguments& arguments) {
  ImageSet set = good_images(arguments.text("DIR"));
  if (auto problem = device_problem(mapped_device())) throw Failure(*problem);
  Update(module, set, arguments).run();
  return {};
}

const Verb FIRMWARE_UPDATE = {
    .noun = "firmware",
    .name = "update",
    .help = "write an image set to the modem",
    .need = Session::LIBRARY,
    .danger = "a modem whose update fails has no firmware until an update succeeds",
    .arguments = {{.name = "DIR", .help = "folder of the image set"},
                  {.name = "--modem-only",
                   .help = "write only the firmware, not the boot loaders",
                   .flag = true},
                  {.name = "--erase",
                   .help = "erase the modem's file system and write all images",
                   .flag = true}},
    .run = update};

}  // namespace zopctl
