// A line is with the system when add returns.
#include "fleet/journal.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <vector>

#include "records/file_error.h"
#include "records/line_splitter.h"

namespace fleet {

constexpr size_t CHUNK = 1 << 16;

Journal::Journal(std::string name)
    : name_(std::move(name)),
      fd_(open(name_.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0600)) {
  if (fd_ < 0 || flock(fd_, LOCK_EX) != 0) fail();
}

Journal::~Journal() { close(fd_); }

void Journal::fail() const { throw records::file_failure(name_, errno); }

// A line without its end was not answered, and comes again.
void Journal::replay(const std::function<void(std::string_view line)>& take) {
  std::vector<char> chunk(CHUNK);
  records::LineSplitter splitter;
  if (lseek(fd_, 0, SEEK_SET) < 0) fail();
  for (;;) {
    ssize_t size = read(fd_, chunk.data(), chunk.size());
    if (size < 0) fail();
    if (size == 0) break;
    splitter.add({chunk.data(), static_cast<size_t>(size)}, take);
  }
}

void Journal::add(std::string_view line) {
  std::string text = std::string(line) + '\n';
  std::string_view left = text;
  while (!left.empty()) {
    ssize_t size = write(fd_, left.data(), left.size());
    if (size < 0 && errno != EINTR) fail();
    if (size > 0) left.remove_prefix(static_cast<size_t>(size));
  }
}

void Journal::clear() {
  if (ftruncate(fd_, 0) != 0) fail();
}

}  // namespace fleet
