// Finds who holds a device in /proc: the kernel has no other way.
#include "zopctl/host/device_sharing.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "zopctl/text/printable.h"

namespace zopctl {

namespace fs = std::filesystem;

static bool is_number(const std::string& name) {
  return !name.empty() && name.find_first_not_of("0123456789") == std::string::npos;
}

// The device behind an open file of a process; 0 for another kind of file.
static dev_t device_behind(const fs::path& file) {
  struct stat found;
  bool device = stat(file.c_str(), &found) == 0 && S_ISCHR(found.st_mode);
  return device ? found.st_rdev : 0;
}

// Reads the real /proc: open would lead to that of a simulated device.
static std::string content_of(const fs::path& path) {
  char text[256] = "";
  int fd = openat(AT_FDCWD, path.c_str(), O_RDONLY | O_CLOEXEC);
  ssize_t size = fd < 0 ? 0 : read(fd, text, sizeof text);
  close(fd);
  return {text, size > 0 ? static_cast<size_t>(size) : 0};
}

// Whether a file of a process, a multiplexer, is the far end of this pseudo-terminal.
static bool is_far_end(const fs::path& process, const fs::path& fd, unsigned terminal) {
  std::string index = "tty-index:\t" + std::to_string(terminal) + "\n";
  return content_of(process / "fdinfo" / fd).find(index) != std::string::npos;
}

// One call for each open file of the machine: it has many.
static bool holds(const fs::path& process, dev_t device) {
  constexpr unsigned PTY_SLAVES = 136;  // the first of their major numbers
  const dev_t multiplexer = makedev(5, 2);
  bool pseudo_terminal = major(device) >= PTY_SLAVES && major(device) < PTY_SLAVES + 8;
  bool found = false;
  std::error_code error;
  fs::directory_iterator files(process / "fd", error);
  for (; !error && files != fs::directory_iterator(); files.increment(error)) {
    dev_t file = device_behind(files->path());
    if (file == device) found = true;
    if (pseudo_terminal && file == multiplexer &&
        is_far_end(process, files->path().filename(), minor(device)))
      return false;
  }
  return found;
}

std::string process_name(int process) {
  std::string name = content_of("/proc/" + std::to_string(process) + "/comm");
  name.resize(name.find_last_not_of('\n') + 1);
  return printable(name);
}

std::string process_text(int process) {
  return process_name(process) + " (process " + std::to_string(process) + ")";
}

std::optional<std::string> holder_of(const std::string& device) {
  dev_t wanted = device_behind(device);
  if (wanted == 0) return std::nullopt;
  const std::string own = std::to_string(getpid());
  std::error_code error;
  fs::directory_iterator processes("/proc", error);
  for (; !error && processes != fs::directory_iterator(); processes.increment(error)) {
    std::string pid = processes->path().filename();
    bool other = is_number(pid) && pid != own;
    if (other && holds(processes->path(), wanted)) {
      return process_text(std::stoi(pid));
    }
  }
  return std::nullopt;
}

bool lock_device(int fd) {
  int result;
  do result = flock(fd, LOCK_EX | LOCK_NB);
  while (result != 0 && errno == EINTR);
  bool taken = result != 0 && errno == EWOULDBLOCK;
  if (taken) errno = EBUSY;
  return !taken;  // a device that can't be locked is still used
}

}  // namespace zopctl
