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

// Reads the command line. Prints help, version and documents, and returns nothing then. Throws
// UsageError.
std::optional<Options> read_options(int argc, char** argv);

}  // namespace zopctl
