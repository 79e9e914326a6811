// The verbs beyond status, each against a simulated modem of its own: what it shows, what it
// refuses, with which exit code. PINs must stay out of everything that is printed.
#include <nlohmann/json.hpp>

#include "tests/support/program.h"
#include "tests/zopctl/run_zopctl.h"

namespace {
struct Row {
  const char* arguments;
  int exit_code;
  const char* text;
};
}  // namespace

static void check(std::initializer_list<Row> rows) {
  for (const Row& row : rows) {
    Outcome run = zopctl(std::string("--sim ") + row.arguments);
    EXPECT_EQ(run.exit_code, row.exit_code) << row.arguments << "\n" << run.output;
    EXPECT_TRUE(contains(run.output, row.text)) << row.arguments << "\n" << run.output;
  }
}

TEST(ZopctlVerbs, show_and_do) {
  check({
      {"signal", 0, "  Bars       5 [#####]\n"},
      {"bars", 0, "  Bars  5 [#####]\n"},
      {"mcc", 0, "  MCC      001\n"},
      {"event wanRing 7", 0, "  Counts  0, 0, 0, 0, 0, 1\n"},
      {"event fileDownloaded", 0, "zop:mccmnc:mcc="},
      {"call-test start 1", 0, "test 1 is running"},
      {"call-test stop", 0, "call ended, factory test mode off"},
      {"doctor", 0, "  Stuck signs   ok    no sign of a stuck modem\n"},
      {"report", 0, "Dest IP Address: 10.112.112.112\n"},
      {"exception 3", 2, "does not report codes 3 to 7"},
      {"exception 10", 2, "CODE must be a number from 0 to 9"},
      {"cells", 0, "  WCDMA active     100 (-5 dB)\n"},
      {"sim status", 0, "  PIN             PIN disabled\n"},
      {"plmn list", 0, "  Operator    001-01 umts, 901-70 umts, 310-410 gsm\n"},
      {"plmn list registered", 0, "  Registered  001-01\n"},
      {"plmn set-user 310-410:gsm,262-01", 0, "  User  310-410 gsm, 262-01 umts\n"},
      {"nv read 10 --length 2", 0, "  Data  00 04\n"},
      {"nv read 4711", 1, "NV status 5 (never written)"},
      {"nv write 4711 0a1B", 0, "item 4711 written, 2 bytes"},
      {"nv write 30000 00", 1, "NV status 6 (refused)"},
      {"config show", 0, "  Band            WCDMA 850\n"},
      {"config set-band 48", 0, "band PCS 1900"},
      {"config set-mode 2", 0, "preferred mode 2"},
      {"config set-search-order gsm 43", 0, "search GSM 850 first"},
      {"config set-search-order gsm 80", 1, "a band of the other type"},
      {"config diag-port 1", 0, "diagnostic port 1"},
      {"config factory-test on", 0, "factory test mode on"},
      {"config reset", 0, "the modem restarts"},
      {"profile list", 0, "  Profile 15  (empty)\n"},
      {"profile write 0361", 0, "profile 3 written"},
      {"profile write 0261", 1, "the modem reported a failure"},
      {"errlog read", 0, "  Newest       boot: watchdog reset\n"},
      {"errlog clear", 0, "all records cleared"},
      {"call start 5550199", 0, "calling 5550199"},
      {"call end", 0, "ended"},
      {"sms send 5550199 'good morning'", 0, "12 characters sent to 5550199"},
      {"time set 2010-07-24T13:02:59", 0, "2010-07-24 13:02:59"},
  });
}

TEST(ZopctlVerbs, tell_why_there_are_no_bars) {
  struct {
    const char* arguments;
    int exit_code;
    const char* text;
  } rows[] = {
      {"--sim=limited-service bars", 0, "  Reason  no full service\n"},
      {"--sim=illegal-network-reject bars", 0, "  Reason  not attached to the packet network\n"},
      {"--sim=no-sim doctor", 1, "bad   no card; unknown; 0 tries left; is a card in the slot"},
      {"--sim=sim-pin-locked doctor", 1, "enter the PIN with zopctl sim verify"},
      {"--sim=illegal-network-reject doctor", 1, "routing-area update rejected (cause 111)"},
      {"--sim=no-network-time doctor", 0, "look  result 13 (not sent by the network)"},
      {"doctor --device /nowhere/modem", 1, "bad   no modem at /nowhere/modem; is it plugged in"},
      {"--sim bars --watch 0", 2, "--watch must be a number from 1 to 86400"},
  };
  for (auto& row : rows) {
    Outcome run = zopctl(row.arguments);
    EXPECT_EQ(run.exit_code, row.exit_code) << row.arguments;
    EXPECT_TRUE(contains(run.output, row.text)) << row.arguments << "\n" << run.output;
  }
}

// The first look comes at once; a signal ends the wait for the next.
TEST(ZopctlVerbs, watch_prints_a_line_a_look) {
  Program program({ZOPCTL, "--sim", "bars", "--watch", "3600", "--json"});
  auto sample = nlohmann::json::parse(program.line());
  EXPECT_EQ(sample["bars"], 5);
  program.end(SIGINT);
  EXPECT_EQ(program.line(), "");
  EXPECT_EQ(program.exit_code(), 130);
}

TEST(ZopctlVerbs, refuse_what_they_can_not_take) {
  check({
      {"nv read x", 2, "ITEM must be a number from 0 to 65535, not \"x\""},
      {"nv read 1 --length 129", 2, "--length must be a number from 1 to 128"},
      {"nv write 1 0g", 2, "DATA must be 1 to 128 bytes in hexadecimal"},
      {"nv write 1", 2, "DATA is required"},
      {"nv", 2, "subcommand is required"},
      {"config set-band 45", 1, "invalid argument"},
      {"config factory-test maybe", 2, "maybe"},
      {"plmn set-user 31-410", 2, "\"31-410\" is not a PLMN"},
      {"sim verify --pin 12", 2, "PIN must have 4 to 8 digits"},
      {"sim verify --pin 12a4", 2, "PIN must have 4 to 8 digits"},
      {"call start 012345678901234567890123456789012", 2, "NUMBER must have 1 to 32 characters"},
      {"time set yesterday", 2, "write TIME as 2010-07-24T13:02:59"},
      {"status now", 2, "now"},
  });
}

TEST(ZopctlVerbs, pins_from_every_source_and_never_shown) {
  std::string path =
      scenario("locked", "[sim]\nstatus = \"not-initialised\"\nlock = \"pin-wanted\"\n");
  std::string sim = "--sim=" + path + " --log all ";
  for (const char* arguments : {"sim verify --pin 1234", "sim verify <<< 1234"}) {
    FILE* shell = popen(("bash -c '" ZOPCTL " " + sim + arguments + " 2>&1'").c_str(), "r");
    std::string output;
    for (int c = fgetc(shell); c != EOF; c = fgetc(shell)) output += static_cast<char>(c);
    EXPECT_EQ(pclose(shell), 0) << output;
    EXPECT_TRUE(contains(output, "  PIN             verified\n")) << output;
    EXPECT_FALSE(contains(output, "1234")) << output;
  }
  Outcome wrong = zopctl(sim + "sim verify --pin 9999");
  EXPECT_EQ(wrong.exit_code, 1);
  EXPECT_TRUE(contains(wrong.output, "  PIN tries left  2\n")) << wrong.output;
  EXPECT_EQ(zopctl(sim + "sim unblock --key 12345678 --new-pin 4321").exit_code, 0);
}

TEST(ZopctlVerbs, json_of_a_list) {
  auto json = nlohmann::json::parse(zopctl("--sim plmn list operator --json").output);
  EXPECT_EQ(json["plmn"]["operator"][2]["technology"], "gsm");
}

TEST(ZopctlVerbs, json_of_a_report_has_numbers_and_nulls) {
  auto json = nlohmann::json::parse(zopctl("--sim report --json").output);
  EXPECT_EQ(json["sim"]["IMSI"], "");  // of a screen, and none has come yet
  EXPECT_EQ(json["state"]["Bars"], 5);
  EXPECT_GE(json["wan"]["Rx Bytes"], 4711815);  // the traffic goes on
  EXPECT_EQ(json["wan"]["FTD Age"], "None yet");
  EXPECT_EQ(json["plmn"]["HPLMN"], "UMTS;001;01");
}

TEST(ZopctlVerbs, report_waits_for_a_screen) {
  auto json = nlohmann::json::parse(zopctl("--sim report --wait --json").output);
  EXPECT_EQ(json["sim"]["IMSI"], "001010123456789");
  EXPECT_NE(json["wan"]["FTD Age"], "None yet");
  std::string none = scenario("none", "[[fault]]\nswitch = \"bad-crc:request=screen\"\n");
  Outcome run = zopctl("--sim=" + none + " --sim-speed 5 report --wait");
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_TRUE(contains(run.output, "no field-test data within 15 s")) << run.output;
}

TEST(ZopctlVerbs, documents_know_every_verb) {
  std::string man = zopctl("--man").output;
  EXPECT_TRUE(contains(man, ".B zopctl plmn set\\-user PLMNS\n"));
  EXPECT_TRUE(contains(man, "Caution: a wrong NV item can make the modem unusable"));
  std::string bash = zopctl("--completion bash").output;
  EXPECT_TRUE(contains(bash, "'plmn') words='list set-user' ;;"));
  EXPECT_TRUE(contains(bash, "'plmn list') words=' home user operator forbidden registered' ;;"));
  EXPECT_TRUE(contains(zopctl("--completion zsh").output, "#compdef zopctl\n"));
}
