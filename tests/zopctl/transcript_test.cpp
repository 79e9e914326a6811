// zopctl and zop-modem-sim as a user runs them, by transcripts of a shell in an empty folder: every
// byte that they print, and their exit codes.
#include "tests/support/transcript.h"

#include <algorithm>

#include "tests/support/program.h"
#include "tests/support/temporary_folder.h"

class Shell : public testing::TestWithParam<const char*> {
 protected:
  Shell() {
    setenv("PATH", (PROGRAMS ":" + std::string(getenv("PATH"))).c_str(), 1);
    setenv("LC_ALL", "C.UTF-8", 1);
    setenv("TZ", "UTC", 1);
    setenv("DISSECTOR", PROGRAMS "/zop_diag.lua", 1);
  }
  std::string run(const std::string& command) const {
    Outcome done = shell("cd " + folder.path.string() + " < /dev/null; { " + command + "\n}");
    if (done.exit_code != 0) done.output += "[exit " + std::to_string(done.exit_code) + "]\n";
    return done.output;
  }
  TemporaryFolder folder;
};

TEST_P(Shell, prints_what_the_transcript_has) {
  Transcript::replay(GOLDEN "/zopctl/" + std::string(GetParam()),
                     [this](const std::string& command) { return run(command); });
}

INSTANTIATE_TEST_SUITE_P(Tools, Shell,
                         testing::Values("status", "verbs", "bad-usage", "doctor", "capture",
                                         "redacted-capture", "html", "pins", "report", "exception",
                                         "firmware", "firmware-failures", "dump", "parse-log",
                                         "documents", "simulator"),
                         [](const auto& name) {
                           std::string text = name.param;
                           std::ranges::replace(text, '-', '_');
                           return text;
                         });
