// The mode is set before the file is emptied: nobody reads along what is written afterwards.
#include "simulator/line/private_file.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace sim {

static bool prepare(int fd) {
  struct stat found = {};
  if (fstat(fd, &found) != 0 || !S_ISREG(found.st_mode)) return true;
  return fchmod(fd, 0600) == 0 && ftruncate(fd, 0) == 0;
}

int make_private_file(const std::string& path) {
  int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  if (fd < 0 || prepare(fd)) return fd;
  int error = errno;
  close(fd);
  errno = error;
  return -1;
}

int read_error(const std::string& path) {
  if (access(path.c_str(), R_OK) != 0) return errno;
  struct stat found = {};
  return stat(path.c_str(), &found) == 0 && S_ISDIR(found.st_mode) ? EISDIR : 0;
}

}  // namespace sim
