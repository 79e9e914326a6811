// The download against a modem in its download modes: contents byte for byte, options, lost
// replies. Faults at every step of the road are in road_test.cpp.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "download/dmss_download.h"
#include "download/image_set.h"
#include "include/modem_download.h"
#include "link/serial_port.h"
#include "tests/support/fresh_link.h"
#include "tests/download/download_modem.h"

using namespace std::chrono_literals;
using namespace test;
namespace fs = std::filesystem;

static const char* const NAMES[] = {"QSC6270.ram", "partition.mbn", "dbl.mbn",
                                    "fsbl.mbn",    "osbl.mbn",      "amss.mbn"};

static Bytes pattern(size_t size, uint32_t seed) {
  Bytes bytes(size);
  for (uint8_t& byte : bytes)
    byte = static_cast<uint8_t>((seed = seed * 1664525 + 1013904223) >> 24);
  return bytes;
}

class Download : public testing::Test {
 protected:
  void SetUp() override {
    fresh_link();
    world.far_end = &modem;
    for (uint32_t i = 0; i < IMAGE_COUNT; ++i) write(NAMES[i], pattern(sizes[i], i));
    modem.programmer.partition = pattern(sizes[1], 1);
  }
  void TearDown() override {
    diag_close();
    fs::remove_all(folder);
  }
  void write(const std::string& name, const Bytes& content) {
    std::ofstream(folder / name, std::ios::binary)
        .write(static_cast<const char*>(static_cast<const void*>(content.data())),
               static_cast<std::streamsize>(content.size()));
  }
  // Runs a download; what it printed is in output.
  int run(int modem_only = 0, int clear = 0) {
    testing::internal::CaptureStdout();
    modem_set_config(folder.c_str(), "/second", modem_only, clear);
    int result = modem_dload_process();
    output = testing::internal::GetCapturedStdout();
    return result;
  }
  void expect_whole() {
    EXPECT_EQ(modem.rom.ram, pattern(sizes[0], 0));
    for (auto [type, row] : {std::pair{15, 2u}, {17, 3u}, {16, 4u}, {5, 5u}}) {
      EXPECT_EQ(modem.programmer.images[type], pattern(sizes[row], row)) << NAMES[row];
    }
    EXPECT_TRUE(modem.programmer.reset);
  }
  void expect_nothing_left() {
    EXPECT_FALSE(world.port_is_open());
    EXPECT_EQ(SIO_USED_LOCK, 0u);
    for (const Image& image : gImages) EXPECT_EQ(image.descriptor, -1);
    EXPECT_EQ(dload_tbuf, nullptr);
  }
  void new_modem() {
    Bytes partition = modem.programmer.partition;
    modem = DownloadModem();
    modem.programmer.partition = partition;
  }
  int packets(uint8_t code) const {
    return static_cast<int>(std::count(modem.codes.begin(), modem.codes.end(), code));
  }

  fs::path folder = [] {
    std::string name = testing::TempDir() + "images-XXXXXX";
    return fs::path(mkdtemp(name.data()));
  }();
  size_t sizes[IMAGE_COUNT] = {3000, 512, 2048, 2049, 2047, 10'000};
  World world;
  DownloadModem modem;
  std::string output;
};

TEST_F(Download, every_image_arrives_as_it_is) {
  EXPECT_EQ(run(), 1);
  expect_whole();
  expect_nothing_left();
  EXPECT_EQ(output,
            "STAGE3: Write 0% Done\nSTAGE1: Loading Success\nSTAGE3: Writing Start\n"
            "STAGE3: Write 20% Done\nSTAGE3: Write 40% Done\nSTAGE3: Write 61% Done\n"
            "STAGE3: Write 81% Done\nSTAGE3: Write 100% Done\n");
  EXPECT_EQ(std::count(world.sleeps.begin(), world.sleeps.end(), Time(10s)), 1);
  EXPECT_EQ(packets(0x0F), 3);                  // 1017, 1017 and 966 bytes
  EXPECT_EQ(packets(0x07), 1 + 1 + 2 + 1 + 5);  // parameters, and the writes
  EXPECT_EQ(packets(0x01), 2);
  EXPECT_FALSE(modem.programmer.erased);
  EXPECT_EQ(FW_DL_STATUS, 100);
}

TEST_F(Download, sizes_around_the_chunk) {
  for (size_t size : {size_t{0}, size_t{1}, size_t{1016}, size_t{1017}, size_t{1018}, size_t{2047},
                      size_t{2048}, size_t{2049}, size_t{300'000}}) {
    new_modem();
    for (uint32_t row : {0u, 2u, 5u}) {
      sizes[row] = row == 0 && size == 0 ? 1 : size;  // a programmer of no bytes can't be started
      write(NAMES[row], pattern(sizes[row], row));
    }
    EXPECT_EQ(run(), 1) << size;
    expect_whole();
    EXPECT_EQ(packets(0x0F), static_cast<int>((sizes[0] + 1016) / 1017)) << size;
  }
}

TEST_F(Download, options) {
  EXPECT_EQ(run(1, 0), 1);
  EXPECT_EQ(modem.programmer.images.size(), 1u);
  EXPECT_EQ(modem.programmer.images[5], pattern(sizes[5], 5));
  // A table that differs overrules that, and erases.
  new_modem();
  modem.programmer.partition = {1, 2, 3};
  EXPECT_EQ(run(1, 0), 1);
  expect_whole();
  EXPECT_TRUE(modem.programmer.erased);
  EXPECT_NE(output.find("STAGE2: Erasing Start\nSTAGE3"), std::string::npos);
  // Asked for, it is done at once.
  new_modem();
  EXPECT_EQ(run(1, 1), 1);
  expect_whole();
  EXPECT_TRUE(modem.programmer.erased);
  EXPECT_EQ(packets(0x19), 1);
}

// A write that went out is not sent twice: its lost reply is asked for with a lone flag.
TEST_F(Download, lost_replies_of_stream_writes) {
  for (auto kind :
       {DownloadFault::NO_REPLY, DownloadFault::BAD_CHECK, DownloadFault::WRONG_ADDRESS}) {
    new_modem();
    modem.faults = {{kind, 0x07, 3, 1}};
    EXPECT_EQ(run(), 1);
    expect_whole();
    EXPECT_EQ(packets(0x7E), 1);
    EXPECT_EQ(packets(0x07), 10);
  }
  new_modem();
  modem.faults = {{DownloadFault::UNPLUG, 0x07, 4, 1}};
  EXPECT_EQ(run(), 0);
  EXPECT_NE(output.find("STAGE3: Err-Writing\n"), std::string::npos);
  expect_nothing_left();
}

TEST_F(Download, a_failed_hello_does_not_turn_the_next_packet_into_a_flag) {
  modem.faults = {{DownloadFault::NO_REPLY, 0x01, 0, 20}};
  EXPECT_EQ(run(), 1);
  EXPECT_EQ(packets(0x7E), 0);
}

TEST_F(Download, image_sets_that_are_not_whole) {
  for (const char* name : NAMES) {
    fs::rename(folder / name, folder / "away");
    EXPECT_EQ(run(), 0) << name;
    EXPECT_NE(output.find("STAGE1: Err-Load Config\n"), std::string::npos);
    EXPECT_TRUE(world.written.empty());
    expect_nothing_left();
    fs::create_directory(folder / name);  // what is no file counts as missing
    EXPECT_EQ(run(), 0) << name;
    expect_nothing_left();
    fs::remove(folder / name);
    fs::rename(folder / "away", folder / name);
  }
  EXPECT_EQ(run(), 1);
}

TEST_F(Download, no_memory_fails_before_anything_is_sent) {
  for (int failures : {1, 2}) {
    world.malloc_failures = failures;
    EXPECT_EQ(run(), 0);
    EXPECT_NE(output.find("STAGE1: Err-Load Config\n"), std::string::npos);
    EXPECT_TRUE(world.written.empty());
    expect_nothing_left();
  }
}

// A file that has shrunk since it was opened can't be sent, and must not be tried for ever.
TEST_F(Download, an_image_that_shrinks_ends_its_stage) {
  for (const char* name : {"QSC6270.ram", "amss.mbn"}) {
    new_modem();
    world.on_sleep = [&](Time) { fs::resize_file(folder / name, 100); };
    modem.faults = {{DownloadFault::NO_REPLY, 0x06, 0, 1}};  // a pause, in which it happens
    EXPECT_EQ(run(), 0) << name;
    EXPECT_NE(output.find("Err-"), std::string::npos);
    expect_nothing_left();
    world.on_sleep = nullptr;
    write("QSC6270.ram", pattern(sizes[0], 0));
  }
}

TEST_F(Download, directories) {
  folder += "/";
  EXPECT_EQ(run(), 1);
  testing::internal::CaptureStdout();
  std::string longest(127, 'x');
  EXPECT_EQ(modem_set_config(longest.c_str(), longest.c_str(), 0, 0), longest);
  std::string too_long(128, 'x');
  EXPECT_STREQ(modem_set_config(too_long.c_str(), "b", 0, 0), "");
  EXPECT_EQ(load_config(), 0);
  EXPECT_STREQ(modem_set_config("a", "b", 1, 1), "b");
  EXPECT_EQ(gModemOnly, 0);  // an erased modem needs all of it
  EXPECT_NE(testing::internal::GetCapturedStdout().find("longer than 127 characters, refused\n"),
            std::string::npos);
}

TEST_F(Download, no_port_fails_the_first_stage) {
  world.missing["/dev/tts/USB1"] = ENOENT;
  EXPECT_EQ(run(), 0);
  EXPECT_NE(output.find("STAGE1: Err-Load RAM\n"), std::string::npos);
  expect_nothing_left();
}
