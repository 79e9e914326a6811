// JSON, replaced atomically. It is kept in the user's state folder, or in /var/lib for the
// superuser; a simulated modem's with its other files.
#include "zopctl/firmware/journal.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "zopctl/host/host_calls.h"
#include "zopctl/text/failure.h"

namespace zopctl {

namespace fs = std::filesystem;
using Json = nlohmann::json;

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(JournalEntry, begun, images, new_version, version_before,
                                   is_written, nv_step)

static fs::path state_folder() {
  if (is_simulated()) return simulated_root();
  if (const char* own = getenv("ZOPCTL_STATE_DIR")) return own;
  if (geteuid() == 0) return "/var/lib/zopctl";
  if (const char* state = getenv("XDG_STATE_HOME")) return fs::path(state) / "zopctl";
  const char* home = getenv("HOME");
  return fs::path(home != nullptr ? home : "/tmp") / ".local/state/zopctl";
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
    entry_ = Json::parse(file).get<JournalEntry>();
  } catch (const Json::exception&) {
    throw Failure("the journal of an earlier update, " + path_ + ", is damaged", 1,
                  "treat that update as broken off; remove the file to go on");
  }
}

[[noreturn]] static void fail(const std::string& path) {
  throw Failure("can't keep the journal of the update, " + path + ": " + strerror(errno), 1,
                "name a folder that can be written in ZOPCTL_STATE_DIR");
}

void Journal::prepare() const {
  std::error_code error;
  fs::path folder = fs::path(path_).parent_path();
  fs::create_directories(folder, error);
  if (access(folder.c_str(), W_OK | X_OK) != 0) fail(path_);
}

static void write_synced(const std::string& path, const std::string& text) {
  int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  if (fd < 0) fail(path);
  bool good = write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  good = good && fsync(fd) == 0;
  if (close(fd) != 0 || !good) fail(path);
}

static void sync_folder(const fs::path& folder) {
  int fd = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return;
  fsync(fd);
  close(fd);
}

void Journal::write(const JournalEntry& entry) {
  if (entry_ == entry) return;
  std::string next = path_ + ".new";
  write_synced(next, Json(entry).dump(2) + "\n");
  if (rename(next.c_str(), path_.c_str()) != 0) fail(path_);
  sync_folder(fs::path(path_).parent_path());
  entry_ = entry;
}

void Journal::remove() {
  entry_.reset();
  if (unlink(path_.c_str()) != 0 && errno != ENOENT) fail(path_);
}

}  // namespace zopctl
