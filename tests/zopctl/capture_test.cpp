// Captures of the line: decoded by Wireshark, replayed by the simulated modem, redacted.
#include "tests/zopctl/run_zopctl.h"

class ZopctlCapture : public testing::Test {
 protected:
  Outcome captured(const std::string& arguments) {
    return zopctl("--capture " + capture + " " + arguments + " < /dev/null");
  }
  std::string decoded(const std::string& options = "") {
    Outcome run = shell("tshark -X lua_script:" DISSECTOR " -r " + capture + " " + options);
    EXPECT_EQ(run.exit_code, 0) << run.output;
    return run.output;
  }
  TemporaryFolder folder;
  std::string capture = folder / "line.pcapng";
};

TEST_F(ZopctlCapture, is_shown_by_name) {
  EXPECT_EQ(captured("--sim status").exit_code, 0);
  expect_in_order(decoded(), {"> timestamp", "> screen", "< imei: 004999010640000",
                              "< iccid: 89882110000000000017", "> rssi", "< rssi: -75"});
  expect_in_order(decoded("-Y zop.screen.rssi -V"),
                  {"Request in: ", "Network: Testnet", "IMEI: 004999010640000", "RSSI: -75"});
  captured(simulated(fault("error=66:request=band")) + " config show");
  expect_in_order(decoded(), {"> band", "< band: refused, locked",
                              "> nv_read item 850 (preferred service domain)",
                              "< nv_read item 850 (preferred service domain), good"});
}

TEST_F(ZopctlCapture, shows_both_download_protocols) {
  for (const char* name : {"QSC6270.ram", "partition.mbn", "dbl.mbn", "fsbl.mbn", "osbl.mbn",
                           "amss.mbn", "version_info"}) {
    folder.write(name, "Q71XEB22.001" + std::string(1000, 'x'));
  }
  // A reply with a bad check is refused at once; a lost one would take four seconds.
  Outcome run = captured(simulated(fault("bad-crc:request=stream_write,count=1")) +
                         " --sim-speed 200 firmware update " + folder.path.string());
  EXPECT_EQ(run.exit_code, 0) << run.output;
  expect_in_order(
      decoded(),
      {"> build", "< build: Q71XEB21.004", "> download_mode", "> dmss_nop", "< ack",
       "> dmss_write 0x00800028, 1012 bytes", "> dmss_go", "< hello", "> stream_partition",
       "< partition table status 1", "> stream_open dbl", "bad check sequence", "a lone flag",
       "< written 0x00000000", "> stream_open amss.mbn", "> stream_reset", "> backup_status"});
  EXPECT_EQ(captured("--sim=crashed dump -o " + folder.path.string()).exit_code, 0);
  expect_in_order(decoded(),
                  {"< memory regions ebi_cs0.bin adsp_ram.bin imem.bin",
                   "> dmss_read 0x00800000, 1024 bytes", "< memory 0x00800000, 1024 bytes"});
}

TEST_F(ZopctlCapture, replays_what_the_modem_did) {
  Outcome first =
      captured(simulated("[network]\nname = \"Fieldnet\"\n" + fault("error=66:request=band") +
                         fault("bad-crc:request=iccid")) +
               " status");
  EXPECT_TRUE(contains(first.output, "Fieldnet")) << first.output;
  Program modem({SIMULATOR, "--replay", capture});
  Outcome again = zopctl("status --device " + modem.line());
  EXPECT_EQ(again.output, first.output);
  EXPECT_EQ(again.exit_code, first.exit_code);
  EXPECT_EQ(modem.end(SIGTERM), 0);
}

TEST_F(ZopctlCapture, redacted_holds_no_secrets) {
  EXPECT_EQ(captured("--redact --sim status").exit_code, 0);
  std::string shown = decoded("-V");
  for (const char* secret :
       {"004999010640000", "001010123456789", "89882110000000000017", "15550100"}) {
    EXPECT_FALSE(contains(shown, secret)) << secret;
  }
  EXPECT_TRUE(contains(shown, "Frame: good"));
  EXPECT_FALSE(contains(shown, "bad check"));
  captured("--redact " + simulated("[sim]\nstatus = \"not-initialised\"\nlock = \"pin-wanted\"\n") +
           " sim verify --pin 1234");
  EXPECT_FALSE(contains(folder.read("line.pcapng"), "1234"));
  EXPECT_TRUE(contains(decoded(), "> pin_verify"));
}

TEST_F(ZopctlCapture, is_the_only_thing_on_standard_output) {
  zopctl("--capture - --sim signal 2> " + folder / "text" + " > " + capture + "; true");
  expect_in_order(decoded(), {"> rssi", "< rssi: -75"});
  expect_in_order(folder.read("text"), {"RSSI"});
}
