// The call test: what each number sends, and the state after every failure.
#include "tests/module/module_fixture.h"

using namespace test;

class CallTest : public ModuleTest {
 protected:
  void SetUp() override {
    ModuleTest::SetUp();
    for (const char* request :
         {"cf 49 00 01", "cf 49 00 00", "cf 42 00 54", "cf 42 00 30", CALL, "cf 64 00"}) {
      answers[request] = std::string(request).substr(0, 8) + " 00 00";
    }
    ASSERT_EQ(vurn_open(), VURN_OK);
    modem.payloads.clear();
    vurn_set_log_mask(VURN_LOG_GENERAL | VURN_LOG_ERROR);
    sTestNum = -1;
  }
  // The requests by their first letters: F+ and F- factory test, B band, C call, E end.
  std::string sent() {
    std::string text;
    for (const Bytes& payload : modem.payloads) {
      switch (payload[1]) {
        case 'I':
          text += payload[3] != 0 ? "F+ " : "F- ";
          break;
        case 'B':
          text += "B" + std::to_string(payload[3]) + " ";
          break;
        case 'c':
          text += "C ";
          break;
        case 'd':
          text += "E ";
          break;
      }
    }
    modem.payloads.clear();
    return text;
  }
  static inline const std::string CALL_TEXT = "cf 63 00 01 30" + [] {
    std::string zeros;
    for (int i = 0; i < 32; ++i) zeros += " 00";
    return zeros;
  }();
  static inline const char* CALL = CALL_TEXT.c_str();
};

TEST_F(CallTest, sends_by_its_number) {
  struct {
    int number;
    const char* start;
    const char* stop;
  } rows[] = {
      {0, "F+ ", "F- "},     {1, "F+ B84 C ", "E F- "}, {2, "F+ B48 C ", "E F- "},
      {3, "F+ C ", "E F- "}, {-5, "F+ ", ""},  // a stop reads a negative number as "none"
  };
  for (auto& row : rows) {
    EXPECT_EQ(vurn_originate_call_test(row.number), VURN_OK);
    EXPECT_EQ(sent(), row.start) << row.number;
    EXPECT_EQ(sTestNum, row.number);
    EXPECT_EQ(vurn_stop_call_test(), VURN_OK);
    EXPECT_EQ(sent(), row.stop) << row.number;
    EXPECT_EQ(sTestNum, -1);
  }
  EXPECT_EQ(vurn_stop_call_test(), VURN_OK);
  EXPECT_EQ(sent(), "");
}

TEST_F(CallTest, lines) {
  EXPECT_EQ(vurn_originate_call_test(1), VURN_OK);
  EXPECT_EQ(vurn_stop_call_test(), VURN_OK);
  EXPECT_EQ(log_lines(),
            "D zop:setting band testNum = 1\nD zop:starting call test\n"
            "D zop:call test succeeded\nD zop:stopping call test\n");
}

TEST_F(CallTest, a_failed_step_does_not_stop_the_next) {
  struct {
    const char* request;
    const char* line;
  } rows[] = {
      {"cf 49 00 01", "E zop:enabletest:state=on,error=10:can't set factory test enable\n"},
      {"cf 42 00 54", "E zop:setband:status=10:can't set band\n"},
      {CALL, "E zop:initmolb:status=7:can't initiate MOLB test\n"},
  };
  vurn_set_log_mask(VURN_LOG_ERROR);
  auto healthy = answers;
  for (auto& row : rows) {
    answers = healthy;
    if (row.request == CALL)
      garble(CALL);
    else
      answers[row.request] = std::string(row.request).substr(0, 8) + " 01 00";
    world.log.clear();
    EXPECT_EQ(vurn_originate_call_test(1), VURN_ERR_FAILED);
    EXPECT_EQ(sent(), "F+ B84 C F- ");
    EXPECT_EQ(log_lines(), row.line);
    EXPECT_EQ(sTestNum, 1);
  }
}

TEST_F(CallTest, a_stop_that_fails) {
  vurn_set_log_mask(VURN_LOG_ERROR);
  sTestNum = 2;
  answers["cf 49 00 00"] = "cf 49 00 01 00";
  EXPECT_EQ(vurn_stop_call_test(), VURN_ERR_FAILED);
  EXPECT_EQ(sTestNum, 2);  // the next stop tries again
  EXPECT_EQ(log_lines(), "E zop:enabletest:state=off,error=10:can't set factory test enable\n");
  answers["cf 49 00 00"] = "cf 49 00 00 00";
  EXPECT_EQ(vurn_stop_call_test(), VURN_OK);
  EXPECT_EQ(sent(), "E F- E F- ");

  sTestNum = 2;
  world.log.clear();
  world.writes.push_back(Fail{EIO});
  EXPECT_EQ(vurn_stop_call_test(), VURN_ERR_FAILED);
  EXPECT_EQ(log_lines(),
            "E zop:stopmolb:status=2:can't stop MOLB test\n"
            "E zop:enabletest:state=off,error=1:can't set factory test enable\n");
  vurn_close(0);
  EXPECT_EQ(vurn_stop_call_test(), VURN_ERR_NOT_OPEN);
  EXPECT_EQ(vurn_originate_call_test(1), VURN_ERR_NOT_OPEN);
  EXPECT_EQ(sTestNum, 2);
}
