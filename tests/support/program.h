// A program that a test has started: its output line by line, signals, its exit code.
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

class Program {
 public:
  explicit Program(std::vector<std::string> words) {
#ifdef EMULATOR
    words.insert(words.begin(), EMULATOR);
#endif
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) abort();
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    pid_ = fork();
    if (pid_ == 0) {
      dup2(ends[1], STDOUT_FILENO);
      dup2(ends[1], STDERR_FILENO);
      execvp(arguments[0], arguments.data());
      _exit(127);
    }
    close(ends[1]);
    output_ = fdopen(ends[0], "r");
  }
  ~Program() { fclose(output_); }

  // The next line of its output or errors; empty at the end.
  std::string line() {
    char text[512] = "";
    if (fgets(text, sizeof text, output_) == nullptr) return "";
    text[strcspn(text, "\n")] = '\0';
    return text;
  }
  void end(int signal) { kill(pid_, signal); }
  int exit_code() {
    int status = 0;
    waitpid(pid_, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

 private:
  pid_t pid_;
  FILE* output_;
};
