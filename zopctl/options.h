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

// Reads the command line. When there is nothing more to do (help, version, bad usage) prints what
// there is to say, sets exit_code and returns nothing.
std::optional<Options> read_options(int argc, char** argv, int& exit_code);

}  // namespace zopctl
