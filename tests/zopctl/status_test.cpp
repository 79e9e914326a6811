// zopctl as a user runs it: the real library, the real simulator, the program's output.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/support/program.h"
#include "tests/zopctl/run_zopctl.h"

TEST(Zopctl, status_for_people) {
  Outcome run = zopctl("--sim=healthy-wcdma status");
  EXPECT_EQ(run.exit_code, 0);
  for (const char* line :
       {"  IMEI            004999010640000\n", "  IMSI            001010123456789\n",
        "  ICCID           89882110000000000017\n", "  Phone number    +15550100\n",
        "  Firmware        Q71XEB21.004\n", "  Library         REV_3.0 20100419\n",
        "  Status          ready\n", "  Name            Testnet\n", "  MCC             001\n",
        "  MNC             01\n", "  LAC             6699 (0x1A2B)\n",
        "  RAC             7 (0x7)\n", "  Registration    registered\n", "  Roaming         no\n",
        "  Service         full\n", "  Data service    WCDMA\n", "  RSSI            -75 dBm\n",
        "  Network time    2010-07-24 08:0"}) {
    EXPECT_TRUE(contains(run.output, line)) << line << run.output;
  }
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

TEST(Zopctl, a_query_that_fails_is_told_and_the_rest_is_shown) {
  std::string path = scenario("refusing",
                              "[[fault]]\nswitch = \"status:request=iccid\"\n"
                              "[[fault]]\nswitch = \"bad-crc:request=rssi\"\n"
                              "[clock]\nprovided = \"no\"\n");
  Outcome run = zopctl("--sim=" + path + " status --json");
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

TEST(Zopctl, a_modem_s_control_characters_stay_out_of_the_terminal) {
  std::string path = scenario("hostile", "[network]\nname = \"a\\u001b[2Jb\"\n");
  EXPECT_TRUE(contains(zopctl("--sim=" + path + " status").output, "a?[2Jb"));
}

TEST(Zopctl, a_modem_that_can_not_be_opened) {
  std::string path = scenario("no-sim", "[sim]\nstatus = \"none\"\n");
  Outcome run = zopctl("--sim=" + path + " status --log error");
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_TRUE(contains(run.output, "E zop:simstat:status=0:bad sim status\n")) << run.output;
  EXPECT_TRUE(contains(run.output, "vurn_open, result 2 (failed)")) << run.output;
}

TEST(Zopctl, says_what_is_wrong_with_the_device) {
  struct {
    const char* arguments;
    const char* text;
    int exit_code;
  } rows[] = {
      {"status --device /nowhere/modem", "no modem at /nowhere/modem; is it plugged in", 1},
      {"status --device /dev/null", "/dev/null is not a serial device", 1},
      {"status --sim --library /nowhere.so", "can't load the module: /nowhere.so", 1},
      {"status --sim=nowhere", "no shipped scenario \"nowhere\"", 2},
      {"--sim roaming status", "for a scenario use --sim=roaming", 2},
      {"--sim status > /dev/full", "", 1},
      {"", "A verb is required", 2},
      {"status --sim --log loud", "\"loud\" is neither a number nor one of all error", 2},
      {"status --sim --device /dev/null", "can't be combined with --device", 2},
      {"dance", "no verb \"dance\"; zopctl --help lists the verbs", 2},
      {"--help", "Exit code: 0 success", 0},
  };
  for (auto& row : rows) {
    Outcome run = zopctl(row.arguments);
    EXPECT_EQ(run.exit_code, row.exit_code) << row.arguments;
    EXPECT_TRUE(contains(run.output, row.text)) << row.arguments << "\n" << run.output;
  }
}

TEST(Zopctl, works_on_a_device) {
  Program modem({SIMULATOR});
  EXPECT_TRUE(contains(zopctl("status --device " + modem.line()).output, "004999010640000"));
  modem.end(SIGTERM);
  EXPECT_EQ(modem.exit_code(), 0);
}

TEST(Zopctl, refuses_a_device_that_another_process_holds) {
  Program modem({SIMULATOR});
  std::string path = modem.line();
  int held = open(path.c_str(), O_RDWR | O_NOCTTY);
  Outcome run = zopctl("status --device " + path);
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_TRUE(contains(run.output, path + " is in use by zopctl_tests (process " +
                                       std::to_string(getpid()) + "); end that first"))
      << run.output;
  close(held);
  EXPECT_EQ(zopctl("status --device " + path).exit_code, 0);
  modem.end(SIGTERM);
  modem.exit_code();
}

// The modem is closed and its simulator ended however the program is told to end.
TEST(Zopctl, a_signal_ends_it_while_the_module_waits_for_a_card) {
  std::string path = scenario("not-ready", "[sim]\nstatus = \"not-ready\"\n");
  for (int signal : {SIGINT, SIGTERM}) {
    Program program({ZOPCTL, "--sim=" + path, "status", "--log", "all"});
    std::string line;
    while (!contains(line, "SIM status=4")) {
      line = program.line();
      ASSERT_FALSE(line.empty());
    }
    program.end(signal);
    while (!program.line().empty()) {  // until the simulator has let go of the pipe as well
    }
    EXPECT_EQ(program.exit_code(), 128 + signal);
  }
}

TEST(Zopctl, log_lines_by_name_and_number) {
  EXPECT_TRUE(contains(zopctl("--sim status --log trace").output, "D def:Enter (vurn_open:"));
  EXPECT_TRUE(contains(zopctl("--sim status --log 0x2000").output, "D zop:rssi=-75 ("));
  EXPECT_FALSE(contains(zopctl("--sim status").output, "zop:"));
}
