// Starts and ends the simulator. It has its own process group, so that Ctrl-C reaches only zopctl,
// which closes the modem before it ends the simulator.
#include "zopctl/host/simulator_process.h"

#include <errno.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <signal.h>
#include <spawn.h>
#include <stdio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <vector>

#include "zopctl/host/signals.h"
#include "zopctl/text/failure.h"

namespace zopctl {

namespace fs = std::filesystem;

static constexpr char PROGRAM[] = "zop-modem-sim";

static std::string program_path() {
  fs::path beside = fs::read_symlink("/proc/self/exe").parent_path() / PROGRAM;
  return fs::exists(beside) ? beside.string() : PROGRAM;
}

// Starts the program with this descriptor as its standard output.
static pid_t start(const std::vector<std::string>& words, int output) {
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);

  posix_spawn_file_actions_t files;
  posix_spawn_file_actions_init(&files);
  posix_spawn_file_actions_adddup2(&files, output, STDOUT_FILENO);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
  pid_t pid = -1;
  int error = posix_spawnp(&pid, arguments[0], &files, &attributes, arguments.data(), environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&files);
  if (error != 0) throw Failure("can't start " + words[0] + ": it is installed with zopctl");
  return pid;
}

static std::string first_line(FILE* output) {
  std::string line;
  for (int c = fgetc(output); c != EOF && c != '\n'; c = fgetc(output)) {
    line += static_cast<char>(c);
  }
  return line;
}

SimulatorProcess::SimulatorProcess(const Setting& setting) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw Failure("no pipe for the simulated modem");
  std::vector<std::string> words = {program_path(), "--exit-with-parent",
                                    "--link",       setting.link,
                                    "--speed",      fmt::to_string(setting.speed)};
  if (!setting.scenario.empty()) words.push_back(setting.scenario);
  pid_ = start(words, ends[1]);
  close(ends[1]);
  FILE* output = fdopen(ends[0], "r");
  bool started = !first_line(output).empty();  // the device node
  fclose(output);
  if (started) return;
  int exit_code = end();
  check_signals();
  const char* what = "the simulated modem did not start; its message on standard error tells why";
  if (exit_code == 2) throw UsageError(what);
  throw Failure(what);
}

int SimulatorProcess::end() {
  kill(pid_, SIGTERM);  // one that has ended keeps its exit code
  int status = 0;
  while (waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

SimulatorProcess::~SimulatorProcess() { end(); }

}  // namespace zopctl
