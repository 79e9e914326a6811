// A page replaces an old one only when it is complete.
#include "page/page_file.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string_view>

#include "records/file_error.h"

namespace page {

namespace fs = std::filesystem;

[[noreturn]] static void fail(const std::string& path) {
  throw records::file_failure(path + " could not be written", errno);
}

static void write_all(int fd, std::string_view text, const std::string& path, void (*check)()) {
  while (!text.empty()) {
    ssize_t size = write(fd, text.data(), text.size());
    check();
    if (size < 0 && errno == EINTR) continue;
    if (size < 0) fail(path);
    text.remove_prefix(static_cast<size_t>(size));
  }
}

namespace {
// A new file beside the one it will replace; removed unless keep() is called.
class NewFile {
 public:
  explicit NewFile(const std::string& path)
      : path_(path), name_(path + ".XXXXXX"), fd_(mkostemp(name_.data(), O_CLOEXEC)) {
    if (fd_ < 0) fail(path);
  }
  ~NewFile() {
    close(fd_);
    if (!kept_) unlink(name_.c_str());
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  int fd() const { return fd_; }

  void keep() {
    struct stat old = {};
    mode_t mask = umask(0);
    umask(mask);
    mode_t mode = stat(path_.c_str(), &old) == 0 ? old.st_mode & 07777 : 0666 & ~mask;
    if (fchmod(fd_, mode) != 0 || fsync(fd_) != 0) fail(path_);
    if (rename(name_.c_str(), path_.c_str()) != 0) fail(path_);
    kept_ = true;
  }

 private:
  std::string path_, name_;
  int fd_;
  bool kept_ = false;
};
}  // namespace

// A device or a pipe can't be replaced: the page is written to it directly, as to a link's target.
void write_page(const std::string& name, const std::string& text, void (*check)()) {
  if (name == "-") return write_all(STDOUT_FILENO, text, "standard output", check);
  std::error_code error;
  bool exists = fs::exists(name, error);
  if (exists && !fs::is_regular_file(name, error)) {
    int fd = open(name.c_str(), O_WRONLY | O_CLOEXEC);
    if (fd < 0) fail(name);
    write_all(fd, text, name, check);
    if (close(fd) != 0) fail(name);
    return;
  }
  NewFile file(exists ? fs::canonical(name).string() : name);
  write_all(file.fd(), text, name, check);
  file.keep();
}

}  // namespace page
