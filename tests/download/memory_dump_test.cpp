// The memory dump: files as the modem's memory is, and nothing of a hostile list outside the
// directory.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "download/image_set.h"
#include "include/modem_download.h"
#include "link/serial_port.h"
#include "tests/support/fresh_link.h"
#include "tests/download/download_modem.h"

using namespace test;
namespace fs = std::filesystem;

class MemoryDump : public testing::Test {
 protected:
  void SetUp() override {
    setenv("TZ", "UTC", 1);
    tzset();
    fresh_link();
    world.far_end = &modem;
    fs::current_path(folder);
  }
  void TearDown() override {
    diag_close();
    fs::current_path(before);
    fs::remove_all(folder);
  }
  static Bytes pattern(size_t size) {
    Bytes bytes(size);
    for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<uint8_t>(i * 7 + (i >> 8));
    return bytes;
  }
  void region(uint32_t base, size_t size, const std::string& name) {
    modem.rom.regions.push_back({1, base, pattern(size), "a region", name});
  }
  std::string run() {
    testing::internal::CaptureStdout();
    EXPECT_EQ(mem_dump_process(), 1);
    EXPECT_EQ(dload_tbuf, nullptr);
    EXPECT_EQ(dload_rbuf, nullptr);
    return testing::internal::GetCapturedStdout();
  }
  static Bytes content(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  static inline const char DIRECTORY[] = "dump_07242010_1933";

  fs::path before = fs::current_path();
  fs::path folder = [] {
    std::string name = testing::TempDir() + "dump-XXXXXX";
    return fs::path(mkdtemp(name.data()));
  }();
  World world;
  DownloadModem modem;
};

TEST_F(MemoryDump, two_regions_in_a_directory_named_by_the_time) {
  region(0x1000, 5000, "ram.bin");
  region(0x80000000, 1024, "rom.bin");
  EXPECT_EQ(run(),
            "DUMP_MODE: PERCENT=0\n"
            "DUMP_MODE: FILE=dump_07242010_1933/ram.bin\n"
            "DUMP_MODE: FILE=dump_07242010_1933/rom.bin\n"
            "DUMP_MODE: PERCENT=20\nDUMP_MODE: PERCENT=40\nDUMP_MODE: PERCENT=61\n"
            "DUMP_MODE: PERCENT=81\nDUMP_MODE: PERCENT=100\n");
  EXPECT_EQ(content(folder / DIRECTORY / "ram.bin"), pattern(5000));
  EXPECT_EQ(content(folder / DIRECTORY / "rom.bin"), pattern(1024));
  EXPECT_EQ(FW_DL_STATUS, 100);
  // Again within the same minute: the directory is used again, and nothing old stays in a file.
  modem.rom.regions[0].content.resize(10);
  EXPECT_NE(run().find("PERCENT=100"), std::string::npos);
  EXPECT_EQ(content(folder / DIRECTORY / "ram.bin"), pattern(10));
}

TEST_F(MemoryDump, sizes_around_the_chunk) {
  for (size_t size : std::initializer_list<size_t>{0, 1, 1023, 1024, 1025, 100000}) {
    modem.rom.regions.clear();
    region(0xFFFF0000u - 200'000, size, "r");
    EXPECT_NE(run().find("PERCENT=100"), std::string::npos) << size;
    EXPECT_EQ(content(folder / DIRECTORY / "r"), pattern(size)) << size;
  }
}

TEST_F(MemoryDump, no_name_leads_out_of_the_directory) {
  for (std::string name : {"", ".", "..", "/etc/x", "../x", "a/b", "x\x1b[2J/"}) {
    modem.rom.regions.clear();
    region(0, 10, "good");
    region(0, 10, name);
    std::string output = run();
    EXPECT_NE(output.find("DUMP_MODE: no file name: \""), std::string::npos) << name;
    EXPECT_EQ(output.find('\x1b'), std::string::npos);
    EXPECT_EQ(output.find("PERCENT=100"), std::string::npos);
    EXPECT_TRUE(fs::is_empty(folder)) << name;
  }
  modem.rom.regions.clear();
  region(0, 10, std::string(200, 'x'));
  EXPECT_NE(run().find("file name too long"), std::string::npos);
}

TEST_F(MemoryDump, regions_of_one_name_are_both_kept) {
  region(0x1000, 10, "r");
  region(0x2000, 20, "r");
  region(0x3000, 30, "r.2");
  run();
  EXPECT_EQ(content(folder / DIRECTORY / "r").size(), 10u);
  EXPECT_EQ(content(folder / DIRECTORY / "r.2").size(), 20u);
  EXPECT_EQ(content(folder / DIRECTORY / "r.2.2").size(), 30u);
}

TEST_F(MemoryDump, more_regions_than_the_table_holds) {
  for (int i = 0; i < 25; ++i) region(static_cast<uint32_t>(i) * 100, 10, std::to_string(i));
  std::string output = run();
  EXPECT_NE(output.find("DUMP_MODE: more than 20 regions"), std::string::npos);
  EXPECT_TRUE(fs::exists(folder / DIRECTORY / "19"));
  EXPECT_FALSE(fs::exists(folder / DIRECTORY / "20"));
}

TEST_F(MemoryDump, faults_of_the_line) {
  struct {
    DownloadFault fault;
    bool saved;
  } rows[] = {
      {{DownloadFault::NO_REPLY, 0x10, 0, 9}, true},
      {{DownloadFault::NO_REPLY, 0x10, 0, 10}, false},
      {{DownloadFault::WRONG_CODE, 0x10, 0, 10}, false},
      {{DownloadFault::NO_REPLY, 0x12, 2, 30}, true},
      {{DownloadFault::BAD_CHECK, 0x12, 1, 3}, true},
      {{DownloadFault::WRONG_ADDRESS, 0x12, 1, 3}, true},
      {{DownloadFault::UNPLUG, 0x12, 2, 1}, false},
      {{DownloadFault::UNPLUG, 0x10, 0, 1}, false},
  };
  for (auto& row : rows) {
    SCOPED_TRACE(std::to_string(row.fault.code) + " " + std::to_string(row.fault.kind));
    modem = DownloadModem();
    region(0x1000, 5000, "r");
    modem.faults = {row.fault};
    EXPECT_EQ(run().find("PERCENT=100") != std::string::npos, row.saved);
    bool whole = false;  // time-outs may have led into the next minute
    for (auto& directory : fs::directory_iterator(folder)) {
      whole = content(directory.path() / "r") == pattern(5000);
      fs::remove_all(directory);
    }
    EXPECT_EQ(whole, row.saved);
    EXPECT_EQ(SIO_USED_LOCK, 0u);
    diag_close();
    EXPECT_FALSE(world.port_is_open());
  }
}

// A disk without room, played by a limit on the size of files: told once, and nothing is counted.
TEST_F(MemoryDump, a_full_disk_ends_it) {
  region(0x1000, 5000, "r");
  rlimit before_test;
  getrlimit(RLIMIT_FSIZE, &before_test);
  signal(SIGXFSZ, SIG_IGN);
  rlimit small = {2048, before_test.rlim_max};
  setrlimit(RLIMIT_FSIZE, &small);
  testing::internal::CaptureStdout();
  mem_dump_process();
  fflush(stdout);
  setrlimit(RLIMIT_FSIZE, &before_test);
  std::string output = testing::internal::GetCapturedStdout();
  size_t told = output.find("DUMP_MODE: can't write dump_07242010_1933/r: ");
  EXPECT_NE(told, std::string::npos) << output;
  EXPECT_EQ(output.find("can't write", told + 20), std::string::npos) << output;
  EXPECT_EQ(output.find("PERCENT=100"), std::string::npos);
  EXPECT_EQ(content(folder / DIRECTORY / "r").size(), 2048u);
}

TEST_F(MemoryDump, what_can_not_be_written) {
  region(0x1000, 5000, "r");
  fs::create_directory(folder / DIRECTORY);
  fs::create_symlink("/dev/full", folder / DIRECTORY / "r");
  EXPECT_NE(run().find("DUMP_MODE: can't open dump_07242010_1933/r: "), std::string::npos);
  fs::remove_all(folder / DIRECTORY);
  std::ofstream(folder / DIRECTORY) << "in the way";
  EXPECT_NE(run().find("DUMP_MODE: can't open dump_07242010_1933/r: "), std::string::npos);
  fs::remove(folder / DIRECTORY);
  world.malloc_failures = 1;
  EXPECT_EQ(run(), "DUMP_MODE: PERCENT=0\n");
  world.malloc_failures = 0;
  fs::remove(folder);  // nothing can be made in a directory that is gone
  EXPECT_NE(run().find("DUMP_MODE: can't create direcory\n"), std::string::npos);
  world.missing["/dev/tts/USB1"] = ENOENT;
  diag_close();
  EXPECT_NE(run().find("DUMP_MODE: can't open the port\n"), std::string::npos);
}
