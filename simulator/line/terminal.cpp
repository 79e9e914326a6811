// Pseudo-terminals: raw before the host opens them, never our controlling terminal.
#include "simulator/line/terminal.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace sim {

[[noreturn]] static void fail(const std::string& what) {
  throw std::runtime_error(what + ": " + strerror(errno));
}

Terminal::Terminal(std::string link) : link_(std::move(link)) { plug_in(); }

Terminal::~Terminal() { unplug(); }

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
    errno = error;
    fail("can't make the link " + link);
  }
}

// A simulator that was killed leaves its link behind, to a terminal that is gone. The next terminal
// often gets the same name, and would make the link look alive.
void Terminal::remove_dead_link() {
  struct stat at_link, behind_it;
  bool is_link = lstat(link_.c_str(), &at_link) == 0 && S_ISLNK(at_link.st_mode);
  if (is_link && stat(link_.c_str(), &behind_it) != 0 && errno == ENOENT) unlink(link_.c_str());
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
