// zopctl and zop-modem-sim as a user runs them, by transcripts of a shell in an empty folder: every
// byte that they print, and their exit codes.
#include "tests/support/transcript.h"

#include "tests/support/program.h"
#include "tests/support/temporary_folder.h"

namespace {
class Shell : public test::Session {
 public:
  Shell() {
    setenv("PATH", (PROGRAMS ":" + std::string(getenv("PATH"))).c_str(), 1);
    setenv("LC_ALL", "C.UTF-8", 1);
    setenv("TZ", "UTC", 1);
    for (const char* name : {"ZOPCTL_LOCK_DIR", "ZOPCTL_STATE_DIR"})
      setenv(name, folder_.path.c_str(), 1);
    setenv("DISSECTOR", PROGRAMS "/zop_diag.lua", 1);
    setenv("ROAD", TRANSCRIPTS "/zopctl/update_road.sh", 1);
  }
  // The files of a simulated device are gone, however zopctl has ended.
  ~Shell() override { EXPECT_TRUE(std::filesystem::is_empty(temporary_.path)); }
  std::string answer(const std::string& command) override {
    Outcome done = shell("cd " + folder_.path.string() + " < /dev/null; export TMPDIR=" +
                         temporary_.path.string() + "; { " + command + "\n}");
    if (done.exit_code != 0) done.output += "[exit " + std::to_string(done.exit_code) + "]\n";
    return done.output;
  }

 private:
  TemporaryFolder folder_, temporary_;
};

const bool REGISTERED =
    test::register_transcripts(TRANSCRIPTS "/zopctl", [] { return std::make_unique<Shell>(); });
}  // namespace
