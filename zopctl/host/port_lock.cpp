// The lock file holds the process in ten characters, then, after a line end, what it is doing. It
// is written beside and linked to its name, which only one program can do.
#include "zopctl/host/port_lock.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>

#include "zopctl/host/device_sharing.h"
#include "zopctl/host/signals.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/printable.h"

namespace zopctl {

namespace fs = std::filesystem;

// The path below /dev, with "_" for "/".
static std::string device_name(const std::string& device) {
  std::error_code ignored;
  std::string name = fs::weakly_canonical(device, ignored);
  constexpr std::string_view FOLDER = "/dev/";
  name.erase(0, name.starts_with(FOLDER) ? FOLDER.size() : 1);
  std::ranges::replace(name, '/', '_');
  return name;
}

static fs::path lock_folder() {
  const char* own = getenv("ZOPCTL_LOCK_DIR");
  return own != nullptr ? own : "/var/lock";
}

namespace {
struct Holder {
  pid_t process = 0;  // 0: the file says nothing that we understand
  std::string name;   // empty if not given
  std::string doing;
};
}  // namespace

// Nothing if there is no lock file.
static std::optional<Holder> read_lock(const std::string& path) {
  std::ifstream file(path);
  if (!file) return std::nullopt;
  Holder holder;
  std::string line;
  std::getline(file, line);
  size_t start = std::min(line.find_first_not_of(' '), line.size());
  std::from_chars(line.data() + start, line.data() + line.size(), holder.process);
  std::istringstream words(line.substr(start));
  words >> holder.name >> holder.name;
  if (words.fail()) holder.name.clear();
  std::getline(file, holder.doing);
  holder.doing = printable(holder.doing.substr(0, 80));
  return holder;
}

// Its number may have gone to a process of another name since.
static bool is_alive(const Holder& holder) {
  if (kill(holder.process, 0) != 0 && errno != EPERM) return false;
  return holder.name.empty() || process_name(holder.process) == holder.name;
}

static std::string lock_of(const std::string& device) {
  return lock_folder() / ("LCK.." + device_name(device));
}

std::optional<std::string> reservation_of(const std::string& device) {
  std::string path = lock_of(device);
  std::optional<Holder> holder = read_lock(path);
  if (!holder || holder->process == getpid()) return std::nullopt;
  if (holder->process <= 0)
    return fmt::format(
        "{} is reserved by {}, which names no process; remove that file if no program "
        "uses the port",
        device, path);
  if (!is_alive(*holder)) return std::nullopt;
  std::string doing = holder->doing.empty() ? "" : ", which does " + holder->doing;
  return fmt::format("{} is in use by {}{}; wait for its end, or end it first", device,
                     process_text(holder->process), doing);
}

static bool write_own(const std::string& path, const std::string& doing) {
  int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0644);
  if (fd < 0) return false;
  std::string text = fmt::format("{:>10} {}\n{}\n", getpid(), process_name(getpid()), doing);
  bool written = write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  return close(fd) == 0 && written;
}

PortLock::PortLock(const std::string& device, const std::string& doing) {
  std::string path = lock_of(device);
  std::string own = fmt::format("{}.{}", path, getpid());
  if (!write_own(own, doing)) return;
  std::optional<std::string> other;
  bool linked = false;
  for (int tries = 0; tries < 3 && !linked && !other; ++tries) {
    linked = link(own.c_str(), path.c_str()) == 0;
    if (!linked) other = reservation_of(device);
    if (!linked && !other) unlink(path.c_str());  // its process has ended without removing it
  }
  unlink(own.c_str());
  if (other) throw Failure(*other);
  if (!linked) return;
  path_ = path;
  unlink_on_hard_exit(path_.c_str());
}

PortLock::~PortLock() {
  unlink_on_hard_exit(nullptr);
  if (!path_.empty()) unlink(path_.c_str());
}

}  // namespace zopctl
