// Finds who holds a device in /proc: the kernel has no other way.
#include "zopctl/host/device_sharing.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <memory>

#include "zopctl/text/printable.h"

namespace zopctl {

namespace {
struct Closer {
  void operator()(DIR* folder) const { closedir(folder); }
};
using Folder = std::unique_ptr<DIR, Closer>;
}  // namespace

// Only numbers: processes, descriptors.
static const char* next_number(const Folder& folder) {
  while (folder) {
    const dirent* entry = readdir(folder.get());
    if (entry == nullptr) break;
    if (isdigit(static_cast<unsigned char>(entry->d_name[0]))) return entry->d_name;
  }
  return nullptr;
}

// The character device behind a file; 0 for another kind of file.
static dev_t device_behind(int folder, const char* file) {
  struct stat found;
  bool device = fstatat(folder, file, &found, 0) == 0 && S_ISCHR(found.st_mode);
  return device ? found.st_rdev : 0;
}

// Reads the real /proc: open would lead to that of a simulated device.
static std::string content_of(const std::string& path) {
  char text[256] = "";
  int fd = openat(AT_FDCWD, path.c_str(), O_RDONLY | O_CLOEXEC);
  ssize_t size = fd < 0 ? 0 : read(fd, text, sizeof text);
  close(fd);
  return {text, size > 0 ? static_cast<size_t>(size) : 0};
}

// Whether a file of a process, a multiplexer, is the far end of this pseudo-terminal.
static bool is_far_end(const std::string& process, const char* fd, unsigned terminal) {
  std::string index = "tty-index:\t" + std::to_string(terminal) + "\n";
  return content_of(process + "/fdinfo/" + fd).find(index) != std::string::npos;
}

// A machine has many open files: each is one call, from the folder that it is in.
static bool holds(const std::string& process, dev_t device) {
  constexpr unsigned PTY_SLAVES = 136;  // the first of their major numbers
  const dev_t multiplexer = makedev(5, 2);
  bool pseudo_terminal = major(device) >= PTY_SLAVES && major(device) < PTY_SLAVES + 8;
  bool found = false;
  Folder files(opendir((process + "/fd").c_str()));
  while (const char* fd = next_number(files)) {
    dev_t file = device_behind(dirfd(files.get()), fd);
    if (file == device) found = true;
    if (pseudo_terminal && file == multiplexer && is_far_end(process, fd, minor(device)))
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
  dev_t wanted = device_behind(AT_FDCWD, device.c_str());
  if (wanted == 0) return std::nullopt;
  Folder processes(opendir("/proc"));
  while (const char* number = next_number(processes)) {
    int process = std::stoi(number);
    if (process != getpid() && holds(std::string("/proc/") + number, wanted))
      return process_text(process);
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
