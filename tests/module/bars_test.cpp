// vurn_get_bars: the order on the wire, each outcome, the three detectors at their limits, and
// every line with its mask bit.
#include "tests/module/module_fixture.h"

using namespace std::chrono_literals;
using namespace test;

class HostBars : public ModuleTest {
 protected:
  void SetUp() override {
    ModuleTest::SetUp();
    set("54", "01 00 00 00");  // attached
    set("3b", "02");           // full service
    set("66", "05 00 00 00");  // RA update accepted
    set("26", "00");           // idle
    set("57", "00 00 00 00");  // no PDP context
    set("3c", "01");           // registered
    screen(3, -70);
    ASSERT_EQ(vurn_open(), VURN_OK);
    modem.payloads.clear();
  }
  void set(const std::string& subcommand, const std::string& payload) {
    std::string request = "cf " + subcommand + " 00";
    answers[request] = request + " 00 00 " + payload;
  }
  void screen(int mode, int rssi) {
    Bytes bytes(345);
    bytes[0] = static_cast<uint8_t>(mode);
    bytes[90] = static_cast<uint8_t>(rssi);
    bytes[91] = static_cast<uint8_t>(rssi >> 8);
    set("34", to_hex(bytes));
  }
  int poll() {
    bars = 4711;
    return vurn_get_bars(&bars);
  }
  int bars = 4711;
};

TEST_F(HostBars, ask_the_modem_in_order) {
  EXPECT_EQ(poll(), VURN_OK);
  EXPECT_EQ(bars, 4);
  EXPECT_EQ(gDiagInfo.bars, 4);
  EXPECT_EQ(asked(),
            "cf 54 00\ncf 3b 00\ncf 66 00\ncf 26 00\ncf 57 00\ncf 57 00\ncf 3c 00\ncf 34 00\n");
  // The check for forbidden networks needs three more.
  modem.payloads.clear();
  set("3b", "01");
  set("57", "00 00 1d 00");
  set("30", "33 31 30");
  set("31", "34 31 30");
  answers["cf 62 00"] = "cf 62 00 00 00 01 00 00 00 33 31 30 34 31 30";
  EXPECT_EQ(poll(), VURN_OK);
  EXPECT_EQ(asked(),
            "cf 54 00\ncf 3b 00\ncf 66 00\ncf 26 00\ncf 57 00\ncf 57 00\ncf 30 00\ncf 31 00\n"
            "cf 62 00\ncf 3c 00\n");
}

TEST_F(HostBars, outcomes) {
  struct {
    const char* subcommand;
    const char* payload;
    int bars;
    const char* line;
  } rows[] = {
      {"54", "00 00 00 00", -1, "D zop:gmmAttachState=0\n"},
      {"3c", "00", -1, "D zop:not registered\n"},
      {"3b", "01", -1, "D zop:serviceStatus=1\n"},
      {"3b", "ff", -1, "D zop:serviceStatus=-1\n"},
      {"34", "03 02", 1, "D zop:bars=1\n"},    // at least one in full service
      {"34", "03 01", -1, "D zop:bars=-1\n"},  // limited on the screen already
  };
  vurn_set_log_mask(VURN_LOG_EVENTS);
  auto healthy = answers;
  for (auto& row : rows) {
    answers = healthy;
    set(row.subcommand, row.payload);
    world.log.clear();
    EXPECT_EQ(poll(), VURN_OK) << row.line;
    EXPECT_EQ(bars, row.bars) << row.line;
    EXPECT_EQ(gDiagInfo.bars, row.bars) << row.line;
    EXPECT_EQ(log_lines(), row.line);
  }
}

TEST_F(HostBars, queries_that_fail) {
  struct {
    const char* request;
    int result;
    int stored;
    const char* line;
  } rows[] = {
      {"cf 54 00", 2, -2, "E zop:get:param=packet_reg_status,error=7:can't get parameter\n"},
      {"cf 3b 00", 2, -2, "E zop:get:param=modem_service_Status,error=7:can't get parameter\n"},
      {"cf 66 00", 0, 4, "E zop:get:param=RAU State,error=7:can't get parameter\n"},
      {"cf 26 00", 0, 4, "E zop:get:param=Call Status,error=7:can't get parameter\n"},
      {"cf 57 00", 0, 4,
       "E zop:get:param=PDP State,error=7:can't get parameter\n"
       "E zop:get:param=PDP State,error=7:can't get parameter\n"},
      {"cf 3c 00", 2, -2, "E zop:regstat:status=7:can't determine if modem has registered\n"},
      {"cf 34 00", 2, -1, "E zop:get:param=bars,error=7:can't get parameter\n"},
  };
  vurn_set_log_mask(VURN_LOG_ERROR);
  auto healthy = answers;
  for (auto& row : rows) {
    answers = healthy;
    garble(row.request);
    world.log.clear();
    EXPECT_EQ(poll(), row.result) << row.line;
    EXPECT_EQ(bars, row.result == 0 ? 4 : 4711) << row.line;
    EXPECT_EQ(gDiagInfo.bars, row.stored) << row.line;
    EXPECT_EQ(log_lines(), row.line);
  }
  vurn_close(0);
  EXPECT_EQ(poll(), VURN_ERR_NOT_OPEN);
  EXPECT_EQ(gDiagInfo.bars, -2);
}

namespace {
// The answers that show a symptom, its limit, and the answers that end it.
struct Symptom {
  const char* name;
  std::vector<std::pair<const char*, const char*>> shows, gone;
  int limit_s;
  const char *first, *again, *stuck;
};
}  // namespace

static const Symptom SYMPTOMS[] = {
    {"illegal reject",
     {{"66", "06 00 6f 00"}, {"54", "00 00 00 00"}},
     {{"54", "01 00 00 00"}},
     60,
     "D zop:First RAU Reject: ",
     "D zop:AttachState: 0, current_time: ",
     "D zop:Modem got stuck due to an illegal network reject\n"},
    {"pdp active",
     {{"57", "02 00 00 00"}},
     {{"26", "05"}},
     5,
     "D zop:PDP Active Call Stuck: ",
     "D zop:CallStatus: 0, PDPState: 2, current_time: ",
     "D zop:Modem got stuck in PDP active no PPP state\n"},
    {"all forbidden",
     {{"3b", "ff"}, {"57", "00 00 21 00"}, {"30", "46 46 46"}},
     {{"57", "00 00 00 00"}, {"3b", "02"}},
     300,
     "D zop:PLMN is FPLMN ",
     "D zop:PDP Reject: 33, current_time: ",
     "D zop:Modem got stuck with all available PLMNs in FPLMN\n"},
};

TEST_F(HostBars, a_symptom_that_lasts_is_a_stuck_modem) {
  vurn_set_log_mask(VURN_LOG_STUCK);
  auto healthy = answers;
  for (const Symptom& symptom : SYMPTOMS) {
    SCOPED_TRACE(symptom.name);
    answers = healthy;
    vurn_close(0);
    ASSERT_EQ(vurn_open(), VURN_OK);
    world.advance(20s - world.now() % 1s);  // to a whole second
    Time start = world.now();
    int clock = prv_get_monotonic_seconds();
    auto poll_and_expect = [&](Time at, int result, const std::string& lines) {
      world.advance(start + at - world.now());
      world.log.clear();
      EXPECT_EQ(poll(), result);
      EXPECT_EQ(log_lines(), lines);
      EXPECT_EQ(bars == 4711, result != VURN_OK);
    };
    auto again = [&](int second) { return symptom.again + std::to_string(clock + second) + "\n"; };
    auto limit = std::chrono::seconds(symptom.limit_s);
    for (auto& [subcommand, payload] : symptom.shows) set(subcommand, payload);
    poll_and_expect(0s, VURN_OK, symptom.first + std::to_string(clock) + "\n");
    poll_and_expect(limit, VURN_OK, again(symptom.limit_s));
    poll_and_expect(limit + 1s, VURN_ERR_FAILED, again(symptom.limit_s + 1) + symptom.stuck);
    EXPECT_EQ(gDiagInfo.bars, -2);
    poll_and_expect(limit + 9s, VURN_ERR_FAILED, again(symptom.limit_s + 9) + symptom.stuck);
    for (auto& [subcommand, payload] : symptom.gone) set(subcommand, payload);
    world.log.clear();
    EXPECT_EQ(poll(), VURN_OK);
    EXPECT_FALSE(log_lines().empty());
    // Healthy again: nothing of the symptom is remembered.
    answers = healthy;
    poll_and_expect(limit + 20s, VURN_OK, "");
  }
}

TEST_F(HostBars, a_reopen_forgets_a_symptom) {
  set("57", "02 00 00 00");
  EXPECT_EQ(poll(), VURN_OK);
  world.advance(60s);
  EXPECT_EQ(poll(), VURN_ERR_FAILED);
  vurn_close(0);
  ASSERT_EQ(vurn_open(), VURN_OK);
  EXPECT_EQ(poll(), VURN_OK);
}

TEST_F(HostBars, forbidden_networks) {
  set("3b", "01");
  set("57", "00 00 01 00");
  set("30", "30 30 31");
  set("31", "30 31 00");
  struct {
    const char* list;  // count in 32 bits, entries
    bool forbidden;
  } rows[] = {
      {"01 00 00 00 30 30 31 30 31 00", true},
      {"02 00 00 00 33 31 30 34 31 30 30 30 31 30 31 00", true},
      {"01 00 00 00 33 31 30 34 31 30 30 30 31 30 31 00", false},  // beyond the count
      {"ff 00 00 00 33 31 30 34 31 30", false},
      {"01 00 00 00 30 30 31 30 31 30", false},
      {"00 00 00 00", false},
  };
  vurn_set_log_mask(VURN_LOG_STUCK | VURN_LOG_ERROR);
  for (auto& row : rows) {
    vurn_close(0);
    world.log.clear();
    answers["cf 62 00"] = std::string("cf 62 00 00 00 ") + row.list;
    ASSERT_EQ(vurn_open(), VURN_OK);  // its snapshot queries the bars too
    EXPECT_EQ(poll(), VURN_OK);
    EXPECT_EQ(log_lines().find("PLMN is FPLMN") != std::string::npos, row.forbidden) << row.list;
  }
  // A failed query counts as "not forbidden", and its line names the parameter.
  for (auto [request, name] :
       {std::pair{"cf 62 00", "FPLMN"}, {"cf 31 00", "MNC"}, {"cf 30 00", "MCC"}}) {
    garble(request);
    world.log.clear();
    EXPECT_EQ(poll(), VURN_OK);
    EXPECT_EQ(log_lines(),
              std::string("E zop:get:param=") + name + ",error=7:can't get parameter\n");
  }
}
