// Standard output turned into a pipe and back.
#include "zopctl/host/module_output.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include "zopctl/text/failure.h"

namespace zopctl {

ModuleOutput::ModuleOutput() {
  signal(SIGPIPE, SIG_IGN);  // what is under way goes on when nobody reads of it any more
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw Failure("no pipe for what the module says");
  fcntl(ends[0], F_SETFL, O_NONBLOCK);
  fflush(stdout);
  user_ = fdopen(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1), "w");
  dup2(ends[1], STDOUT_FILENO);
  close(ends[1]);
  pipe_ = ends[0];
}

ModuleOutput::~ModuleOutput() {
  fflush(stdout);
  dup2(fileno(user_), STDOUT_FILENO);
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
