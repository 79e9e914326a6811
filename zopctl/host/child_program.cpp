// What the child prints goes to memory files, which hold any amount and are gone with us.
#include "zopctl/host/child_program.h"

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>

#include "zopctl/host/signals.h"

namespace zopctl {

namespace {
// The child inherits it by number, for a path.
class MemoryFile {
 public:
  MemoryFile() : fd_(memfd_create("zopctl", 0)) {}
  ~MemoryFile() { close(fd_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  int fd() const { return fd_; }
  std::string path() const { return "/dev/fd/" + std::to_string(fd_); }
  std::string content() const {
    std::string all;
    char piece[4096];
    off_t at = 0;
    for (ssize_t size; (size = pread(fd_, piece, sizeof piece, at)) > 0; at += size)
      all.append(piece, static_cast<size_t>(size));
    return all;
  }

 private:
  int fd_;
};
}  // namespace

static pid_t start(std::vector<std::string>& words, int output, int errors) {
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t files;
  posix_spawn_file_actions_init(&files);
  posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&files, output, STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&files, errors, STDERR_FILENO);
  pid_t pid = -1;
  int error = posix_spawn(&pid, "/proc/self/exe", &files, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&files);
  return error == 0 ? pid : -1;
}

static int wait_for_end(pid_t pid) {
  int status = 0;
  while (pid > 0 && waitpid(pid, &status, 0) < 0 && errno == EINTR) kill(pid, SIGTERM);
  return pid > 0 && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

ChildResult run_again(std::vector<std::string> words) {
  MemoryFile output, errors, capture;
  std::ranges::replace(words, std::string(CAPTURE_FILE), capture.path());
  words.insert(words.begin(), "zopctl");
  int exit_code = wait_for_end(start(words, output.fd(), errors.fd()));
  check_signals();
  return {exit_code, output.content(), errors.content(), capture.content()};
}

}  // namespace zopctl
