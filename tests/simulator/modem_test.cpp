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

TEST_F(SimulatedModem, faults_damage_the_answer) {
  Bytes good = frame(RSSI_ANSWER);
  Bytes bad_crc = good;
  bad_crc[bad_crc.size() - 2] ^= 1;
  Bytes noisy = good;
  noisy.insert(noisy.begin(), 2, 0x55);
  Bytes twice = good;
  twice.insert(twice.end(), good.begin(), good.end());
  Bytes flipped = good;
  flipped[1] ^= 2;
  struct {
    const char* fault;
    Bytes wire;
  } rows[] = {
      {"silence", {}},
      {"bad-crc", bad_crc},
      {"cut=2", {0xCF, 0x20}},
      {"pieces=2", good},
      {"wrong-echo=1", frame(Bytes{0xCF, 0x30, 0, 0, 0, 0xB5, 0xFF})},
      {"extra=2", noisy},
      {"duplicate", twice},
      {"error=24", frame(Bytes{24, 0xCF, 0x20, 0})},
      {"status=256", frame(Bytes{0xCF, 0x20, 0, 0, 1, 0xB5, 0xFF})},
      {"flip=9", flipped},
  };
  for (auto& row : rows) {
    add_fault(std::string(row.fault) + ":count=1");
    EXPECT_EQ(ask(RSSI), row.wire) << row.fault;
    EXPECT_EQ(ask(RSSI), good) << row.fault;
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

TEST_F(SimulatedModem, a_hang_up_drops_queued_output) {
  add_fault("delay=100:count=1");
  add_fault("hang-up=3");
  modem.receive(frame(RSSI), 0s);
  modem.receive(frame(RSSI), 0s);
  EXPECT_EQ(modem.take_output(0s)->bytes.size(), 3u);
  EXPECT_EQ(modem.take_output(0s)->kind, Output::HANGS_UP);
  EXPECT_TRUE(modem.is_gone());
  EXPECT_FALSE(modem.take_output(1h));
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
