// A lock file holds the process in ten characters, then, after a line end, what it is doing. It is
// written beside and linked to its name, which only one program can do. One that can't be
// understood, read or removed reserves the port too.
#include "zopctl/host/port_lock.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <utility>
#include <vector>

#include "zopctl/host/device_sharing.h"
#include "zopctl/host/signals.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/printable.h"

namespace zopctl {

namespace fs = std::filesystem;

static PortLock* own_lock = nullptr;  // of this program

// ---- names ----

static fs::path lock_folder() {
  const char* own = getenv("ZOPCTL_LOCK_DIR");
  return own != nullptr ? own : "/var/lock";
}

// LCK.. and the path below /dev, with "_" for "/".
static std::string lock_of(std::string path) {
  constexpr std::string_view FOLDER = "/dev/";
  path.erase(0, path.starts_with(FOLDER) ? FOLDER.size() : 1);
  std::ranges::replace(path, '/', '_');
  return lock_folder() / ("LCK.." + path);
}

// Of the given path and of the node, which may be the same.
static std::vector<std::string> locks_of(const std::string& device) {
  std::error_code ignored;
  fs::path given = fs::absolute(device, ignored).lexically_normal();
  std::vector<std::string> locks = {lock_of(given)};
  fs::path node = fs::weakly_canonical(given, ignored);  // empty if links lead in a circle
  if (!node.empty() && lock_of(node) != locks[0]) locks.push_back(lock_of(node));
  return locks;
}

// ---- another program's lock ----

namespace {
struct Holder {
  pid_t process = 0;  // 0: the file says nothing that we understand
  std::string name;   // empty if not given
  std::string doing;
};

// A lock file that is there, open for reading.
class LockFile {
 public:
  explicit LockFile(const std::string& path)
      : path_(path), fd_(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC)) {
    if (fd_ < 0) error_ = errno;
  }
  ~LockFile() {
    if (fd_ >= 0) close(fd_);
  }
  LockFile(const LockFile&) = delete;
  LockFile& operator=(const LockFile&) = delete;

  bool is_missing() const { return error_ == ENOENT || error_ == ENOTDIR; }
  int error() const { return error_; }
  Holder holder() const;
  int remove() const;

 private:
  bool is_current() const;
  std::string path_;
  int fd_;
  int error_ = 0;
};
}  // namespace

Holder LockFile::holder() const {
  char content[256] = "";
  ssize_t size = pread(fd_, content, sizeof content, 0);
  std::istringstream file(std::string(content, size > 0 ? static_cast<size_t>(size) : 0));
  Holder holder;
  std::string line;
  std::getline(file, line);
  size_t start = std::min(line.find_first_not_of(' '), line.size());
  std::from_chars(line.data() + start, line.data() + line.size(), holder.process);
  std::istringstream words(line.substr(start));
  words >> holder.name >> holder.name;
  if (words.fail()) holder.name.clear();
  holder.name = printable(holder.name);
  std::getline(file, holder.doing);
  holder.doing = printable(holder.doing.substr(0, 80));
  return holder;
}

// The name may have gone to another file since this one was opened.
bool LockFile::is_current() const {
  struct stat here, there;
  return fstat(fd_, &here) == 0 && lstat(path_.c_str(), &there) == 0 &&
         here.st_dev == there.st_dev && here.st_ino == there.st_ino;
}

// Of programs that find the same lock left behind, the one that holds it by flock removes it; the
// others then see that the name is free or another's. 0, or an error: EWOULDBLOCK if one does so.
int LockFile::remove() const {
  if (flock(fd_, LOCK_EX | LOCK_NB) != 0) return errno;
  bool gone = !is_current() || unlink(path_.c_str()) == 0 || errno == ENOENT;
  return gone ? 0 : errno;
}

static bool is_alive(pid_t process) { return kill(process, 0) == 0 || errno == EPERM; }

// A living process is trusted, though its number may have been another's when the file was made.
static std::string text_of(const Holder& holder, const std::string& path) {
  std::string doing = holder.doing.empty() ? "" : ", which does " + holder.doing;
  if (holder.name.empty() || holder.name == process_name(holder.process))
    return fmt::format("in use by {}{}; wait for its end, or end it first",
                       process_text(holder.process), doing);
  return fmt::format("reserved by {} for {}, now {}; remove that file if it does not use the port",
                     path, holder.name, process_text(holder.process));
}

// Who has the lock file, if it is there and not left behind; never this process.
static std::optional<std::string> living_holder(const LockFile& file, const std::string& path) {
  if (file.is_missing()) return std::nullopt;
  if (file.error() != 0)
    return fmt::format("reserved by {}, which can't be read: {}", path, strerror(file.error()));
  Holder holder = file.holder();
  if (holder.process == getpid()) return std::nullopt;
  if (holder.process <= 0)
    return fmt::format(
        "reserved by {}, which names no process; remove that file if no program uses the port",
        path);
  if (!is_alive(holder.process)) return std::nullopt;
  return text_of(holder, path);
}

std::optional<std::string> reservation_of(const std::string& device) {
  if (own_lock != nullptr && own_lock->device() == device) return own_lock->follow();
  for (const std::string& path : locks_of(device)) {
    if (auto other = living_holder(LockFile(path), path)) return device + " is " + *other;
  }
  return std::nullopt;
}

// ---- our own ----

static bool write_lock(int fd, const std::string& doing) {
  std::string text = fmt::format("{:>10} {}\n{}\n", getpid(), process_name(getpid()), doing);
  errno = ENOSPC;  // of a write that is cut short
  bool written = write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  return written && fchmod(fd, 0644) == 0;  // others must be able to read it
}

// 0, or an error; EEXIST if there is one.
static int make_lock(const std::string& path, const std::string& doing) {
  std::string scratch = path + ".XXXXXX";
  int fd = mkostemp(scratch.data(), O_CLOEXEC);
  if (fd < 0) return errno;
  bool made = write_lock(fd, doing) && link(scratch.c_str(), path.c_str()) == 0;
  int error = made ? 0 : errno;
  close(fd);
  unlink(scratch.c_str());
  return error;
}

std::optional<std::string> PortLock::take(const std::string& path) {
  constexpr int TRIES = 10;
  constexpr timespec PAUSE = {0, 20'000'000};
  for (int i = 0; i < TRIES; ++i) {
    int error = make_lock(path, doing_);
    if (error == 0) {
      unlink_on_hard_exit(files_.emplace_back(path).c_str());
      return std::nullopt;
    }
    LockFile file(path);
    if (auto other = living_holder(file, path)) return other;
    if (error != EEXIST) {
      problem_ = path + ": " + strerror(error);
      return std::nullopt;
    }
    error = file.is_missing() ? 0 : file.remove();
    if (error == EWOULDBLOCK) {
      nanosleep(&PAUSE, nullptr);  // below the module nothing may throw
    } else if (error != 0) {
      return fmt::format(
          "reserved by {}, left by a program that has ended; it can't be removed: {}", path,
          strerror(error));
    }
  }
  return fmt::format("reserved by {}, which another program holds", path);
}

// Unless somebody has removed it and it is another's by now.
void PortLock::release(const std::string& path) {
  LockFile file(path);
  keep_on_hard_exit(path.c_str());
  if (file.error() == 0 && file.holder().process == getpid()) unlink(path.c_str());
}

// The old node's file goes when the new one's is there: it may be another modem's next.
std::optional<std::string> PortLock::follow() {
  std::vector<std::string> wanted = locks_of(device_);
  for (const std::string& path : wanted) {
    if (std::ranges::find(files_, path) != files_.end()) continue;
    if (auto other = take(path)) return device_ + " is " + *other;
  }
  bool is_away = wanted.size() == 1;  // or the given path is the node
  if (is_away) return std::nullopt;
  for (auto file = files_.begin(); file != files_.end();) {
    bool kept = std::ranges::find(wanted, *file) != wanted.end();
    if (!kept) release(*file);
    file = kept ? std::next(file) : files_.erase(file);
  }
  return std::nullopt;
}

PortLock::PortLock(std::string device, std::string doing)
    : device_(std::move(device)), doing_(std::move(doing)) {
  auto other = follow();
  if (other) {
    for (const std::string& path : files_) release(path);
    throw Failure(*other);
  }
  own_lock = this;
}

PortLock::~PortLock() {
  own_lock = nullptr;
  for (const std::string& path : files_) release(path);
}

}  // namespace zopctl
