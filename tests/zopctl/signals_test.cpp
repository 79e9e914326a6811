// Signals, and when zopctl ends. An update ends as long as nothing is written; from then on a first
// signal is ignored, and so is the loss of the terminal.
#include "tests/support/program.h"
#include "tests/support/temporary_folder.h"

namespace fs = std::filesystem;

class ZopctlSignals : public testing::Test {
 protected:
  ZopctlSignals() {
    for (const char* name : {"QSC6270.ram", "partition.mbn", "dbl.mbn", "fsbl.mbn", "osbl.mbn",
                             "amss.mbn", "version_info"}) {
      folder.write(name, "Q71XEB22.001" + std::string(1000, '\0'));
    }
    fs::create_directory(scratch);
  }
  std::string scenario(const std::string& toml) {
    return "--sim=" + folder.write(std::to_string(++scenarios) + ".toml", toml);
  }
  std::vector<std::string> update(const std::string& fault) {
    return {"env",         "TMPDIR=" + scratch,
            ZOPCTL,        scenario("[[fault]]\nswitch = \"" + fault + "\"\n"),
            "--sim-speed", "200",
            "firmware",    "update",
            "--yes",       folder.path.string()};
  }
  TemporaryFolder folder;
  int scenarios = 0;
  std::string scratch = folder / "scratch";
};

TEST_F(ZopctlSignals, end_what_may_end) {
  const char* no_card = "[sim]\nstatus = \"not-ready\"\n";
  struct {
    std::vector<std::string> words;
    const char* until;
    int signal;
    int exit_code;
    const char* text;
  } rows[] = {
      {{ZOPCTL, scenario(no_card), "status", "--log", "all"}, "SIM status=4", SIGINT, 130, ""},
      {{ZOPCTL, scenario(no_card), "status", "--log", "all"}, "SIM status=4", SIGTERM, 143, ""},
      {{ZOPCTL, "--sim", "bars", "--watch", "3600", "--json"}, "\"problems\":[]}", SIGINT, 130, ""},
      {{ZOPCTL, "--sim", "cells", "--watch", "3600", "--json"},
       "\"problems\":[]}",
       SIGINT,
       130,
       ""},
      {update("delay=120000:request=dmss_write"), "loading the programmer", SIGINT, 130,
       "nothing was written"},
      {update("delay=120000:request=stream_write"), "writing the images", SIGINT, 0,
       "the update continues"},
      {update("delay=120000:request=stream_write"), "writing the images", SIGQUIT, 0,
       "the update continues"},
      {update("delay=120000:request=stream_write"), "writing the images", SIGHUP, 0, "done: "},
  };
  for (auto& row : rows) {
    Program program(row.words);
    std::string output = program.lines_until(row.until);
    program.send(row.signal);
    output += program.rest();  // until the simulator has ended too
    EXPECT_EQ(program.exit_code(), row.exit_code) << output;
    EXPECT_TRUE(contains(output, row.text)) << output;
    EXPECT_EQ(contains(output, "the update continues"), row.signal != SIGHUP && row.exit_code == 0)
        << output;
  }
}

TEST_F(ZopctlSignals, second_one_ends_an_update_at_once_and_leaves_no_files) {
  Program program(update("delay=3600000:request=stream_write"));
  program.lines_until("writing the images");
  EXPECT_FALSE(fs::is_empty(scratch));
  program.send(SIGINT);
  program.lines_until("the update continues");
  program.send(SIGINT);
  std::string last = program.rest();
  EXPECT_TRUE(contains(last, "half written")) << last;
  EXPECT_EQ(program.exit_code(), 3);
  EXPECT_TRUE(fs::is_empty(scratch));
}
