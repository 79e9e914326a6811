// Runs programs: in a shell until they exit, or in parallel with the test.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

struct Outcome {
  std::string output;  // standard output and error
  int exit_code;
};

inline int exit_code_of(int status) { return WIFEXITED(status) ? WEXITSTATUS(status) : -1; }

inline Outcome shell(const std::string& command) {
  FILE* pipe = popen((command + " 2>&1").c_str(), "r");
  Outcome run;
  for (int c = fgetc(pipe); c != EOF; c = fgetc(pipe)) run.output += static_cast<char>(c);
  run.exit_code = exit_code_of(pclose(pipe));
  return run;
}

inline bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

inline void expect_in_order(const std::string& text, std::initializer_list<std::string> parts) {
  size_t at = 0;
  for (const std::string& part : parts) {
    size_t found = text.find(part, at);
    EXPECT_NE(found, std::string::npos) << part << "\n" << text;
    if (found != std::string::npos) at = found + part.size();
  }
}

// Runs in parallel with the test; the destructor terminates it.
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
    setvbuf(output_, nullptr, _IONBF, 0);  // poll sees all that is not read
  }
  ~Program() {
    if (pid_ > 0) end(SIGTERM);
    fclose(output_);
  }
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  // The next line of standard output or error; empty at the end.
  std::string line() {
    constexpr int SILENCE_MS = 20'000;  // well below a test's time-out
    char text[512] = "";
    pollfd output = {fileno(output_), POLLIN, 0};
    if (poll(&output, 1, SILENCE_MS) == 0) {
      ADD_FAILURE() << "a program says nothing more";
      kill(pid_, SIGKILL);
      return "";
    }
    if (fgets(text, sizeof text, output_) == nullptr) return "";
    text[strcspn(text, "\n")] = '\0';
    return text;
  }
  // The lines up to and including the first that contains text.
  std::string lines_until(const std::string& text) {
    std::string lines, next;
    do lines += (next = line()) + "\n";
    while (!next.empty() && !contains(next, text));
    EXPECT_FALSE(next.empty()) << "no " << text << " in\n" << lines;
    return lines;
  }
  std::string rest() {
    std::string lines;
    for (std::string next = line(); !next.empty(); next = line()) lines += next + "\n";
    return lines;
  }
  void send(int signal) { kill(pid_, signal); }
  int exit_code() {
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = 0;
    return exit_code_of(status);
  }
  int end(int signal) {
    send(signal);
    return exit_code();
  }

 private:
  pid_t pid_;
  FILE* output_;
};
