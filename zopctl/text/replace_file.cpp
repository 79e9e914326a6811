// The new content goes to a file beside the old one, which then takes its name.
#include "zopctl/text/replace_file.h"

#include <errno.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>

#include "zopctl/text/failure.h"

namespace zopctl {

[[noreturn]] static void fail(const std::string& path) {
  throw file_failure(path + " could not be written", errno);
}

static bool write_all(int fd, std::string_view text) {
  while (!text.empty()) {
    ssize_t size = write(fd, text.data(), text.size());
    if (size < 0 && errno == EINTR) continue;
    if (size < 0) return false;
    text.remove_prefix(static_cast<size_t>(size));
  }
  return true;
}

// Never opens a file that is there: what an earlier run left, or a link to elsewhere, goes first.
static void write_new(const std::string& path, std::string_view text, mode_t mode) {
  unlink(path.c_str());
  int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
  if (fd < 0) fail(path);
  bool good = write_all(fd, text) && fsync(fd) == 0;
  int error = errno;
  close(fd);
  if (good) return;
  unlink(path.c_str());
  errno = error;
  fail(path);
}

// Some file systems can't; the file is good.
void sync_folder(const std::string& file) {
  std::filesystem::path parent = std::filesystem::path(file).parent_path();
  std::string folder = parent.empty() ? "." : parent.string();
  int fd = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return;
  fsync(fd);
  close(fd);
}

void require_file_or_none(const std::string& path) {
  std::error_code error;
  auto found = std::filesystem::status(path, error);
  if (std::filesystem::exists(found) && !std::filesystem::is_regular_file(found))
    throw Failure(path + " is not a file; name another");
}

void replace_file(const std::string& path, std::string_view text, mode_t mode) {
  require_file_or_none(path);
  std::string next = path + ".new";
  write_new(next, text, mode);
  if (rename(next.c_str(), path.c_str()) != 0) {
    int error = errno;
    unlink(next.c_str());
    errno = error;
    fail(path);
  }
  sync_folder(path);
}

}  // namespace zopctl
