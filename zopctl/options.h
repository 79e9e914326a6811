// The command line.
#pragma once

#include <optional>
#include <string>

#include "zopctl/verbs.h"

namespace zopctl {

struct Options {
  const Verb* verb = nullptr;
  Arguments arguments;
  bool json = false;
  bool simulate = false;
  std::string scenario;  // with simulate; empty: the simulator's default
  double sim_speed = 1;  // of its clock
  std::string device;    // empty: the module's own
  std::string capture;   // file for all that goes over the line; "-" is standard output
  bool redact = false;   // blank secrets in it
  std::string library;   // empty: found beside the program or by the loader
  std::optional<unsigned> log_mask;
};

// Reads the command line. When there is nothing more to do (help, version, bad usage) prints what
// there is to say, sets exit_code and returns nothing.
std::optional<Options> read_options(int argc, char** argv, int& exit_code);

}  // namespace zopctl
