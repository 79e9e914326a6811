// JSON, replaced atomically. It is kept in the user's state folder, or in /var/lib for the
// superuser; a simulated modem's with its other files.
#include "zopctl/firmware/journal.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "zopctl/host/host_calls.h"
#include "zopctl/host/module_library.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/replace_file.h"

namespace zopctl {

namespace fs = std::filesystem;

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(JournalEntry, begun, images, new_version, has_version_info,
                                   version_before, only_switched, is_written, nv_step)

[[noreturn]] static void fail(const std::string& why) {
  throw Failure("can't keep the journal of the update: " + why, 1,
                "name a folder that can be written in ZOPCTL_STATE_DIR");
}

static fs::path state_folder() {
  if (is_simulated()) return simulated_root();
  if (const char* own = getenv("ZOPCTL_STATE_DIR")) return own;
  if (geteuid() == 0) return "/var/lib/zopctl";
  if (const char* state = getenv("XDG_STATE_HOME")) return fs::path(state) / "zopctl";
  const char* home = getenv("HOME");
  if (home == nullptr || home[0] == '\0') fail("HOME is not set");
  return fs::path(home) / ".local/state/zopctl";
}

// By the path that the user gives: the device behind it may have another number when it comes back.
static std::string file_name(const std::string& device) {
  std::string name = fs::path(device).lexically_normal();
  std::ranges::replace(name, '/', '_');
  return "update" + name + ".json";
}

Journal::Journal(const std::string& device) : path_(state_folder() / file_name(device)) {
  std::ifstream file(path_);
  if (!file) return;
  try {
    entry_ = nlohmann::json::parse(file).get<JournalEntry>();
  } catch (const nlohmann::json::exception&) {
    throw Failure("the journal of an earlier update, " + path_ + ", is damaged", 1,
                  "treat that update as broken off; remove the file to go on");
  }
}

void Journal::prepare() const {
  std::error_code error;
  fs::path folder = fs::path(path_).parent_path();
  fs::create_directories(folder, error);
  if (access(folder.c_str(), W_OK | X_OK) != 0) fail(folder.string() + ": " + strerror(errno));
}

bool JournalEntry::has_nv_work_left() const {
  return !only_switched && nv_step != MODEM_NV_RESTORED;
}

JournalEntry Journal::continued(JournalEntry fresh) const {
  if (!entry_) return fresh;
  bool left = entry_->has_nv_work_left();
  bool restored = entry_->nv_step == MODEM_NV_RESTORED;
  if (left || fresh.version_before.empty())
    fresh.version_before = restored ? entry_->new_version : entry_->version_before;
  if (left) fresh.nv_step = entry_->nv_step;
  return fresh;
}

void Journal::write(const JournalEntry& entry) {
  if (entry_ == entry) return;
  std::string text =
      nlohmann::json(entry).dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
  try {
    replace_file(path_, text, 0600);
  } catch (const Failure& failure) {
    fail(failure.what());
  }
  entry_ = entry;
}

void Journal::remove() {
  entry_.reset();
  if (unlink(path_.c_str()) != 0 && errno != ENOENT)
    fail(path_ + " could not be removed: " + strerror(errno));
  sync_folder(path_);
}

}  // namespace zopctl
