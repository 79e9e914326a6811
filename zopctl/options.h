// The command line.
#pragma once

#include <optional>

#include "zopctl/verb_table.h"

namespace zopctl {

struct Options : Session::Setting {
  const Verb* verb = nullptr;
  Arguments arguments;
  bool json = false;
};

// Reads the command line. If there is nothing more to do (help, version, bad usage), prints the
// text, sets exit_code and returns nothing.
std::optional<Options> read_options(int argc, char** argv, int& exit_code);

}  // namespace zopctl
