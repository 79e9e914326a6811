// Captures of the line: what a Wireshark shows of them, what a replayed modem makes of them, and
// what a redacted one keeps to itself.
#include <filesystem>

#include "tests/support/program.h"
#include "tests/zopctl/run_zopctl.h"

namespace fs = std::filesystem;

class ZopctlCapture : public testing::Test {
 protected:
  void TearDown() override { fs::remove_all(folder); }
  Outcome captured(const std::string& arguments) {
    return zopctl("--capture " + capture + " " + arguments + " < /dev/null");
  }
  // What tshark shows of the capture.
  std::string decoded(const std::string& options = "") {
    std::string command =
        "tshark -X lua_script:" DISSECTOR " -r " + capture + " " + options + " 2>&1";
    FILE* pipe = popen(command.c_str(), "r");
    std::string text;
    for (int c = fgetc(pipe); c != EOF; c = fgetc(pipe)) text += static_cast<char>(c);
    EXPECT_EQ(pclose(pipe), 0) << text;
    return text;
  }
  void expect_in_order(const std::string& text, std::initializer_list<const char*> parts) {
    size_t at = 0;
    for (const char* part : parts) {
      at = text.find(part, at);
      ASSERT_NE(at, std::string::npos) << part << "\n" << text;
    }
  }
  fs::path folder = [] {
    std::string name = testing::TempDir() + "capture-XXXXXX";
    return fs::path(mkdtemp(name.data()));
  }();
  std::string capture = folder / "line.pcapng";
};

TEST_F(ZopctlCapture, is_shown_by_name) {
  EXPECT_EQ(captured("--sim status").exit_code, 0);
  expect_in_order(decoded(), {"> timestamp", "> screen", "< imei: 004999010640000",
                              "< iccid: 89882110000000000017", "> rssi", "< rssi: -75"});
  expect_in_order(decoded("-Y zop.screen.rssi -V"),
                  {"Request in: ", "Network: Testnet", "IMEI: 004999010640000", "RSSI: -75"});
  EXPECT_EQ(captured("--sim nv read 850").exit_code, 0);
  expect_in_order(decoded(), {"> nv_read item 850 (preferred service domain)",
                              "< nv_read item 850 (preferred service domain), good"});
  captured("--sim=" + scenario("refuse", "[[fault]]\nswitch = \"error=66:request=band\"\n") +
           " config show");
  expect_in_order(decoded(), {"> band", "< band: refused, locked"});
}

TEST_F(ZopctlCapture, shows_both_download_protocols) {
  for (const char* name : {"QSC6270.ram", "partition.mbn", "dbl.mbn", "fsbl.mbn", "osbl.mbn",
                           "amss.mbn", "version_info"}) {
    std::ofstream(folder / name) << "Q71XEB22.001" << std::string(2500, 'x').substr(0, 1000);
  }
  // The lost reply costs its time-out of four seconds: a bad one costs nothing.
  std::string bad =
      scenario("bad", "[[fault]]\nswitch = \"bad-crc:request=stream_write,count=1\"\n");
  Outcome run = captured("--sim=" + bad + " --sim-speed 200 firmware update " + folder.string());
  EXPECT_EQ(run.exit_code, 0) << run.output;
  expect_in_order(
      decoded(),
      {"> build", "< build: Q71XEB21.004", "> download_mode", "> dmss_nop", "< ack",
       "> dmss_write 0x00800028, 1012 bytes", "> dmss_go", "< hello", "> stream_partition",
       "< partition table status 1", "> stream_open dbl", "bad check sequence", "a lone flag",
       "< written 0x00000000", "> stream_open amss.mbn", "> stream_reset", "> backup_status"});
  EXPECT_EQ(captured("--sim=crashed dump -o " + folder.string()).exit_code, 0);
  expect_in_order(decoded(),
                  {"< memory regions ebi_cs0.bin adsp_ram.bin imem.bin",
                   "> dmss_read 0x00800000, 1024 bytes", "< memory 0x00800000, 1024 bytes"});
}

// A fault seen in the field becomes a test: the replayed modem has it too.
TEST_F(ZopctlCapture, replays_what_the_modem_did) {
  std::string odd = scenario("odd",
                             "[radio]\nrssi = -91\n[network]\nname = \"Fieldnet\"\n"
                             "[[fault]]\nswitch = \"error=66:request=band\"\n"
                             "[[fault]]\nswitch = \"bad-crc:request=iccid\"\n");
  Outcome first = captured("--sim=" + odd + " status");
  EXPECT_TRUE(contains(first.output, "Fieldnet")) << first.output;
  Program modem({SIMULATOR, "--replay", capture});
  Outcome again = zopctl("status --device " + modem.line());
  EXPECT_EQ(again.output, first.output);
  EXPECT_EQ(again.exit_code, first.exit_code);
  modem.end(SIGTERM);
  EXPECT_EQ(modem.exit_code(), 0);
}

TEST_F(ZopctlCapture, redacted_keeps_secrets_to_itself) {
  std::string locked = scenario("locked",
                                "[sim]\nstatus = \"not-initialised\"\nlock = \"pin-wanted\"\n"
                                "pin = \"4711\"\n");
  EXPECT_EQ(captured("--redact --sim status").exit_code, 0);
  std::string shown = decoded("-V");
  for (const char* secret :
       {"004999010640000", "001010123456789", "89882110000000000017", "15550100"}) {
    EXPECT_FALSE(contains(shown, secret)) << secret;
  }
  EXPECT_TRUE(contains(shown, "Frame: good"));
  EXPECT_FALSE(contains(shown, "bad check"));
  std::ofstream(folder / "pin") << "4711\n";
  EXPECT_EQ(zopctl("--redact --capture " + capture + " --sim=" + locked + " sim verify < " +
                   (folder / "pin").string())
                .exit_code,
            0);
  std::ifstream file(capture, std::ios::binary);
  std::string bytes{std::istreambuf_iterator<char>(file), {}};
  EXPECT_FALSE(contains(bytes, "4711"));
  EXPECT_TRUE(contains(decoded(), "> pin_verify"));
}

TEST_F(ZopctlCapture, goes_to_standard_output_alone) {
  Outcome split = zopctl("--capture - --sim signal 2> " + (folder / "text").string() + " > " +
                         capture + "; true");
  EXPECT_EQ(split.output, "");
  expect_in_order(decoded(), {"> rssi", "< rssi: -75"});
  std::ifstream text(folder / "text");
  std::string words{std::istreambuf_iterator<char>(text), {}};
  EXPECT_TRUE(contains(words, "RSSI")) << words;
}
