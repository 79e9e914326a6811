// zopctl firmware and dump against simulated modems: what a person and a program are told, what the
// modem runs and the disk holds in the end, and what the exit code says of a modem that failed.
#include <nlohmann/json.hpp>

#include <filesystem>

#include "tests/support/program.h"
#include "tests/zopctl/run_zopctl.h"

namespace fs = std::filesystem;
using Json = nlohmann::json;

static fs::path new_folder() {
  std::string name = testing::TempDir() + "firmware-XXXXXX";
  return mkdtemp(name.data());
}

class ZopctlFirmware : public testing::Test {
 protected:
  void SetUp() override {
    write("QSC6270.ram", std::string(5000, 'r'));
    write("partition.mbn", std::string(600, 'w'));
    for (const char* name : {"dbl.mbn", "fsbl.mbn", "osbl.mbn"})
      write(name, std::string(3000, 'b'));
    write("amss.mbn", std::string(40'000, 'a') + "Q71XEB22.001" + std::string(500, '\0'));
    write("version_info", "Q71XEB22.001\n");
  }
  void TearDown() override { fs::remove_all(folder); }
  void write(const std::string& name, const std::string& content) {
    std::ofstream(folder / name, std::ios::binary) << content;
  }
  Outcome update(const std::string& toml, const std::string& options = "") {
    std::string path = scenario("firmware", toml);
    return zopctl("--sim=" + path + " --sim-speed 200 firmware update " + options + " " +
                  folder.string() + " < /dev/null");
  }
  fs::path folder = new_folder();
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

static std::string fault(const std::string& text) {
  return "[[fault]]\nswitch = \"" + text + "\"\n";
}

TEST_F(ZopctlFirmware, info_finds_what_an_image_set_lacks) {
  Outcome good = zopctl("firmware info " + folder.string());
  EXPECT_EQ(good.exit_code, 0) << good.output;
  EXPECT_TRUE(contains(good.output, "Q71XEB22.001")) << good.output;
  EXPECT_TRUE(contains(good.output, "By an update       55.1 kB")) << good.output;
  write("osbl.mbn", "");
  write("partition.mbn", std::string(2049, 'p'));
  fs::remove(folder / "amss.mbn");
  fs::remove(folder / "version_info");
  Outcome bad = zopctl("firmware info " + folder.string());
  EXPECT_EQ(bad.exit_code, 1);
  for (const char* text : {"osbl.mbn       -  (empty)", "partition.mbn  -  (larger than",
                           "amss.mbn       -  (missing)", "no version_info"}) {
    EXPECT_TRUE(contains(bad.output, text)) << text << "\n" << bad.output;
  }
  Outcome refused = update("");
  EXPECT_EQ(refused.exit_code, 1);
  EXPECT_TRUE(contains(refused.output, "the modem was not touched")) << refused.output;
}

TEST_F(ZopctlFirmware, update_leads_to_the_new_version) {
  Outcome run = update("[device]\nbackup_value = 0\n");
  EXPECT_EQ(run.exit_code, 0) << run.output;
  size_t at = 0;
  for (const char* text : {"runs Q71XEB21.004", "switching", "loading the programmer", "erasing",
                           "writing the images", "100 %  amss.mbn 100 %", "backed up", "rebuilds",
                           "restored", "done: the modem runs Q71XEB22.001"}) {
    at = run.output.find(text, at);
    ASSERT_NE(at, std::string::npos) << text << "\n" << run.output;
  }
}

TEST_F(ZopctlFirmware, update_tells_programs_by_events) {
  std::string same = "[device]\npartition = \"" + std::string(1200, '7') + "\"\n";  // 'w' is 0x77
  Outcome run = update(same, "--json --modem-only");
  EXPECT_EQ(run.exit_code, 0) << run.output;
  std::vector<Json> progress = events_of(run.output, "progress");
  ASSERT_FALSE(progress.empty()) << run.output;
  EXPECT_EQ(progress.back()["part"], "amss.mbn");
  EXPECT_EQ(progress.back()["done"], 5000 + 600 + 40'512);  // no boot loaders
  EXPECT_EQ(progress.back()["done"], progress.back()["total"]);
  ASSERT_EQ(events_of(run.output, "done").size(), 1u) << run.output;
  EXPECT_EQ(events_of(run.output, "done")[0]["version"], "Q71XEB22.001");
}

TEST_F(ZopctlFirmware, failures_say_what_the_modem_is_left_with) {
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
  for (auto& row : rows) {
    Outcome run = update(fault(row.fault), "--json");
    EXPECT_EQ(run.exit_code, row.exit_code) << row.fault << "\n" << run.output;
    EXPECT_TRUE(contains(run.output, row.text)) << row.fault << "\n" << run.output;
    ASSERT_EQ(events_of(run.output, "failed").size(), 1u) << run.output;
    EXPECT_EQ(events_of(run.output, "failed")[0]["exit_code"], row.exit_code);
  }
}

TEST_F(ZopctlFirmware, a_modem_left_in_its_boot_rom_is_updated) {
  Outcome run = update("[device]\ncrashed = true\n");
  EXPECT_EQ(run.exit_code, 0) << run.output;
  EXPECT_TRUE(contains(run.output, "already in download mode")) << run.output;
}

// A signal cuts the line while nothing is written yet, and is put off from then on; a terminal that
// is gone is nothing then.
TEST_F(ZopctlFirmware, interrupted) {
  struct {
    const char* slow;
    const char* until;
    int signal;
    int exit_code;
    const char* text;
  } rows[] = {
      {"delay=4000:request=dmss_write", "loading the programmer", SIGINT, 130,
       "nothing was written"},
      {"delay=4000:request=stream_write", "writing the images", SIGINT, 0, "the update continues"},
      {"delay=4000:request=stream_write", "writing the images", SIGHUP, 0, "done: "},
  };
  for (auto& row : rows) {
    Program program({ZOPCTL, "--sim=" + scenario("firmware", fault(row.slow)), "--sim-speed", "200",
                     "firmware", "update", "--yes", folder.string()});
    std::string output, line;
    do output += (line = program.line()) + "\n";
    while (!line.empty() && !contains(line, row.until));
    program.end(row.signal);
    while (!(line = program.line()).empty()) output += line + "\n";
    EXPECT_EQ(program.exit_code(), row.exit_code) << output;
    EXPECT_TRUE(contains(output, row.text)) << output;
  }
}

TEST_F(ZopctlFirmware, second_signal_ends_it_at_once_and_nothing_stays) {
  fs::path scratch = folder / "scratch";
  fs::create_directory(scratch);
  std::string slow = scenario("firmware", fault("delay=20000:request=stream_write"));
  Program program({"env", "TMPDIR=" + scratch.string(), ZOPCTL, "--sim=" + slow, "--sim-speed",
                   "20", "firmware", "update", "--yes", folder.string()});
  std::string line;
  do line = program.line();
  while (!line.empty() && !contains(line, "writing the images"));
  EXPECT_FALSE(fs::is_empty(scratch));
  program.end(SIGINT);
  while (!line.empty() && !contains(line, "the update continues")) line = program.line();
  program.end(SIGINT);
  EXPECT_EQ(program.exit_code(), 130);
  EXPECT_TRUE(fs::is_empty(scratch));
}

TEST_F(ZopctlFirmware, update_goes_on_when_nobody_reads_of_it) {
  std::string code = folder / "code";
  std::string command = "(" ZOPCTL " --sim --sim-speed 200 firmware update " + folder.string() +
                        " < /dev/null; echo $? > " + code + ") | head -n 1 > /dev/null";
  ASSERT_EQ(system(command.c_str()), 0);
  std::ifstream file(code);
  int exit_code = -1;
  file >> exit_code;
  EXPECT_EQ(exit_code, 0);
}

TEST_F(ZopctlFirmware, dump_saves_every_region) {
  Outcome run = zopctl("--sim=crashed --json dump -o " + (folder / "d").string());
  ASSERT_EQ(run.exit_code, 0) << run.output;
  std::vector<Json> summary = events_of(run.output, "summary");
  ASSERT_EQ(summary.size(), 1u) << run.output;
  ASSERT_EQ(summary[0]["files"].size(), 3u);
  for (const Json& file : summary[0]["files"]) {
    fs::path path = folder / "d" / std::string(file["file"]);
    EXPECT_EQ(fs::file_size(path), file["size"]);
    FILE* sum = popen(("sha256sum < " + path.string()).c_str(), "r");
    char text[65] = "";
    ASSERT_EQ(fread(text, 1, 64, sum), 64u);
    pclose(sum);
    EXPECT_EQ(file["sha256"], text);
  }
  EXPECT_EQ(events_of(run.output, "progress").back()["percent"], 100);
}

TEST_F(ZopctlFirmware, dump_incomplete_or_broken_off) {
  struct {
    const char* toml;
    const char* text;
  } rows[] = {
      {"", "the modem offers no memory"},
      {"[device]\ncrashed = true\nmemory = [{ name = \"../x\\u001B\", length = 10 },"
       "{ name = \"a\", length = 2000 }]\n",
       "/a  2.0 kB\nzopctl: the dump is incomplete, left out: no file name: \"../x\\x1B\""},
      {"[device]\ncrashed = true\nmemory = [{ name = \"a\", length = 9000 }]\n"
       "[[fault]]\nswitch = \"hang-up=9:request=dmss_read,skip=2\"\n",
       "/a  2.0 kB, incomplete\nzopctl: the dump failed"},
  };
  for (auto& row : rows) {
    fs::path place = new_folder();
    Outcome run = zopctl("--sim=" + scenario("dump", row.toml) + " dump -o " + place.string());
    EXPECT_EQ(run.exit_code, 1) << run.output;
    EXPECT_TRUE(contains(run.output, row.text)) << run.output;
    fs::remove_all(place);
  }
}
