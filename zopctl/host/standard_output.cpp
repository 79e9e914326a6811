// Duplicates lie above the standard streams and are close-on-exec.
#include "zopctl/host/standard_output.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include "zopctl/text/failure.h"

namespace zopctl {

static int duplicate() { return fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1); }

FILE* duplicate_standard_output(const char* mode) {
  int fd = duplicate();
  return fd < 0 ? nullptr : fdopen(fd, mode);
}

RedirectedOutput::RedirectedOutput(int fd) {
  fflush(stdout);
  before_ = duplicate();
  dup2(fd, STDOUT_FILENO);
  close(fd);
}

RedirectedOutput::~RedirectedOutput() {
  fflush(stdout);
  dup2(before_, STDOUT_FILENO);
  close(before_);
}

QuietOutput::QuietOutput() : RedirectedOutput(open("/dev/null", O_WRONLY | O_CLOEXEC)) {}

// ---- the module's ----

ModuleOutput::ModuleOutput() {
  signal(SIGPIPE, SIG_IGN);  // the work goes on when nobody reads the output any more
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw Failure("no pipe for what the module says");
  fcntl(ends[0], F_SETFL, O_NONBLOCK);
  pipe_ = ends[0];
  user_ = duplicate_standard_output();
  redirected_.emplace(ends[1]);
}

ModuleOutput::~ModuleOutput() {
  redirected_.reset();
  fclose(user_);
  close(pipe_);
}

std::vector<std::string> ModuleOutput::new_lines() {
  char piece[4096];
  for (ssize_t n; (n = read(pipe_, piece, sizeof piece)) > 0;) {
    rest_.append(piece, static_cast<size_t>(n));
  }
  std::vector<std::string> lines;
  for (size_t end; (end = rest_.find('\n')) != std::string::npos;) {
    lines.push_back(rest_.substr(0, end));
    rest_.erase(0, end + 1);
  }
  return lines;
}

}  // namespace zopctl
