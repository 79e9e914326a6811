// Pseudo-terminals: raw before the host opens them, never our controlling terminal.
#include "simulator/line/terminal.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <functional>
#include <stdexcept>

namespace sim {

namespace fs = std::filesystem;

[[noreturn]] static void fail(const std::string& what) {
  throw std::runtime_error(what + ": " + strerror(errno));
}

// A socket with the link's name in the kernel's own name space: one process has it, until it ends
// in whatever way. Negative when another has it.
static int claim(const std::string& link) {
  if (link.empty()) return -1;
  fs::path path = fs::absolute(link);
  std::error_code error;
  fs::path folder = fs::canonical(path.parent_path(), error);
  std::string name =
      fmt::format("zop-modem-sim {:x}", std::hash<std::string>()(folder / path.filename()));
  sockaddr_un address = {.sun_family = AF_UNIX, .sun_path = ""};
  name.copy(address.sun_path + 1, sizeof address.sun_path - 1);
  int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd >= 0 && bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) return fd;
  close(fd);
  return -1;
}

Terminal::Terminal(std::string link) : link_(std::move(link)), claim_(claim(link_)) { plug_in(); }

Terminal::~Terminal() {
  unplug();
  if (claim_ >= 0) close(claim_);
}

void Terminal::plug_in() {
  if (is_plugged_in()) return;
  remove_dead_link();
  master_ = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
  if (master_ < 0 || grantpt(master_) != 0 || unlockpt(master_) != 0) fail("no pseudo-terminal");
  char name[128];
  if (ptsname_r(master_, name, sizeof name) != 0) fail("no name for the pseudo-terminal");
  path_ = name;
  termios settings;
  if (tcgetattr(master_, &settings) != 0) fail(path_);
  cfmakeraw(&settings);
  if (tcsetattr(master_, TCSANOW, &settings) != 0) fail(path_);
  slave_ = open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (slave_ < 0) fail(path_);
  if (link_.empty()) return;
  if (symlink(name, link_.c_str()) != 0) {
    int error = errno;
    std::string link = std::move(link_);
    link_.clear();  // not ours: leave it alone at the end
    throw std::runtime_error("can't make the link " + link + ": " + strerror(error) +
                             "; name another, or remove it first");
  }
}

static bool is_pseudo_terminal(const struct stat& file) {
  constexpr unsigned FIRST_MAJOR = 136, MAJORS = 8;
  unsigned number = major(file.st_rdev);
  return S_ISCHR(file.st_mode) && number >= FIRST_MAJOR && number < FIRST_MAJOR + MAJORS;
}

// A simulator that was killed leaves its link behind. Its terminal is gone, or another has its
// name.
void Terminal::remove_dead_link() {
  struct stat at_link, behind_it;
  bool is_link = lstat(link_.c_str(), &at_link) == 0 && S_ISLNK(at_link.st_mode);
  if (!is_link) return;
  bool is_there = stat(link_.c_str(), &behind_it) == 0;
  bool is_dead = is_there ? claim_ >= 0 && is_pseudo_terminal(behind_it) : errno == ENOENT;
  if (is_dead) unlink(link_.c_str());
}

void Terminal::unplug() {
  if (!is_plugged_in()) return;
  // First: another simulator may get the terminal's name as soon as it is closed.
  if (!link_.empty()) unlink(link_.c_str());
  close(slave_);
  close(master_);
  slave_ = master_ = -1;
}

Bytes Terminal::read() {
  Bytes bytes(4096);
  ssize_t size = ::read(master_, bytes.data(), bytes.size());
  bytes.resize(size > 0 ? static_cast<size_t>(size) : 0);
  return bytes;
}

void Terminal::write(View bytes) {
  while (!bytes.empty()) {
    ssize_t size = ::write(master_, bytes.data(), bytes.size());
    if (size < 0 && errno == EINTR) continue;
    if (size <= 0) return;
    bytes = bytes.subspan(static_cast<size_t>(size));
  }
}

}  // namespace sim
