// Runs the built zopctl as a user does.
#pragma once

#include "tests/support/program.h"
#include "tests/support/temporary_folder.h"

inline Outcome zopctl(const std::string& arguments) { return shell(ZOPCTL " " + arguments); }

struct Run {
  std::string arguments;
  int exit_code;
  std::string text;
};

inline void expect_runs(std::initializer_list<Run> runs) {
  for (const Run& run : runs) {
    Outcome outcome = zopctl(run.arguments);
    EXPECT_EQ(outcome.exit_code, run.exit_code) << run.arguments << "\n" << outcome.output;
    EXPECT_TRUE(contains(outcome.output, run.text)) << run.arguments << "\n" << outcome.output;
  }
}

// The option that simulates a modem with this scenario.
inline std::string simulated(const std::string& toml) {
  static const TemporaryFolder folder;
  static int count = 0;
  return "--sim=" + folder.write(std::to_string(++count) + ".toml", toml);
}

inline std::string fault(const std::string& text) {
  return "[[fault]]\nswitch = \"" + text + "\"\n";
}
