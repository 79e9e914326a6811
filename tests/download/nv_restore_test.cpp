// NV items after a download: every path with a modem that works. Its faults at each step are in
// download_test.cpp.
#include <gtest/gtest.h>

#include <cstring>

#include "download/image_set.h"
#include "include/modem_download.h"
#include "include/zop.h"
#include "link/serial_port.h"
#include "tests/support/fresh_link.h"
#include "tests/support/far_ends.h"

using namespace std::chrono_literals;
using namespace test;

static const char DEVICE[] = "/dev/tts/USB1";

class NvRestore : public testing::Test {
 protected:
  void SetUp() override {
    world.far_end = &modem;
    fresh_link();
    set_new_version("Q71XEB22.001");
  }
  void TearDown() override {
    zop_close();
    gHasVersionInfo = 0;
  }
  void set_new_version(const char* text) {  // an empty text means none
    gHasVersionInfo = text[0] != '\0';
    memset(gVersionInfo, 0, sizeof gVersionInfo);
    strcpy(gVersionInfo, text);
  }
  // The version that the modem reports before the download.
  void read_old_version(const std::string& text) {
    version = text;
    ASSERT_EQ(zop_open(DEVICE), 0u);
    EXPECT_EQ(modem_diag_process(), 1);
    zop_close();
    modem.payloads.clear();
    world.sleeps.clear();
  }
  int run() {
    testing::internal::CaptureStdout();
    int result = modem_dload_end_process(DEVICE);
    output = testing::internal::GetCapturedStdout();
    EXPECT_FALSE(world.port_is_open());
    return result;
  }
  // First bytes of the requests, in decimal.
  std::string asked() {
    std::string text;
    for (const Bytes& payload : modem.payloads) text += std::to_string(payload[0]) + " ";
    return text;
  }
  int seconds_slept() const {
    Time sum{0};
    for (Time time : world.sleeps) {
      if (time >= Time(1s)) sum += time;
    }
    return static_cast<int>(sum / 1s);
  }

  World world;
  std::string version = "Q71XEB21.004";
  int polls_until_ready = 1;
  int readiness_value = 0;
  std::string output;
  AnsweringModem modem{[this](const Bytes& request) -> std::optional<Bytes> {
    Bytes answer(64);
    answer[0] = request[0];
    if (request[0] == 124) memcpy(answer.data() + 12, version.data(), version.size());
    if (request[0] == 218) return std::nullopt;
    if (request[0] == 207) {
      answer[5] = --polls_until_ready > 0;
      answer[6] = static_cast<uint8_t>(readiness_value);
    }
    return answer;
  }};
};

TEST_F(NvRestore, the_ways_of_the_nv_items) {
  struct {
    const char* name;
    const char *old_version, *new_version;
    int readiness;
    const char* asked;
    const char* output;
    int seconds;
  } rows[] = {
      {"no version_info", "Q71XEB21.004", "", 0, "", "", 0},
      {"same family", "Q71XEB21.004", "Q71XEB21.009", 1, "217 207 ", "", 11},
      {"another make", "Q71XEB21.004", "Z71XEB22.001", 1, "217 207 ", "", 11},
      {"another make before", "X", "Q71XEB22.001", 1, "217 207 ", "", 11},
      {"new family", "Q71XEB21.004", "Q71XEB22.001", 1, "217 207 218 41 217 207 ",
       "DLOAD: NV Rebuild\n", 32},
      {"backup wanted", "Q71XEB21.004", "Q71XEB21.009", 0, "217 207 214 218 41 217 207 215 ",
       "DLOAD: NV Backup\nDLOAD: NV Rebuild\nDLOAD: NV Restore\n", 37},
  };
  for (auto& row : rows) {
    SCOPED_TRACE(row.name);
    read_old_version(row.old_version);
    set_new_version(row.new_version);
    readiness_value = row.readiness;
    EXPECT_EQ(run(), 1);
    EXPECT_EQ(asked(), row.asked);
    EXPECT_EQ(output, row.output);
    EXPECT_EQ(seconds_slept(), row.seconds);
  }
}

TEST_F(NvRestore, a_modem_that_is_never_ready) {
  polls_until_ready = 100;
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(seconds_slept(), 10 + 20);
  polls_until_ready = 20;
  readiness_value = 1;
  read_old_version("Q71XEB22.000");
  EXPECT_EQ(run(), 1);
  EXPECT_EQ(seconds_slept(), 10 + 20);
}

TEST_F(NvRestore, a_modem_that_does_not_come_back) {
  world.missing[DEVICE] = ENOENT;
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(world.opens, 0);
  // Ten opens of five attempts each.
  EXPECT_EQ(seconds_slept(), 10 + 10 * 5 + 10);
}
