// An update against the simulated modem: diagnostic mode, boot ROM, programmer, new firmware, NV
// items, with every fault at every step. What was loaded is compared with the images byte for byte.
// The device goes away and comes back during the update.
#include <cstring>

#include "tests/download/download_fixture.h"

using namespace std::chrono_literals;
using namespace test;

static const char* const NAMES[] = {"QSC6270.ram", "partition.mbn", "dbl.mbn",
                                    "fsbl.mbn",    "osbl.mbn",      "amss.mbn"};
static const int TYPES[] = {0, 0, 15, 17, 16, 5};

class Download : public DownloadTest {
 protected:
  void SetUp() override {
    DownloadTest::SetUp();
    const size_t sizes[] = {3000, 512, 2048, 2049, 2047, 10'000};
    for (uint8_t row = 0; row < IMAGE_COUNT; ++row) write(row, sizes[row]);
    std::ofstream(folder / "version_info") << "Q71XEB22.001\n";
    scenario.model.device.backup_value = 0;  // so that the NV items are carried over
  }
  void TearDown() override {
    DownloadTest::TearDown();
    gHasVersionInfo = 0;
  }
  void write(uint8_t row, size_t size) {
    uint32_t seed = row;
    Bytes& image = images[row] = Bytes(size);
    for (uint8_t& byte : image)
      byte = static_cast<uint8_t>((seed = seed * 1664525 + 1013904223) >> 24);
    std::string version = "Q71XEB22.001";
    if (row == IMAGE_AMSS && size > 100) std::copy(version.begin(), version.end(), image.begin());
    std::ofstream(folder / NAMES[row], std::ios::binary) << std::string(image.begin(), image.end());
  }
  // Only the images, to a modem in its boot ROM that has their partition table.
  int load(const std::string& fault = "", int modem_only = 0, int clear = 0) {
    scenario.model.device.crashed = 1;
    scenario.model.device.partition = images[IMAGE_PARTITION];
    start_modem(fault);
    return run([&] { return send_images(modem_only, clear); });
  }
  int send_images(int modem_only, int clear) {
    modem_set_config(folder.c_str(), "/second", modem_only, clear);
    int result = modem_dload_process();
    loaded = far_end->modem.download();
    return result;
  }
  // A whole update. Returns which of its three calls failed, or -1.
  int update(const std::string& fault = "") {
    start_modem(fault);
    int failed = run([&] {
      if (!switches_to_boot_rom()) return 0;
      if (send_images(0, 0) != 1) return 1;
      int result = modem_dload_end_process(DEVICE) == 1 ? -1 : 2;
      zop_close();
      return result;
    });
    if (failed != -1) return failed;
    expect_loaded(IMAGE_DBL);
    EXPECT_EQ(far_end->modem.mode(), sim::Mode::DIAGNOSTIC);
    EXPECT_EQ(model().identity.firmware, "Q71XEB22.001");
    return failed;
  }
  bool switches_to_boot_rom() {
    bool switched = zop_open(DEVICE) == 0 && modem_diag_process() == 1;
    zop_close();
    world.advance(5s);  // the host waits for the device in its boot ROM
    return switched && !far_end->gone(world.now()) && far_end->modem.mode() == sim::Mode::BOOT_ROM;
  }
  // The end of a download, on a modem that runs its new firmware. Returns its result and seconds.
  std::pair<int, int> end_download(const char* new_version) {
    gHasVersionInfo = new_version[0] != '\0';
    memset(gVersionInfo, 0, sizeof gVersionInfo);
    strcpy(gVersionInfo, new_version);
    start_modem();
    Time start = world.now();
    int result = run([] { return modem_dload_end_process(DEVICE); });
    return {result, static_cast<int>((world.now() - start) / 1s)};
  }
  void expect_loaded(uint8_t first) {
    EXPECT_EQ(loaded.rom.ram, images[IMAGE_RAM]);
    std::map<int, Bytes> expected;
    for (uint8_t row = first; row < IMAGE_COUNT; ++row) expected[TYPES[row]] = images[row];
    EXPECT_TRUE(loaded.programmer.images == expected) << "images differ from their files";
    EXPECT_TRUE(loaded.programmer.reset) << "the programmer was not ended";
  }
  // How often the module has paused for how long.
  std::string pauses() const {
    std::map<Time, int> counts;
    for (Time pause : world.sleeps) ++counts[pause];
    std::string text;
    for (auto [pause, count] : counts) {
      text += std::to_string(pause / 1us) + " us " + std::to_string(count) + ", ";
    }
    return text;
  }

  Bytes images[IMAGE_COUNT];
  sim::DownloadMode loaded;  // the modem just after the images
};

TEST_F(Download, every_image_arrives_as_it_is) {
  EXPECT_EQ(load(), 1);
  EXPECT_STREQ(gVersionInfo, "Q71XEB22.001\n");
  std::ofstream(folder / "version_info") << "Q7";
  folder += "/";
  world.file_calls = {Accept{2}, Accept{1}, Fail{EINTR}, Accept{3}, Accept{5}};
  EXPECT_EQ(load(), 1);
  EXPECT_TRUE(world.file_calls.empty());
  EXPECT_STREQ(gVersionInfo, "Q7");
  expect_loaded(IMAGE_DBL);
  EXPECT_EQ(output,
            "STAGE3: Write 0% Done\nSTAGE1: Loading Success\nSTAGE3: Writing Start\n"
            "STAGE3: Write 20% Done\nSTAGE3: Write 40% Done\nSTAGE3: Write 61% Done\n"
            "STAGE3: Write 81% Done\nSTAGE3: Write 100% Done\n");
  EXPECT_EQ(pauses(), "500 us 22, 2000 us 8, 10000000 us 1, ");
  EXPECT_EQ(sent["dmss_write"], 3);  // 1017, 1017 and 966 bytes
  EXPECT_EQ(sent["stream_write"], 1 + 2 + 1 + 5);
  EXPECT_EQ(sent["stream_hello"], 2);
  EXPECT_FALSE(loaded.programmer.erased);
  EXPECT_EQ(FW_DL_STATUS, 100);
}

TEST_F(Download, sizes_around_the_chunk) {
  for (int size : {0, 1, 1016, 1017, 1018, 2047, 2048, 2049, 300'000}) {
    int ram_size = std::max(size, 1);  // a programmer of no bytes can't be started
    write(IMAGE_RAM, static_cast<size_t>(ram_size));
    write(IMAGE_AMSS, static_cast<size_t>(size));
    EXPECT_EQ(load(), 1) << size;
    expect_loaded(IMAGE_DBL);
    EXPECT_EQ(sent["dmss_write"], (ram_size + 1016) / 1017) << size;
  }
}

TEST_F(Download, options) {
  struct {
    const char* fault;
    int modem_only, clear;
    ImageRow first;
    bool erases;
    int tables;  // sent
  } rows[] = {
      {"", 2, 0, IMAGE_AMSS, false, 1},
      {"", 1, 2, IMAGE_DBL, true, 1},  // an erased modem needs all of it
      // A different table overrides the option: the flash is erased.
      {"wrong-echo=1:request=stream_partition,count=1", 1, 0, IMAGE_DBL, true, 2},
  };
  for (auto& row : rows) {
    EXPECT_EQ(load(row.fault, row.modem_only, row.clear), 1);
    expect_loaded(row.first);
    EXPECT_EQ(loaded.programmer.erased, row.erases);
    EXPECT_EQ(sent["stream_partition"], row.tables);
    EXPECT_EQ(prints("STAGE2: Erasing Start\nSTAGE3"), row.erases);
  }
}

TEST_F(Download, what_keeps_it_from_starting) {
  const char CONFIG[] = "STAGE1: Err-Load Config\n";
  for (const char* name : NAMES) {
    fs::rename(folder / name, folder / "away");
    EXPECT_EQ(load(), 0) << name;
    fs::create_directory(folder / name);  // a directory counts as missing
    EXPECT_EQ(load(), 0) << name;
    EXPECT_EQ(output, CONFIG);  // still 0 percent, which is not printed again
    fs::remove(folder / name);
    fs::rename(folder / "away", folder / name);
  }
  for (int failures : {1, 2}) {
    world.malloc_failures = failures;
    EXPECT_EQ(load(), 0);
    EXPECT_EQ(output, CONFIG);
  }
  world.missing[DEVICE] = ENOENT;
  fs::resize_file(folder / "amss.mbn", INT32_MAX);
  EXPECT_EQ(load(), 0);
  EXPECT_EQ(output, "STAGE1: Err-Load RAM\n");
  fs::resize_file(folder / "amss.mbn", INT32_MAX + int64_t{1});
  EXPECT_EQ(load(), 0);
  EXPECT_EQ(output, CONFIG);
  EXPECT_TRUE(world.written.empty());
}

// A file that has shrunk since it was opened can't be sent, and must not be retried forever.
TEST_F(Download, an_image_that_shrinks_ends_its_stage) {
  for (const char* name : {"amss.mbn", "QSC6270.ram"}) {
    world.on_sleep = [&](Time) { fs::resize_file(folder / name, 100); };
    EXPECT_EQ(load("silence:request=dmss_nop,count=1"), 0) << name;  // the pause shrinks the file
    EXPECT_TRUE(prints("Err-"));
  }
  world.on_sleep = nullptr;
}

TEST_F(Download, the_longest_paths) {
  testing::internal::CaptureStdout();
  std::string most(127, 'x'), with_slash = std::string(126, 'x') + "/";
  EXPECT_EQ(modem_set_config(most.substr(1).c_str(), most.c_str(), 0, 0), most);
  EXPECT_STREQ(modem_set_config(with_slash.c_str(), "b", 0, 0), "b");
  EXPECT_STREQ(modem_set_config("a", (most + "x").c_str(), 0, 0), "");
  EXPECT_STREQ(modem_set_config(most.c_str(), "b", 0, 0), "");
  EXPECT_EQ(load_config(), 0);
  EXPECT_TRUE(testing::internal::GetCapturedStdout().ends_with(
      "\nCONFIG: a path is longer than 127 characters, refused\n"));
}

TEST_F(Download, leads_to_the_new_firmware_with_the_old_nv_items) {
  scenario.model.nv[4711] = {1, 2, 3};
  EXPECT_EQ(update(), -1) << output;
  EXPECT_EQ(model().nv[4711], (sim::Bytes{1, 2, 3}));
  EXPECT_TRUE(prints("STAGE2: Erasing Start\n"));  // a first partition table
  EXPECT_TRUE(output.ends_with("DLOAD: NV Backup\nDLOAD: NV Rebuild\nDLOAD: NV Restore\n"))
      << output;
}

// A new family of versions needs new NV items; the modem asks for a backup of them if it has a
// value of 0.
TEST_F(Download, the_ways_of_the_nv_items) {
  const std::string CONNECT = "timestamp ", POLL = "backup_end backup_status ";
  const std::string REBUILD = "rebuild " + CONNECT + "mode_control " + POLL;
  struct {
    const char *old_version, *new_version;
    int backup_value;
    std::string asked;
    const char* output;
    int seconds;
  } rows[] = {
      {"Q71XEB21.004", "", 0, "", "", 0},
      {"Q71XEB21.004", "Q71XEB21.009", 1, CONNECT + POLL, "", 11},
      {"Q71XEB21.004", "Z71XEB22.001", 1, CONNECT + POLL, "", 11},  // another make
      {"X", "Q71XEB22.001", 1, CONNECT + POLL, "", 11},
      {"Q71XEB21.004", "Q71XEB22.001", 1, CONNECT + POLL + REBUILD, "DLOAD: NV Rebuild\n", 32},
      {"Q71XEB19.004", "Q71XEB20.001", 1, CONNECT + POLL + REBUILD, "DLOAD: NV Rebuild\n", 32},
      {"Q71XEB21.004", "Q71XEB21.009", 0, CONNECT + POLL + "backup " + REBUILD + "restore ",
       "DLOAD: NV Backup\nDLOAD: NV Rebuild\nDLOAD: NV Restore\n", 37},
  };
  for (auto& row : rows) {
    SCOPED_TRACE(row.old_version + std::string(" to ") + row.new_version);
    scenario.model.identity.build = row.old_version;
    scenario.model.device.backup_value = row.backup_value;
    start_modem();
    EXPECT_TRUE(switches_to_boot_rom());
    EXPECT_EQ(end_download(row.new_version), std::pair(1, row.seconds));
    EXPECT_EQ(asked, row.asked);
    EXPECT_EQ(output, row.output);
    EXPECT_EQ(model().device.operating_mode, row.seconds > 11) << "offline to rebuild";
  }
}

// By another process: a second backup would overwrite the first.
TEST_F(Download, an_update_is_resumed_after_its_last_nv_step) {
  const std::string CONNECT = "timestamp ", POLL = "backup_end backup_status ";
  const std::string REBUILT = CONNECT + "mode_control " + POLL;
  struct {
    const char *old_version, *new_version;
    int step, backup_value;
    std::string asked;
  } rows[] = {
      {"Q71XEB21.004", nullptr, MODEM_NV_REBUILT, 0, ""},
      {"Q71XEB21.004", "", MODEM_NV_UNTOUCHED, 1, CONNECT + POLL},
      {"Q71XEB21.004", "Q71XEB22.001", MODEM_NV_UNTOUCHED, 1,
       CONNECT + POLL + "rebuild " + REBUILT},
      {"Q71XEB21.004", "Q71XEB21.009", MODEM_NV_UNTOUCHED, 1, CONNECT + POLL},
      {"Q71XEB21.004", "Q71XEB21.009", MODEM_NV_BACKED_UP, 0,
       CONNECT + POLL + "rebuild " + REBUILT + "restore "},
      {"Q71XEB21.004", "Q71XEB21.009", MODEM_NV_REBUILT, 0, REBUILT + "restore "},
      {"Q71XEB21.004", "Q71XEB22.001", MODEM_NV_RESTORED, 0, ""},
  };
  for (auto& row : rows) {
    scenario.model.device.backup_value = row.backup_value;
    start_modem();
    modem_resume_update(row.old_version, row.new_version, row.step);
    EXPECT_EQ(run([] { return modem_dload_end_process(DEVICE); }), 1);
    EXPECT_EQ(asked, row.asked) << row.new_version << " step " << row.step;
  }
  start_modem();  // once
  run([] { return modem_dload_end_process(DEVICE); });
  EXPECT_EQ(asked, CONNECT + POLL + "backup rebuild " + REBUILT + "restore ");
}

TEST_F(Download, a_modem_that_is_not_ready_or_does_not_come_back) {
  scenario.model.device.backup_ready = 1;
  EXPECT_EQ(end_download("Q71XEB22.001"), std::pair(0, 10 + 20));
  Time ready = world.now() + 30s;  // at the last poll
  world.on_sleep = [&](Time) { model().device.backup_ready = world.now() < ready; };
  scenario.model.device.backup_value = 1;
  EXPECT_EQ(end_download("Z"), std::pair(1, 10 + 20));
  world.missing[DEVICE] = ENOENT;  // ten opens of five attempts each
  EXPECT_EQ(end_download("Z"), std::pair(0, 10 + 10 * 5 + 10));
}

// Each fault at each step: how often the packet is sent, how often the module pauses in between,
// and how it ends. Nothing is left open, and a later run in the same process succeeds.
TEST_F(Download, every_fault_at_every_step) {
  enum { BEFORE, LOAD, AFTER };  // the call that fails
  struct {
    const char* step;
    int calls, attempts;  // calls of the wrapper, and packets of each if every reply fails
    int ends_in;          // when all attempts have failed; -1: success even so
    const char* message;  // in that case
  } steps[] = {
      {"build", 1, 10, BEFORE, ""},
      {"download_mode", 1, 10, BEFORE, ""},
      {"dmss_nop", 1, 10, LOAD, "STAGE1: Err-Load RAM\n"},
      {"dmss_parameters", 1, 10, LOAD, "STAGE1: Err-Load RAM\n"},
      {"dmss_go", 1, 1, -1, ""},
      {"stream_hello", 2, 20, LOAD, "STAGE1: Err-RAM Entry\n"},
      {"stream_security", 1, 20, LOAD, "STAGE1: Err-RAM Entry\n"},
      {"stream_partition", 1, 20, LOAD, "STAGE2: Err-Erasing\n"},
      {"stream_open", 1, 20, LOAD, "STAGE3: Err-Writing\n"},
      {"stream_close", 4, 20, -1, ""},  // one call per image
      {"backup_end", 1, 10, AFTER, "STAGE3: Write 100% Done\n"},
      {"backup_status", 1, 10, AFTER, "STAGE3: Write 100% Done\n"},
      {"backup", 1, 10, AFTER, "STAGE3: Write 100% Done\n"},
      {"mode_control", 1, 10, AFTER, "DLOAD: NV Backup\nDLOAD: NV Rebuild\n"},
      {"restore", 1, 10, AFTER, "DLOAD: NV Backup\nDLOAD: NV Rebuild\n"},
  };
  // Every reply fails, then only the first, which the update survives. A diagnostic request without
  // an answer closes the link and is sent once.
  const char* const kinds[] = {"silence", "bad-crc", "wrong-echo=0", "cut=2"};
  for (auto& step : steps) {
    bool diagnostic = step.ends_in == BEFORE || step.ends_in == AFTER;
    for (const char* kind : kinds) {
      bool closes = diagnostic && (kind == kinds[0] || kind == kinds[3]);
      SCOPED_TRACE(std::string(kind) + " " + step.step);
      EXPECT_EQ(update(std::string(kind) + ":request=" + step.step), step.ends_in) << output;
      EXPECT_EQ(sent[step.step], closes ? 1 : step.calls * step.attempts);
      EXPECT_EQ(std::count(world.sleeps.begin(), world.sleeps.end(), Time(5ms)),
                step.calls * (step.attempts - 1));
      EXPECT_TRUE(output.ends_with(step.message) || step.ends_in == -1) << output;
      EXPECT_EQ(update(closes ? "" : std::string(kind) + ":count=1,request=" + step.step), -1)
          << output;
    }
  }
}

// Faults that end differently at each step. Writes are the longest part: a chunk of the programmer
// is resent without limit, and only a lost reply to a stream write is requested with a lone flag.
TEST_F(Download, faults_of_single_steps) {
  struct {
    const char* fault;
    int ends_in;
    const char* message;
    int flags;
  } rows[] = {
      {"silence:request=dmss_write,skip=2,count=25", -1, "", 0},
      {"wrong-echo=0:request=dmss_write,count=3", -1, "", 0},
      {"delay=4500:request=dmss_write,count=1", -1, "", 0},  // arrives while the next is awaited
      {"hang-up=1:request=dmss_write,skip=1", 1, "STAGE1: Err-Load RAM\n", 0},
      {"silence:request=stream_hello,count=20", -1, "", 0},
      {"silence:request=stream_write", -1, "", 9},  // one per write
      {"bad-crc:request=stream_write,skip=1,count=2", -1, "", 2},
      {"wrong-echo=2:request=stream_write,skip=3,count=1", -1, "", 1},  // another address
      {"delay=4500:request=stream_write,count=1", -1, "", 9},  // each finds the reply before
      {"shorten=4:request=stream_write,count=1", -1, "", 1},
      {"shorten=1:request=stream_partition", 1, "STAGE2: Err-Erasing\n", 0},
      {"shorten=1:request=stream_open", 1, "STAGE3: Err-Writing\n", 0},
      {"hang-up=4:request=stream_write,skip=3", 1, "STAGE3: Err-Writing\n", 0},
      {"wrong-echo=1:request=stream_open,count=19", -1, "", 0},  // refused
      {"wrong-echo=1:request=stream_open", 1, "STAGE3: Err-Writing\n", 0},
      {"wrong-echo=1:request=stream_partition,skip=1,count=1", -1, "", 0},  // differs again
      {"hang-up=0:request=stream_partition", 1, "STAGE2: Err-Erasing\n", 0},
      {"hang-up=2:request=stream_security", 1, "STAGE1: Err-RAM Entry\n", 0},
      {"hang-up=3:request=restore", 2, "", 0},
  };
  for (auto& row : rows) {
    SCOPED_TRACE(row.fault);
    EXPECT_EQ(update(row.fault), row.ends_in) << output;
    EXPECT_TRUE(output.ends_with(row.message)) << output;
    EXPECT_EQ(sent["lone flag"], row.flags);
    EXPECT_EQ(std::count(world.sleeps.begin(), world.sleeps.end(), Time(1ms)), row.flags);
    if (row.ends_in == -1) {
      EXPECT_EQ(sent["stream_write"], 9);
    }
    EXPECT_EQ(update(), -1) << output;
  }
}
