// The other verbs, each against its own simulated modem: output, refusals and exit codes. No PIN
// may be printed.
#include "tests/zopctl/run_zopctl.h"

TEST(ZopctlVerbs, show_and_do) {
  expect_runs({
      {"--sim signal", 0, "  Bars       5 [#####]\n"},
      {"--sim bars", 0, "  Bars  5 [#####]\n"},
      {"--sim bars --json", 0, "\"bars\": 5"},
      {"--sim mcc", 0, "  MCC      001\n"},
      {"--sim event wanRing 7", 0, "  Counts  0, 0, 0, 0, 0, 1\n"},
      {"--sim event fileDownloaded", 0, "zop:mccmnc:mcc="},
      {"--sim call-test start 1", 0, "test 1 is running"},
      {"--sim call-test stop", 0, "call ended, factory test mode off"},
      {"--sim doctor", 0, "  Stuck signs   ok    no sign of a stuck modem\n"},
      {"--sim report", 0, "Dest IP Address: 10.112.112.112\n"},
      {"--sim exception 3", 2, "does not report codes 3 to 7"},
      {"--sim exception 10", 2, "CODE must be a number from 0 to 9"},
      {"--sim cells", 0, "  WCDMA active     100 (-5 dB)\n"},
      {"--sim sim status", 0, "  PIN             PIN disabled\n"},
      {"--sim plmn list", 0, "  Operator    001-01 umts, 901-70 umts, 310-410 gsm\n"},
      {"--sim plmn list operator --json", 0, "\"technology\": \"gsm\""},
      {"--sim plmn list registered", 0, "  Registered  001-01\n"},
      {"--sim plmn set-user 310-410:gsm,262-01", 0, "  User  310-410 gsm, 262-01 umts\n"},
      {"--sim nv read 10 --length 2", 0, "  Data  00 04\n"},
      {"--sim nv read 4711", 1, "NV status 5 (never written)"},
      {"--sim nv write 4711 0a1B", 0, "item 4711 written, 2 bytes"},
      {"--sim nv write 30000 00", 1, "NV status 6 (refused)"},
      {"--sim config show", 0, "  Band            WCDMA 850\n"},
      {"--sim config set-band 48", 0, "band PCS 1900"},
      {"--sim config set-mode 2", 0, "preferred mode 2"},
      {"--sim config set-search-order gsm 43", 0, "search GSM 850 first"},
      {"--sim config set-search-order gsm 80", 1, "a band of the other type"},
      {"--sim config diag-port 1", 0, "diagnostic port 1"},
      {"--sim config factory-test on", 0, "factory test mode on"},
      {"--sim config reset", 0, "the modem restarts"},
      {"--sim profile list", 0, "  Profile 15  (empty)\n"},
      {"--sim profile write 0361", 0, "profile 3 written"},
      {"--sim profile write 0261", 1, "the modem reported a failure"},
      {"--sim errlog read", 0, "  Newest       boot: watchdog reset\n"},
      {"--sim errlog clear", 0, "all records cleared"},
      {"--sim call start 5550199", 0, "calling 5550199"},
      {"--sim call end", 0, "ended"},
      {"--sim sms send 5550199 'good morning'", 0, "12 characters sent to 5550199"},
      {"--sim time set 2010-07-24T13:02:59", 0, "2010-07-24 13:02:59"},
  });
}

TEST(ZopctlVerbs, explain_missing_bars) {
  expect_runs({
      {"--sim=limited-service bars", 0, "  Reason  no full service\n"},
      {"--sim=illegal-network-reject bars", 0, "  Reason  not attached to the packet network\n"},
      {"--sim=no-sim doctor", 1, "bad   no card; unknown; 0 tries left; is a card in the slot"},
      {"--sim=sim-pin-locked doctor", 1, "enter the PIN with zopctl sim verify"},
      {"--sim=illegal-network-reject doctor", 1, "routing-area update rejected (cause 111)"},
      {"--sim=no-network-time doctor", 0, "look  result 13 (not sent by the network)"},
      {"doctor --device /nowhere/modem", 1, "bad   no modem at /nowhere/modem; is it plugged in"},
      {"--sim bars --watch 0", 2, "--watch must be a number from 1 to 86400"},
  });
}

TEST(ZopctlVerbs, refuse_bad_arguments) {
  expect_runs({
      {"--sim nv read x", 2, "ITEM must be a number from 0 to 65535, not \"x\""},
      {"--sim nv read 1 --length 129", 2, "--length must be a number from 1 to 128"},
      {"--sim nv write 1 0g", 2, "DATA must be 1 to 128 bytes in hexadecimal"},
      {"--sim nv write 1", 2, "DATA is required"},
      {"--sim nv", 2, "subcommand is required"},
      {"--sim config set-band 45", 1, "invalid argument"},
      {"--sim config factory-test maybe", 2, "maybe"},
      {"--sim plmn set-user 31-410", 2, "\"31-410\" is not a PLMN"},
      {"--sim sim verify --pin 12", 2, "PIN must have 4 to 8 digits"},
      {"--sim sim verify --pin 12a4", 2, "PIN must have 4 to 8 digits"},
      {"--sim call start 012345678901234567890123456789012", 2,
       "NUMBER must have 1 to 32 characters"},
      {"--sim time set yesterday", 2, "write TIME as 2010-07-24T13:02:59"},
      {"--sim status now", 2, "now"},
  });
}

// The first sample is printed at once; a signal ends the wait for the next.
TEST(ZopctlVerbs, watch_prints_a_line_a_sample) {
  Program program({ZOPCTL, "--sim", "bars", "--watch", "3600", "--json"});
  expect_in_order(program.line(), {"{", "\"bars\":5", "}"});
  EXPECT_EQ(program.end(SIGINT), 130);
}

TEST(ZopctlVerbs, pins_from_every_source_and_never_shown) {
  TemporaryFolder folder;
  folder.write("pin", "1234\n");
  std::string locked =
      simulated("[sim]\nstatus = \"not-initialised\"\nlock = \"pin-wanted\"\n") + " --log all sim ";
  for (const char* given : {"verify --pin 1234", "verify < pin"}) {
    Outcome run = shell("cd " + folder.path.string() + "; " ZOPCTL " " + locked + given);
    expect_in_order(run.output, {"  PIN             verified\n"});
    EXPECT_FALSE(contains(run.output, "1234")) << run.output;
  }
  expect_runs({{locked + "verify --pin 9999", 1, "  PIN tries left  2\n"},
               {locked + "unblock --key 12345678 --new-pin 4321", 0, ""}});
}

TEST(ZopctlVerbs, report_has_numbers_and_waits_for_a_screen) {
  expect_in_order(zopctl("--sim report --json").output,
                  {"\"IMSI\": \"\"", "\"Bars\": 5", "\"Rx Bytes\": 4", "\"FTD Age\": \"None yet\"",
                   "\"HPLMN\": \"UMTS;001;01\""});
  expect_runs({
      {"--sim report --wait", 0, "IMSI: 001010123456789"},
      {simulated(fault("bad-crc:request=screen")) + " --sim-speed 50 report --wait", 1,
       "no field-test data within 15 s"},
  });
}

TEST(ZopctlVerbs, manual_and_completion_have_the_verbs) {
  expect_runs({
      {"--man", 0, ".B zopctl plmn set\\-user PLMNS\n"},
      {"--man", 0, "Caution: a wrong NV item can make the modem unusable"},
      {"--completion bash", 0, "'plmn') words='list set-user' ;;"},
      {"--completion bash", 0, "'plmn list') words=' home user operator forbidden registered' ;;"},
      {"--completion zsh", 0, "#compdef zopctl\n"},
  });
}
