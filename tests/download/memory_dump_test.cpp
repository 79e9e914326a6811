// The memory dump: files match the modem's memory, a hostile list writes nothing outside the
// directory, and existing files are not overwritten.
#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstring>

#include "tests/download/download_fixture.h"

using namespace std::chrono_literals;
using namespace test;

class MemoryDump : public DownloadTest {
 protected:
  void SetUp() override {
    setenv("TZ", "UTC", 1);
    tzset();
    DownloadTest::SetUp();
    scenario.model.device.crashed = 1;
    fs::current_path(folder);
  }
  void TearDown() override {
    DownloadTest::TearDown();
    fs::current_path(before);
  }
  void region(uint32_t base, size_t size, const std::string& name) {
    regions.push_back({1, base, size, {}, "a region", name});
  }
  // Dumps a modem with these regions.
  void dump(const std::string& fault = "") {
    scenario.model.device.memory = regions;
    start_modem(fault);
    dump_again();
  }
  void dump_again() {
    run([] {
      EXPECT_EQ(mem_dump_process(), 1);
      diag_close();
      return 1;
    });
  }
  static Bytes content(const sim::MemoryRegion& region) { return region.read(0, region.length); }
  Bytes content(const fs::path& name) {
    std::ifstream in(folder / DIRECTORY / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  bool is_whole() const { return output.ends_with("DUMP_MODE: PERCENT=100\n"); }
  static inline const char DIRECTORY[] = "dump_07242010_1933";

  fs::path before = fs::current_path();
  std::vector<sim::MemoryRegion> regions;
};

TEST_F(MemoryDump, saves_each_region_and_keeps_what_is_there) {
  region(0x1000, 5000, "ram.bin");
  region(0x80000000, 2048, "rom.bin");
  dump();
  EXPECT_TRUE(is_whole());
  Bytes first = content(regions[0]);
  EXPECT_EQ(to_hex(std::span(first).first(8)), "00 00 10 00 00 00 10 04");
  regions[0].fill = 0x55;  // another crash, within the same minute
  dump();
  EXPECT_EQ(output,
            "DUMP_MODE: PERCENT=0\n"
            "DUMP_MODE: FILE=dump_07242010_1933/ram.bin.2\n"
            "DUMP_MODE: FILE=dump_07242010_1933/rom.bin.2\n"
            "DUMP_MODE: PERCENT=20\nDUMP_MODE: PERCENT=40\nDUMP_MODE: PERCENT=61\n"
            "DUMP_MODE: PERCENT=81\nDUMP_MODE: PERCENT=100\n");
  EXPECT_EQ(content("ram.bin"), first);
  EXPECT_EQ(content("ram.bin.2"), content(regions[0]));
  EXPECT_EQ(content("rom.bin.2"), content(regions[1]));
  EXPECT_EQ(FW_DL_STATUS, 100);
}

TEST_F(MemoryDump, of_a_modem_that_has_just_crashed) {
  scenario.model.device.crashed = 0;
  scenario.model.device.crash_dump = 1;
  start_modem();
  ASSERT_EQ(zop_open(DEVICE), 0u);
  EXPECT_EQ(zop_set_error_fatal(), ZOP_SUCCESS);
  zop_close();
  world.advance(5s);
  dump_again();
  EXPECT_TRUE(is_whole());
  EXPECT_EQ(content("ram.bin"), content(scenario.model.device.memory[0]));
}

TEST_F(MemoryDump, sizes_around_the_chunk_and_names_that_come_again) {
  const size_t sizes[] = {1023, 0, 1, 1024, 1025, 100'000};
  const char* const names[] = {"r", "r", "r.2", "x", "r", "x"};
  const char* const files[] = {"r", "r.2", "r.2.2", "x", "r.3", "x.2"};
  for (uint32_t i = 0; i < 6; ++i) region(0xFFFF0000u - i * 200'000, sizes[i], names[i]);
  world.file_calls = {Accept{1}, Fail{EINTR}, Accept{2}};
  dump();
  EXPECT_TRUE(is_whole());
  for (uint32_t i = 0; i < 6; ++i) EXPECT_EQ(content(files[i]), content(regions[i])) << files[i];
}

TEST_F(MemoryDump, names_that_lead_elsewhere_are_left_out) {
  for (std::string name : {"", ".", "..", "/etc/x", "../x", "a/b", "x\x1b\\\x7f~ /"}) {
    region(0, 10, name);
  }
  std::string longest(108, 'x');  // 127 characters with the directory
  region(0x100, 10, longest + "x");
  region(0x2000, 5000, longest);
  dump();
  const std::string LEFT_OUT = "DUMP_MODE: left out, ", PERCENT = "DUMP_MODE: PERCENT=";
  std::string expected = PERCENT + "0\n";
  for (const char* name : {"", ".", "..", "/etc/x", "../x", "a/b", "x\\x1B\\x5C\\x7F~ /"}) {
    expected += LEFT_OUT + "no file name: \"" + name + "\"\n";
  }
  expected += LEFT_OUT + "file name too long: \"" + longest + "x\"\n";
  expected += "DUMP_MODE: FILE=dump_07242010_1933/" + longest + "\n";
  for (const char* percent : {"20", "40", "61", "81"}) expected += PERCENT + percent + "\n";
  EXPECT_EQ(output, expected);
  EXPECT_EQ(content(longest), content(regions.back()));
  EXPECT_EQ(entries_of("."), 1u);
  EXPECT_EQ(entries_of(DIRECTORY), 1u);
}

TEST_F(MemoryDump, more_regions_than_the_table_holds) {
  for (uint32_t i = 0; i < 21; ++i) region(i * 100, 10, std::to_string(i));
  dump();
  EXPECT_TRUE(prints("DUMP_MODE: left out, all regions after the 20th\n"));
  EXPECT_FALSE(is_whole());
  EXPECT_EQ(entries_of(DIRECTORY), 20u);
}

// A host's own files: the second region is not wanted, the third is there up to its byte 2048.
TEST_F(MemoryDump, into_files_of_the_host) {
  for (uint32_t i = 0; i < 24; ++i) region(i * 5000, 5000, "r" + std::to_string(i));
  std::string offered;
  auto open_file = [](const mem_dump_region* region, uint32_t* done, void* context) {
    *static_cast<std::string*>(context) += std::string(region->name) + " ";
    if (region->base == 5000) return -1;
    if (region->base == 10'000) *done = 2048;
    EXPECT_EQ(region->length, 5000u);
    return open(region->name, O_WRONLY | O_CREAT, 0600);
  };
  mem_dump_set_files(open_file, &offered);
  dump();
  mem_dump_set_files(nullptr, nullptr);
  EXPECT_TRUE(offered.starts_with("r0 r1 r2 r3 ") && offered.ends_with("r22 r23 ")) << offered;
  EXPECT_FALSE(is_whole());  // the table holds 20
  EXPECT_EQ(entries_of("."), 23u);
  for (uint32_t i : {0u, 2u, 3u, 20u, 21u, 22u}) {
    std::ifstream in("r" + std::to_string(i), std::ios::binary);
    Bytes saved((std::istreambuf_iterator<char>(in)), {}), expected = content(regions[i]);
    if (i == 2) std::fill_n(expected.begin(), 2048, uint8_t{0});
    EXPECT_EQ(saved, i <= 20 ? expected : Bytes()) << i;
  }
  EXPECT_EQ(asked.find("dmss_read"), asked.find("dmss_regions") + strlen("dmss_regions "));
  dump();
  EXPECT_TRUE(prints("DUMP_MODE: FILE=")) << output;
}

TEST_F(MemoryDump, faults_of_the_line) {
  struct {
    const char* fault;
    bool saved;
  } rows[] = {
      {"silence:request=dmss_regions,count=9", true},
      {"silence:request=dmss_regions,count=10", false},
      {"wrong-echo:request=dmss_regions", false},
      {"shorten=2:request=dmss_regions,count=1", true},
      {"shorten=9:request=dmss_regions,count=1", true},
      {"hang-up:request=dmss_regions", false},
      {"silence:request=dmss_read,skip=2,count=30", true},
      {"bad-crc:request=dmss_read,skip=1,count=3", true},
      {"wrong-echo=2:request=dmss_read,skip=1,count=1", true},  // another address
      {"shorten=7:request=dmss_read,count=1", true},            // no data
      {"shorten=8:request=dmss_read,count=1", true},            // a byte of it
      {"delay=4500:request=dmss_read", true},                   // late replies to earlier requests
      {"hang-up:request=dmss_read,skip=2", false},
  };
  region(0x1000, 5000, "r");
  for (auto& row : rows) {
    SCOPED_TRACE(row.fault);
    dump(row.fault);
    EXPECT_EQ(is_whole(), row.saved);
    bool whole = false;  // time-outs may push it into the next minute's directory
    for (auto& directory : fs::directory_iterator(folder)) {
      whole = content(directory.path() / "r") == content(regions[0]);
      fs::remove_all(directory);
    }
    EXPECT_EQ(whole, row.saved);
  }
  dump("shorten=20:request=dmss_regions");
  EXPECT_TRUE(output.ends_with("DUMP_MODE: the list of regions is damaged, refused\n"));
}

// A full disk, simulated by a file size limit: reported once, and the failed write is not counted.
TEST_F(MemoryDump, a_full_disk_ends_it) {
  region(0x1000, 5000, "r\n");
  rlimit before_test;
  getrlimit(RLIMIT_FSIZE, &before_test);
  signal(SIGXFSZ, SIG_IGN);
  rlimit small = {2048, before_test.rlim_max};
  setrlimit(RLIMIT_FSIZE, &small);
  dump();
  setrlimit(RLIMIT_FSIZE, &before_test);
  EXPECT_TRUE(
      output.ends_with("PERCENT=40\nDUMP_MODE: can't write dump_07242010_1933/r\\x0A: "
                       "File too large\n"))
      << output;
  EXPECT_EQ(content("r\n").size(), 2048u);
}

// The dump uses only this user's directory and files; it goes on without a region that is blocked.
TEST_F(MemoryDump, what_is_in_the_way) {
  region(0x1000, 5000, "r");
  region(0x5000, 10, "s");
  fs::create_directory(DIRECTORY);
  std::ofstream("target") << "behind a link";
  auto foreign = [](const fs::path& path) { return chown(path.c_str(), 1, 1) == 0; };
  for (int way = 0; way < 3; ++way) {
    fs::path file = fs::path(DIRECTORY) / "r";
    if (way == 0) fs::create_symlink(folder / "target", file);
    if (way == 1) fs::create_directory(file);
    if (way == 2) std::ofstream(file) << "not this user's";
    if (way == 2 && !foreign(file)) break;  // only the superuser can change the owner
    dump();
    EXPECT_TRUE(
        prints("DUMP_MODE: left out, something else is in its way: \"dump_07242010_1933/r\"\n"));
    EXPECT_FALSE(is_whole());
    EXPECT_EQ(content(way == 0 ? "s" : "s." + std::to_string(way + 1)), content(regions[1]));
    fs::remove(file);
  }
  const char REFUSED[] = "DUMP_MODE: can't use dump_07242010_1933: ";
  if (foreign(DIRECTORY)) {
    dump();
    EXPECT_TRUE(output.ends_with(REFUSED + std::string("it belongs to another user\n"))) << output;
  }
  fs::remove_all(DIRECTORY);
  fs::create_directory(folder / "elsewhere");
  fs::create_symlink("elsewhere", DIRECTORY);
  dump();
  EXPECT_TRUE(output.ends_with(REFUSED + std::string("Not a directory\n"))) << output;
  EXPECT_TRUE(fs::is_empty("elsewhere"));
  EXPECT_EQ(fs::file_size("target"), 13u);
}

TEST_F(MemoryDump, nothing_to_begin_with) {
  world.malloc_failures = 1;
  dump();
  world.malloc_failures = 1;
  dump();
  EXPECT_EQ(output, "");  // still 0 percent, which is not printed again
  fs::remove(folder);     // nothing can be created in a removed directory
  dump();
  EXPECT_EQ(output, "DUMP_MODE: can't create direcory\n");
  world.missing[DEVICE] = ENOENT;
  dump();
  EXPECT_EQ(output, "DUMP_MODE: can't open the port\n");
}
