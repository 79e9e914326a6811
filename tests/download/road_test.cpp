// The whole road against the simulated modem: diagnostic mode, boot ROM, programmer, new firmware,
// NV items; and a crash with its dump. The device goes away and comes back on the way.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "download/image_set.h"
#include "include/modem_download.h"
#include "include/zop.h"
#include "link/serial_port.h"
#include "tests/support/fresh_link.h"
#include "tests/support/simulated_far_end.h"

using namespace std::chrono_literals;
using namespace test;
namespace fs = std::filesystem;

static const char DEVICE[] = "/dev/tts/USB1";

class Road : public testing::Test {
 protected:
  void SetUp() override {
    start_modem("");
    fresh_link();
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
  // A new modem that wants its NV items carried over, with one fault.
  void start_modem(const std::string& fault) {
    sent.clear();
    world.sleeps.clear();
    sim::Modem::Trace count = [this](const std::string& line) {
      std::istringstream words(line);
      std::string time, direction, name;
      words >> time >> direction >> name;
      if (direction == ">") ++sent[name];
    };
    sim::Scenario scenario;
    scenario.model.device.backup_value = 0;
    if (!fault.empty()) scenario.faults.push_back(sim::parse_fault(fault));
    far_end = std::make_unique<SimulatedFarEnd>(std::move(scenario), world.now(), count);
    world.far_end = far_end.get();
  }
  // Which of the three calls failed, -1 none. What they printed is in output.
  int update() {
    testing::internal::CaptureStdout();
    int failed = walk();
    output = testing::internal::GetCapturedStdout();
    zop_close();
    return failed;
  }
  int walk() {
    bool switched = zop_open(DEVICE) == 0 && modem_diag_process() == 1;
    zop_close();
    if (!switched) return 0;
    world.advance(5s);  // the host waits for the device in its boot ROM
    if (far_end->gone(world.now()) || far_end->modem.mode() != sim::Mode::BOOT_ROM) return 0;
    modem_set_config(folder.c_str(), "", 0, 0);
    if (modem_dload_process() != 1) return 1;
    return modem_dload_end_process(DEVICE) == 1 ? -1 : 2;
  }
  // Pauses between attempts.
  long rests() const { return std::count(world.sleeps.begin(), world.sleeps.end(), Time(5ms)); }
  void expect_nothing_left() {
    EXPECT_FALSE(world.port_is_open());
    EXPECT_EQ(SIO_USED_LOCK, 0u);
    for (const Image& image : gImages) EXPECT_EQ(image.descriptor, -1);
    EXPECT_EQ(dload_tbuf, nullptr);
  }
  sim::Model& model() { return far_end->modem.model(); }

  fs::path folder = [] {
    std::string name = testing::TempDir() + "road-XXXXXX";
    return fs::path(mkdtemp(name.data()));
  }();
  fs::path before;
  World world;
  std::unique_ptr<SimulatedFarEnd> far_end;
  std::map<std::string, int> sent;  // packets and requests by name
  std::string output;
};

TEST_F(Road, leads_to_the_new_firmware_with_the_old_nv_items) {
  model().nv[4711] = {1, 2, 3};
  EXPECT_EQ(update(), -1) << output;
  EXPECT_EQ(far_end->modem.mode(), sim::Mode::DIAGNOSTIC);
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

// Each fault at each step: how often the packet is sent, how often the module rests in between, how
// it ends; nothing is left open, and a clean run in the same process follows.
TEST_F(Road, every_fault_at_every_step) {
  enum { BEFORE, LOAD, AFTER };  // the call that fails
  struct {
    const char* step;
    int calls, attempts;  // calls of the wrapper, and what each sends while every reply is spoilt
    int ends_in;          // when all attempts have failed; -1: all the same well
    const char* message;  // then
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
      {"stream_close", 4, 20, -1, ""},  // of each image
      {"backup_end", 1, 10, AFTER, ""},
      {"backup_status", 1, 10, AFTER, ""},
      {"backup", 1, 10, AFTER, ""},
      {"mode_control", 1, 10, AFTER, ""},
      {"restore", 1, 10, AFTER, ""},
  };
  // Faults of every reply; a silent modem in its diagnostic mode closes the link, so that the
  // request goes out once. Few of them are survived everywhere.
  const char* const kinds[] = {"silence", "bad-crc", "wrong-echo=0", "cut=2"};
  for (auto& step : steps) {
    bool diagnostic = step.ends_in == BEFORE || step.ends_in == AFTER;
    for (const char* kind : kinds) {
      bool closes = diagnostic && (kind == kinds[0] || kind == kinds[3]);
      SCOPED_TRACE(std::string(kind) + " " + step.step);
      start_modem(std::string(kind) + ":request=" + step.step);
      EXPECT_EQ(update(), step.ends_in) << output;
      EXPECT_EQ(sent[step.step], closes ? 1 : step.calls * step.attempts);
      EXPECT_EQ(rests(), step.calls * (step.attempts - 1));
      EXPECT_TRUE(output.ends_with(step.message) || step.ends_in == -1) << output;
      expect_nothing_left();
      start_modem(closes ? "" : std::string(kind) + ":count=1,request=" + step.step);
      EXPECT_EQ(update(), -1) << output;
      EXPECT_EQ(model().identity.firmware, "Q71XEB22.001");
      expect_nothing_left();
    }
  }
}

// Faults whose ends differ from step to step. Writes are the longest part of the road: a chunk of
// the programmer is sent again without end, a lost reply of a stream write is asked for again.
TEST_F(Road, faults_of_single_steps) {
  struct {
    const char* fault;
    int ends_in;
    const char* message;
  } rows[] = {
      {"silence:request=dmss_write,skip=2,count=25", -1, ""},
      {"wrong-echo=0:request=dmss_write,count=3", -1, ""},
      {"delay=4500:request=dmss_write,count=1", -1, ""},  // comes while the next one is awaited
      {"hang-up=1:request=dmss_write,skip=1", 1, "STAGE1: Err-Load RAM\n"},
      {"silence:request=stream_write", -1, ""},
      {"bad-crc:request=stream_write,skip=1,count=2", -1, ""},
      {"wrong-echo=2:request=stream_write,skip=3,count=1", -1, ""},  // another address
      {"delay=4500:request=stream_write,count=1", -1, ""},
      {"hang-up=4:request=stream_write,skip=3", 1, "STAGE3: Err-Writing\n"},
      {"wrong-echo=1:request=stream_open,count=19", -1, ""},  // refused
      {"wrong-echo=1:request=stream_open", 1, "STAGE3: Err-Writing\n"},
      {"wrong-echo=1:request=stream_partition,skip=1,count=1", -1, ""},  // differs again
      {"hang-up=0:request=stream_partition", 1, "STAGE2: Err-Erasing\n"},
      {"hang-up=2:request=stream_security", 1, "STAGE1: Err-RAM Entry\n"},
      {"hang-up=3:request=restore", 2, ""},
  };
  for (auto& row : rows) {
    SCOPED_TRACE(row.fault);
    start_modem(row.fault);
    EXPECT_EQ(update(), row.ends_in) << output;
    EXPECT_TRUE(output.ends_with(row.message)) << output;
    if (row.ends_in == -1) {
      EXPECT_EQ(model().identity.firmware, "Q71XEB22.001");
    }
    expect_nothing_left();
    start_modem("");
    EXPECT_EQ(update(), -1) << output;
  }
}

