// Tests as transcripts: text files of commands and of what each one prints.
//
//   == A closed module knows no signal strength
//   # a comment
//   > open ; close
//   ok
//   ok
//
// A heading starts a test case, which has a session of its own; what stands before the first one
// runs at the start of each case. ZOP_REBUILD_GOLDEN=1 rewrites what the commands print: review the
// difference.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/words.h"

namespace test {

class Session {
 public:
  virtual ~Session() = default;
  virtual std::string run(const Words& command) = 0;  // whole lines
};

using NewSession = std::function<std::unique_ptr<Session>()>;

// Registers each case of each file of a folder; true, for a variable that does so at start.
bool register_transcripts(const std::string& folder, NewSession new_session);

}  // namespace test
