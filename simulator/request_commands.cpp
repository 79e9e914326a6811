// Their output goes to standard error: the first line of standard output is the terminal's path.
#include "simulator/request_commands.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <stdexcept>

#include "simulator/download/download_mode.h"
#include "simulator/requests/requests.h"

namespace sim {

static int parse_skip(const std::string& option) {
  constexpr char KEY[] = "skip=";
  int skip = -1;
  if (option.starts_with(KEY)) {
    const char* end = option.data() + option.size();
    auto [stop, error] = std::from_chars(option.data() + sizeof KEY - 1, end, skip);
    if (error != std::errc{} || stop != end) skip = -1;
  }
  if (skip < 0) throw std::invalid_argument("\"" + option + "\" is not skip=N");
  return skip;
}

RequestCommand parse_request_command(const std::string& text) {
  size_t colon = text.find(':');
  if (colon == std::string::npos || colon + 1 == text.size()) {
    throw std::invalid_argument("\"" + text + "\" is not REQUEST[,skip=N]:COMMAND");
  }
  std::string when = text.substr(0, colon);
  size_t comma = when.find(',');
  RequestCommand command{when.substr(0, comma), 0, text.substr(colon + 1)};
  if (find_request_named(command.request) == nullptr && !is_packet_name(command.request)) {
    throw std::invalid_argument("unknown request \"" + command.request +
                                "\"; zop-modem-sim --list-requests shows them");
  }
  if (comma != std::string::npos) command.skip = parse_skip(when.substr(comma + 1));
  return command;
}

// The simulator blocks the signals that end it; its child doesn't.
static int run_in_shell(const std::string& command) {
  posix_spawn_file_actions_t files;
  posix_spawn_file_actions_init(&files);
  posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&files, STDERR_FILENO, STDOUT_FILENO);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t none;
  sigemptyset(&none);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
  std::string line = command;
  char shell[] = "sh", option[] = "-c";
  char* words[] = {shell, option, line.data(), nullptr};
  pid_t pid = -1;
  int error = posix_spawn(&pid, "/bin/sh", &files, &attributes, words, environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&files);
  if (error != 0) return -1;
  int status = 0;
  while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void RequestCommands::run(const std::string& request) {
  for (RequestCommand& command : commands_) {
    if (command.request != request || command.skip-- != 0) continue;
    setenv("SIM_REQUEST", request.c_str(), 1);
    int code = run_in_shell(command.command);
    if (code == 0) continue;
    fmt::print(stderr, "zop-modem-sim: the command at {} failed ({})\n", request, code);
  }
}

}  // namespace sim
