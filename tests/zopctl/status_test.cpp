// zopctl as a user runs it: the real library, the real simulator, the program's output.
#include <nlohmann/json.hpp>

#include "tests/zopctl/run_zopctl.h"

TEST(Zopctl, status_for_people) {
  Outcome run = zopctl("--sim=healthy-wcdma status");
  EXPECT_EQ(run.exit_code, 0);
  expect_in_order(
      run.output,
      {"  IMEI            004999010640000\n", "  IMSI            001010123456789\n",
       "  ICCID           89882110000000000017\n", "  Phone number    +15550100\n",
       "  Firmware        Q71XEB21.004\n", "  Library         REV_3.0 20100419\n",
       "  Status          ready\n", "  Name            Testnet\n", "  MCC             001\n",
       "  MNC             01\n", "  LAC             6699 (0x1A2B)\n", "  RAC             7 (0x7)\n",
       "  Registration    registered\n", "  Roaming         no\n", "  Service         full\n",
       "  Data service    WCDMA\n", "  RSSI            -75 dBm\n",
       "  Network time    2010-07-24 08:0"});
  EXPECT_FALSE(contains(run.output, "\033"));  // no colour in a pipe
}

TEST(Zopctl, status_for_programs) {
  Outcome run = zopctl("status --json --sim=healthy-gsm");
  EXPECT_EQ(run.exit_code, 0);
  auto json = nlohmann::json::parse(run.output);
  EXPECT_EQ(json["identity"]["imei"], "004999010640000");
  EXPECT_EQ(json["sim"]["status"]["code"], 2);
  EXPECT_EQ(json["network"]["lac"], 0x1A2B);
  EXPECT_EQ(json["network"]["roaming"], false);
  EXPECT_EQ(json["radio"]["rssi"], -68);
  EXPECT_EQ(json["radio"]["data_service_mode"]["text"], "EDGE");
  EXPECT_EQ(json["time"]["utc_offset"], 7200);
  EXPECT_TRUE(json["problems"].empty());
}

TEST(Zopctl, a_failed_query_is_reported_and_the_rest_shown) {
  Outcome run = zopctl(simulated(fault("status:request=iccid") + fault("bad-crc:request=rssi") +
                                 "[clock]\nprovided = \"no\"\n") +
                       " status --json");
  EXPECT_EQ(run.exit_code, 1);
  auto json = nlohmann::json::parse(run.output);
  EXPECT_TRUE(json["identity"]["iccid"].is_null());
  EXPECT_TRUE(json["radio"]["rssi"].is_null());
  EXPECT_EQ(json["identity"]["imsi"], "001010123456789");
  ASSERT_EQ(json["problems"].size(), 4u);
  EXPECT_EQ(json["problems"][0]["item"], "identity.iccid");
  EXPECT_EQ(json["problems"][0]["reason"], "result 2 (failed)");
  EXPECT_EQ(json["problems"][2]["item"], "time.network_time");
  EXPECT_EQ(json["problems"][2]["failure"], false);  // a network may not send its time
}

TEST(Zopctl, errors_name_their_cause) {
  expect_runs({
      {"status --device /nowhere/modem", 1, "no modem at /nowhere/modem; is it plugged in"},
      {"status --device /dev/null", 1, "/dev/null is not a serial device"},
      {"status --sim --library /nowhere.so", 1, "can't load the module: /nowhere.so"},
      {"status --sim=nowhere", 2, "no shipped scenario \"nowhere\""},
      {"--sim roaming status", 2, "for a scenario use --sim=roaming"},
      {"--sim=no-sim status", 1, "vurn_open, result 2 (failed)"},
      {"--sim=no-sim status --log error", 1, "E zop:simstat:status=0:bad sim status\n"},
      {simulated("[network]\nname = \"a\\u001b[2Jb\"\n") + " status", 0, "a?[2Jb"},
      {"--sim status > /dev/full", 1, ""},
      {"", 2, "A verb is required"},
      {"status --sim --log loud", 2, "\"loud\" is neither a number nor one of all error"},
      {"status --sim --device /dev/null", 2, "can't be combined with --device"},
      {"dance", 2, "no verb \"dance\"; zopctl --help lists the verbs"},
      {"--help", 0, "Exit code: 0 success"},
  });
}

TEST(Zopctl, refuses_a_device_in_use) {
  Program modem({SIMULATOR});
  std::string path = modem.line();
  int held = open(path.c_str(), O_RDWR | O_NOCTTY);
  expect_runs({{"status --device " + path, 1,
                path + " is in use by zopctl_tests (process " + std::to_string(getpid()) +
                    "); end that first"}});
  close(held);
  expect_runs({{"status --device " + path, 0, "004999010640000"}});
}

TEST(Zopctl, a_signal_ends_it_while_the_module_waits_for_a_card) {
  std::string modem = simulated("[sim]\nstatus = \"not-ready\"\n");
  for (int signal : {SIGINT, SIGTERM}) {
    Program program({ZOPCTL, modem, "status", "--log", "all"});
    program.lines_until("SIM status=4");
    program.send(signal);
    program.rest();  // until the simulator has ended too
    EXPECT_EQ(program.exit_code(), 128 + signal);
  }
}

TEST(Zopctl, log_lines_by_name_and_number) {
  expect_runs({
      {"--sim status --log trace", 0, "D def:Enter (vurn_open:"},
      {"--sim status --log 0x2000", 0, "D zop:rssi=-75 ("},
  });
  EXPECT_FALSE(contains(zopctl("--sim status").output, "zop:"));
}
