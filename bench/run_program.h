// Runs a program to its end and discards its output.
#pragma once

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

// Its peak memory in kB; -1 when it failed.
inline long run_program(const std::vector<std::string>& words) {
  std::vector<char*> arguments;
  for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t files;
  posix_spawn_file_actions_init(&files);
  for (int fd : {STDOUT_FILENO, STDERR_FILENO}) {  // grep skips its work on /dev/null
    posix_spawn_file_actions_addopen(&files, fd, "/dev/zero", O_WRONLY, 0);
  }
  pid_t pid = -1;
  int error = posix_spawnp(&pid, arguments[0], &files, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&files);
  int status = 0;
  rusage used = {};
  bool ended = error == 0 && wait4(pid, &status, 0, &used) == pid;
  return ended && WIFEXITED(status) && WEXITSTATUS(status) == 0 ? used.ru_maxrss : -1;
}
