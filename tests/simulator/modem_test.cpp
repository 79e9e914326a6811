// The modem in virtual time: framing, refused requests, faults, no secrets in the trace.
#include "simulator/modem.h"

#include <gtest/gtest.h>

using namespace sim;
using namespace std::chrono_literals;

class SimulatedModem : public testing::Test {
 protected:
  // All that it sends within an hour.
  Bytes ask(const Bytes& request) {
    modem.receive(frame(request), 0s);
    Bytes wire;
    while (auto output = modem.take_output(1h)) {
      wire.insert(wire.end(), output->bytes.begin(), output->bytes.end());
    }
    return wire;
  }
  void add_fault(const std::string& text) { modem.faults().add(parse_fault(text)); }

  std::vector<std::string> lines;
  Modem modem{Scenario{}, 1, [this](const std::string& text) { lines.push_back(text); }};
};

static const Bytes RSSI = {0xCF, 0x20, 0};
static const Bytes RSSI_ANSWER = {0xCF, 0x20, 0, 0, 0, 0xB5, 0xFF};

static Deframer::Verdict take(Deframer& deframer, const Bytes& wire) {
  Deframer::Verdict verdict = Deframer::PENDING;
  for (uint8_t byte : wire) verdict = deframer.take(byte);
  return verdict;
}

TEST(SimulatorFrame, drops_damaged_frames) {
  Deframer deframer;
  EXPECT_EQ(take(deframer, {0x7E, 0x7E}), Deframer::PENDING);
  EXPECT_EQ(take(deframer, {0x1D, 0x1C, 0x3A, 0x7E}), Deframer::BAD_CHECK);
  EXPECT_EQ(take(deframer, {0x1D, 0x7E}), Deframer::BAD_CHECK);
  EXPECT_EQ(take(deframer, {0x1D, 0x1C, 0x3B, 0x7D, 0x7E}), Deframer::BAD_CHECK);
  EXPECT_EQ(take(deframer, Bytes(20000, 0x55)), Deframer::PENDING);
  EXPECT_EQ(take(deframer, {0x7E}), Deframer::TOO_LONG);
  EXPECT_EQ(take(deframer, {0x1D, 0x1C, 0x3B, 0x7E}), Deframer::GOOD);
}

TEST_F(SimulatedModem, refuses_unknown_requests) {
  EXPECT_EQ(ask({0x99, 1}), frame(Bytes{BAD_COMMAND, 0x99, 1}));
  EXPECT_EQ(ask({0xCF, 0xFE, 0}), frame(Bytes{BAD_COMMAND, 0xCF, 0xFE, 0}));
  EXPECT_EQ(ask({0xCF, 0x20, 0, 0}), frame(Bytes{BAD_LENGTH, 0xCF, 0x20, 0, 0}));
  EXPECT_EQ(ask({0xCF, 0x20, 1}), frame(Bytes{BAD_PARAMETER, 0xCF, 0x20, 1}));
}

// Saturday, 24 July 2010, 13:02:59 UTC, in a zone five hours behind.
TEST_F(SimulatedModem, sends_local_network_time) {
  modem.model().clock.zone = -20;
  EXPECT_EQ(ask({0xCF, 0x14, 0}),
            frame(Bytes{0xCF, 0x14, 0, 0,  0, 0xDA, 7, 7,    0,    24,   0,    8,
                        0,    2,    0, 59, 0, 6,    0, 0xEC, 0xFF, 0xFF, 0xFF, 0}));
}

TEST_F(SimulatedModem, a_fault_hits_one_answer) {
  struct {
    const char* fault;
    Bytes wire;
  } rows[] = {
      {"silence", {}},
      {"cut=2", {0xCF, 0x20}},
      {"shorten=5", frame(Bytes{0xCF, 0x20, 0, 0, 0})},
      {"error=24", frame(Bytes{24, 0xCF, 0x20, 0})},
      {"other=31", frame(Bytes{0xCF, 0x1F, 0, 0, 0, 5})},
  };
  for (auto& row : rows) {
    add_fault(std::string(row.fault) + ":count=1");
    EXPECT_EQ(ask(RSSI), row.wire) << row.fault;
    EXPECT_EQ(ask(RSSI), frame(RSSI_ANSWER)) << row.fault;
  }
}

TEST_F(SimulatedModem, faults_apply_to_their_request_after_skip_and_up_to_count) {
  add_fault("silence:request=rssi,skip=1,count=2");
  EXPECT_FALSE(ask(RSSI).empty());
  EXPECT_FALSE(ask({0x1D}).empty());
  EXPECT_TRUE(ask(RSSI).empty());
  EXPECT_TRUE(ask(RSSI).empty());
  EXPECT_FALSE(ask(RSSI).empty());
}

TEST_F(SimulatedModem, faults_by_chance_repeat_with_their_seed) {
  auto pattern = [](unsigned seed) {
    Faults faults({parse_fault("silence:chance=0.3")}, seed);
    std::string text;
    for (int i = 0; i < 1000; ++i) text += faults.strike("rssi") ? 'x' : '.';
    return text;
  };
  EXPECT_EQ(pattern(7), pattern(7));
  EXPECT_NE(pattern(7), pattern(8));
  std::string seven = pattern(7);
  auto struck = std::count(seven.begin(), seven.end(), 'x');
  EXPECT_GT(struck, 200);
  EXPECT_LT(struck, 400);
}

TEST_F(SimulatedModem, a_hang_up_drops_what_is_still_to_be_sent) {
  add_fault("hang-up=3:back=9,count=1");
  add_fault("delay=100");
  modem.receive(frame(RSSI), 0s);
  modem.receive(frame(RSSI), 0s);
  EXPECT_EQ(modem.take_output(0s)->bytes.size(), 3u);
  EXPECT_EQ(modem.take_output(1ms)->kind, Output::HANGS_UP);
  EXPECT_TRUE(modem.is_gone());
  EXPECT_FALSE(modem.take_output(9ms));
  EXPECT_EQ(modem.take_output(1h)->kind, Output::COMES_BACK);
  EXPECT_FALSE(modem.is_gone());
  EXPECT_FALSE(modem.take_output(1h));
}

TEST_F(SimulatedModem, answers_never_overtake_each_other) {
  add_fault("delay=100:at=3,count=1");
  modem.receive(frame(RSSI), 0s);
  modem.receive(frame(RSSI), 50ms);
  EXPECT_EQ(modem.take_output(99ms)->bytes.size(), 3u);
  EXPECT_FALSE(modem.take_output(99ms));
  EXPECT_EQ(modem.take_output(100ms)->bytes.size(), frame(RSSI_ANSWER).size() - 3);
  EXPECT_EQ(modem.take_output(100ms)->bytes, frame(RSSI_ANSWER));
}

TEST_F(SimulatedModem, pins_never_reach_the_trace) {
  Bytes verify(19, 0);
  verify[0] = 0xD2, verify[1] = 1;
  std::fill_n(verify.begin() + 11, 4, 0x37);
  ask(verify);
  Bytes write(133, 0x37);
  write[0] = 0x27, write[1] = 0x2D, write[2] = 0x41;
  ask(write);
  verify.push_back(0);  // a bad length: the refusal repeats the request
  ask(verify);
  ASSERT_GE(lines.size(), 6u);
  for (const std::string& text : lines) {
    EXPECT_EQ(text.find(" 37 37 37 37"), std::string::npos) << text;
  }
}
