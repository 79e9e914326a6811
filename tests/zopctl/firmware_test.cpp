// zopctl firmware and dump against simulated modems: the output for people and for programs, the
// resulting firmware and files, and the exit code after each failure.
#include <nlohmann/json.hpp>

#include "tests/zopctl/run_zopctl.h"

namespace fs = std::filesystem;
using Json = nlohmann::json;

class ZopctlFirmware : public testing::Test {
 protected:
  ZopctlFirmware() {
    folder.write("QSC6270.ram", std::string(5000, 'r'));
    folder.write("partition.mbn", std::string(600, 'w'));
    for (const char* name : {"dbl.mbn", "fsbl.mbn", "osbl.mbn"})
      folder.write(name, std::string(3000, 'b'));
    folder.write("amss.mbn", std::string(40'000, 'a') + "Q71XEB22.001" + std::string(500, '\0'));
    folder.write("version_info", "Q71XEB22.001\n");
  }
  std::string update(const std::string& toml) {
    return simulated(toml) + " --sim-speed 200 firmware update " + folder.path.string() +
           " < /dev/null";
  }
  Program slow_update(const std::string& delay) {
    fs::create_directory(scratch);
    return Program({"env", "TMPDIR=" + scratch, ZOPCTL, simulated(fault(delay)), "--sim-speed",
                    "200", "firmware", "update", "--yes", folder.path.string()});
  }
  TemporaryFolder folder;
  std::string scratch = folder / "scratch";
};

static std::vector<Json> events_of(const std::string& output, const std::string& name) {
  std::vector<Json> found;
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) {
    Json event = Json::parse(line, nullptr, false);
    if (event.is_object() && event["event"] == name) found.push_back(event);
  }
  return found;
}

TEST_F(ZopctlFirmware, info_lists_missing_and_bad_images) {
  std::string info = "firmware info " + folder.path.string();
  expect_runs({{info, 0, "Q71XEB22.001"}, {info, 0, "By an update       55.1 kB"}});
  folder.write("osbl.mbn", "");
  folder.write("partition.mbn", std::string(2049, 'p'));
  fs::remove(folder / "amss.mbn");
  fs::remove(folder / "version_info");
  expect_runs({{info, 1, "osbl.mbn       -  (empty)"},
               {info, 1, "partition.mbn  -  (larger than"},
               {info, 1, "amss.mbn       -  (missing)"},
               {info, 1, "no version_info"},
               {update(""), 1, "the modem was not touched"}});
}

TEST_F(ZopctlFirmware, update_installs_the_new_version) {
  Outcome run = zopctl(update("[device]\nbackup_value = 0\n"));
  EXPECT_EQ(run.exit_code, 0) << run.output;
  expect_in_order(run.output,
                  {"runs Q71XEB21.004", "switching", "loading the programmer", "erasing",
                   "writing the images", "100 %  amss.mbn 100 %", "backed up", "rebuilds",
                   "restored", "done: the modem runs Q71XEB22.001"});
}

TEST_F(ZopctlFirmware, update_reports_events_as_json) {
  std::string same = "[device]\npartition = \"" + std::string(1200, '7') + "\"\n";  // 'w' is 0x77
  Outcome run = zopctl("--json " + update(same) + " --modem-only");
  EXPECT_EQ(run.exit_code, 0) << run.output;
  std::vector<Json> progress = events_of(run.output, "progress");
  ASSERT_FALSE(progress.empty()) << run.output;
  EXPECT_EQ(progress.back()["part"], "amss.mbn");
  EXPECT_EQ(progress.back()["done"], 5000 + 600 + 40'512);  // no boot loaders
  EXPECT_EQ(progress.back()["done"], progress.back()["total"]);
  ASSERT_EQ(events_of(run.output, "done").size(), 1u) << run.output;
  EXPECT_EQ(events_of(run.output, "done")[0]["version"], "Q71XEB22.001");
}

TEST_F(ZopctlFirmware, failure_reports_the_state_of_the_modem) {
  struct {
    const char* fault;
    int exit_code;
    const char* text;
  } rows[] = {
      {"hang-up=2:request=dmss_write", 1, "nothing was written"},
      {"error=19:request=download_mode", 1, "not in download mode"},
      {"error=19:request=stream_security", 1, "the programmer in the modem's RAM does not answer"},
      {"error=19:request=stream_partition", 3, "the modem did not accept the partition table"},
      {"wrong-echo=1:request=stream_open", 3, "writing failed"},
      {"hang-up=2:request=stream_write,skip=5", 3, "until then it has no usable firmware"},
      {"error=19:request=backup_end", 4, "the firmware is written"},
  };
  for (auto& row : rows) expect_runs({{update(fault(row.fault)), row.exit_code, row.text}});
  expect_runs({{update("[device]\ncrashed = true\n"), 0, "already in download mode"}});
  Outcome run = zopctl("--json " + update(fault(rows[0].fault)));
  ASSERT_EQ(events_of(run.output, "failed").size(), 1u) << run.output;
  EXPECT_EQ(events_of(run.output, "failed")[0]["exit_code"], 1);
}

// A signal ends the update as long as nothing is written; from then on it is ignored, and so is the
// loss of the terminal.
TEST_F(ZopctlFirmware, update_interrupted_by_a_signal) {
  struct {
    const char* slow;
    const char* until;
    int signal;
    int exit_code;
    const char* text;
  } rows[] = {
      {"delay=4000:request=dmss_write", "loading the programmer", SIGINT, 130,
       "nothing was written"},
      {"delay=2000:request=stream_write", "writing the images", SIGINT, 0, "the update continues"},
      {"delay=2000:request=stream_write", "writing the images", SIGHUP, 0, "done: "},
  };
  for (auto& row : rows) {
    Program program = slow_update(row.slow);
    std::string output = program.lines_until(row.until);
    program.send(row.signal);
    output += program.rest();
    EXPECT_EQ(program.exit_code(), row.exit_code) << output;
    EXPECT_TRUE(contains(output, row.text)) << output;
    EXPECT_EQ(contains(output, "the update continues"), row.signal == SIGINT && row.exit_code == 0)
        << output;
  }
}

TEST_F(ZopctlFirmware, second_signal_ends_it_at_once_and_leaves_no_files) {
  Program program = slow_update("delay=200000:request=stream_write");
  program.lines_until("writing the images");
  EXPECT_FALSE(fs::is_empty(scratch));
  program.send(SIGINT);
  program.lines_until("the update continues");
  EXPECT_EQ(program.end(SIGINT), 130);
  EXPECT_TRUE(fs::is_empty(scratch));
}

TEST_F(ZopctlFirmware, update_continues_when_its_output_is_closed) {
  shell("(" ZOPCTL " --sim --sim-speed 200 firmware update " + folder.path.string() +
        " < /dev/null; echo $? > " + folder / "code" + ") | head -n 1");
  EXPECT_EQ(folder.read("code"), "0\n");
}

TEST_F(ZopctlFirmware, dump_saves_every_region) {
  Outcome run = zopctl("--sim=crashed --json dump -o " + folder / "d");
  ASSERT_EQ(run.exit_code, 0) << run.output;
  std::vector<Json> summary = events_of(run.output, "summary");
  ASSERT_EQ(summary.size(), 1u) << run.output;
  ASSERT_EQ(summary[0]["files"].size(), 3u);
  for (const Json& file : summary[0]["files"]) {
    std::string path = folder / "d/" + std::string(file["file"]);
    EXPECT_EQ(fs::file_size(path), file["size"]);
    EXPECT_EQ(file["sha256"], shell("sha256sum < " + path).output.substr(0, 64));
  }
  EXPECT_EQ(events_of(run.output, "progress").back()["percent"], 100);
}

TEST_F(ZopctlFirmware, dump_incomplete_or_interrupted) {
  auto dump = [&](const std::string& memory) {
    return simulated("[device]\ncrashed = true\nmemory = [" + memory + "]\n" +
                     fault("hang-up=9:request=dmss_read,skip=2")) +
           " dump -o " + folder / "d";
  };
  expect_runs({
      {"--sim dump -o " + folder / "d", 1, "the modem offers no memory"},
      {dump("{ name = \"../x\\u001B\", length = 10 }, { name = \"a\", length = 2000 }"), 1,
       "/a  2.0 kB\nzopctl: the dump is incomplete, left out: no file name: \"../x\\x1B\""},
      {dump("{ name = \"b\", length = 9000 }"), 1,
       "/b  2.0 kB, incomplete\nzopctl: the dump failed"},
  });
}
