// Tests as transcripts: text files of inputs and of what came of them, which a person can review.
//
//   == a closed module knows no signal strength
//   # a comment
//   $ an input
//   > its next line
//   | a line of the output
//
// A heading starts a test case with a session of its own; what stands before the first one runs at
// the start of each case. A file without headings is one case. "# mask REGEX" hides what differs
// from run to run in the outputs that follow. ZOP_REBUILD_GOLDEN=1 writes the outputs anew: review
// the difference.
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace test {

class Session {
 public:
  virtual ~Session() = default;
  virtual std::string answer(const std::string& input) = 0;
};

using NewSession = std::function<std::unique_ptr<Session>()>;

// Registers each case of each file of a folder; true, for a variable that does so at start.
bool register_transcripts(const std::string& folder, const NewSession& new_session);

}  // namespace test
