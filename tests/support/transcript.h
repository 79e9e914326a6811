// Tests as transcripts: text files of commands and of what each one prints.
//
//   == A closed module knows no signal strength
//   # a comment
//   > open ; close
//   ok
//   ok
//
// A heading starts a test case, which has a session of its own; what stands before the first one
// runs at the start of each case. The words of a command may be texts in quotes, with the escapes
// of C. ZOP_REBUILD_GOLDEN=1 rewrites what the commands print: review the difference.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace test {

using Words = std::vector<std::string>;  // a text keeps its first quote, so that it can be told

class Session {
 public:
  virtual ~Session() = default;
  virtual std::string run(const Words& command) = 0;  // whole lines
};

using NewSession = std::function<std::unique_ptr<Session>()>;

// Registers each case of each file of a folder; true, for a variable that does so at start.
bool register_transcripts(const std::string& folder, NewSession new_session);

std::string text_of(const std::string& word);  // without its quote, if it has one

}  // namespace test
