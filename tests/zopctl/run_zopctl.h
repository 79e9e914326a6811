// Runs the built zopctl as a user does.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>

struct Outcome {
  std::string output;  // standard output and error
  int exit_code;
};

inline Outcome zopctl(const std::string& arguments) {
  std::string command = ZOPCTL " ";
  command += arguments;
  command += " 2>&1";
  FILE* pipe = popen(command.c_str(), "r");
  Outcome run;
  for (int c = fgetc(pipe); c != EOF; c = fgetc(pipe)) run.output += static_cast<char>(c);
  int status = pclose(pipe);
  run.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return run;
}

inline bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

// A scenario of the test's own.
inline std::string scenario(const std::string& name, const std::string& toml) {
  std::string path = testing::TempDir() + name + "-" + std::to_string(getpid()) + ".toml";
  std::ofstream(path) << toml;
  return path;
}
