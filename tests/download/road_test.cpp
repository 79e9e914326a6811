// The whole road against the simulated modem: diagnostic mode, boot ROM, programmer, new firmware,
// NV items; and a crash with its dump. The device goes away and comes back on the way.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "download/image_set.h"
#include "include/modem_download.h"
#include "include/zop.h"
#include "link/serial_port.h"
#include "tests/support/simulated_far_end.h"

using namespace std::chrono_literals;
using namespace test;
namespace fs = std::filesystem;

static const char DEVICE[] = "/dev/tts/USB1";

class Road : public testing::Test {
 protected:
  void SetUp() override {
    world.far_end = &far_end;
    SIO_USED_LOCK = 0;
    write("QSC6270.ram", std::string(5000, 'r'));
    write("partition.mbn", std::string(600, 'p'));
    write("dbl.mbn", std::string(3000, 'd'));
    write("fsbl.mbn", std::string(2048, 'f'));
    write("osbl.mbn", std::string(1, 'o'));
    write("amss.mbn", std::string(9000, 'a') + "Q71XEB22.001" + std::string(4000, '\0'));
    write("version_info", "Q71XEB22.001\n");
    before = fs::current_path();
    fs::current_path(folder);
  }
  void TearDown() override {
    zop_close();
    fs::current_path(before);
    fs::remove_all(folder);
  }
  void write(const std::string& name, const std::string& content) {
    std::ofstream(folder / name, std::ios::binary) << content;
  }
  int update() {
    EXPECT_EQ(zop_open(DEVICE), 0u);
    EXPECT_EQ(modem_diag_process(), 1);
    zop_close();
    world.advance(5s);  // the host waits for the device in its boot ROM
    EXPECT_FALSE(far_end.gone(world.now()));
    EXPECT_EQ(far_end.modem.mode(), sim::Mode::BOOT_ROM);
    testing::internal::CaptureStdout();
    modem_set_config(folder.c_str(), "", 0, 0);
    int result = modem_dload_process() == 1 && modem_dload_end_process(DEVICE) == 1;
    output = testing::internal::GetCapturedStdout();
    return result;
  }
  sim::Model& model() { return far_end.modem.model(); }

  fs::path folder = [] {
    std::string name = testing::TempDir() + "road-XXXXXX";
    return fs::path(mkdtemp(name.data()));
  }();
  fs::path before;
  World world;
  SimulatedFarEnd far_end;
  std::string output;
};

TEST_F(Road, leads_to_the_new_firmware_with_the_old_nv_items) {
  model().device.backup_value = 0;  // wants a backup
  model().nv[4711] = {1, 2, 3};
  EXPECT_EQ(update(), 1) << output;
  EXPECT_EQ(far_end.modem.mode(), sim::Mode::DIAGNOSTIC);
  EXPECT_EQ(model().identity.firmware, "Q71XEB22.001");
  EXPECT_EQ(model().nv[4711], (sim::Bytes{1, 2, 3}));
  EXPECT_NE(output.find("STAGE2: Erasing Start\n"), std::string::npos);  // a first partition table
  EXPECT_NE(output.find("DLOAD: NV Backup\nDLOAD: NV Rebuild\nDLOAD: NV Restore\n"),
            std::string::npos)
      << output;
  EXPECT_EQ(zop_open(DEVICE), 0u);
  uint8_t version[32] = {};
  uint32_t size = sizeof version;
  EXPECT_EQ(zop_get_firmware_version(version, &size), ZOP_SUCCESS);
  EXPECT_STREQ(static_cast<const char*>(static_cast<void*>(version)), "Q71XEB22.001");
}

TEST_F(Road, survives_faults_by_name) {
  for (const char* fault :
       {"silence:request=dmss_write,skip=2,count=1", "bad-crc:request=stream_write,skip=1,count=2",
        "silence:request=stream_write,skip=3,count=1",
        "status=1:request=stream_security,count=1"}) {
    far_end.modem.faults().add(sim::parse_fault(fault));
  }
  EXPECT_EQ(update(), 1) << output;
  EXPECT_EQ(model().identity.firmware, "Q71XEB22.001");
}

TEST_F(Road, a_crash_leaves_its_memory_to_a_dump) {
  model().device.crash_dump = 1;
  ASSERT_EQ(zop_open(DEVICE), 0u);
  EXPECT_EQ(zop_set_error_fatal(), ZOP_SUCCESS);
  zop_close();
  world.advance(5s);
  testing::internal::CaptureStdout();
  EXPECT_EQ(mem_dump_process(), 1);
  std::string said = testing::internal::GetCapturedStdout();
  EXPECT_NE(said.find("DUMP_MODE: PERCENT=100\n"), std::string::npos) << said;
  std::map<std::string, size_t> sizes;
  for (auto& entry : fs::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file()) sizes[entry.path().filename()] = entry.file_size();
  }
  EXPECT_EQ(sizes["ram.bin"], 300'000u);
  EXPECT_EQ(sizes["rom.bin"], 4096u);
}
