// The modem in virtual time: strictness, faults, the time line, secrets in the trace.
#include "simulator/modem.h"

#include <gtest/gtest.h>

using namespace sim;
using namespace std::chrono_literals;

class SimulatedModem : public testing::Test {
 protected:
  // The payloads of all good frames that the modem sends by a time.
  std::vector<Bytes> answers(Time by) {
    std::vector<Bytes> payloads;
    while (auto output = modem.take_output(by)) {
      for (uint8_t byte : output->bytes) {
        if (line.take(byte) == Deframer::GOOD) payloads.push_back(line.payload());
      }
    }
    return payloads;
  }
  std::vector<Bytes> ask(const Bytes& request, Time now = 0s) {
    modem.receive(frame(request), now);
    return answers(now);
  }
  Bytes raw(const Bytes& request) {
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
  Deframer line;
};

static const Bytes RSSI = {0xCF, 0x20, 0};
static const Bytes RSSI_ANSWER = {0xCF, 0x20, 0, 0, 0, 0xB5, 0xFF};

TEST_F(SimulatedModem, answers_from_its_model) {
  EXPECT_EQ(ask(RSSI), std::vector<Bytes>{RSSI_ANSWER});
  modem.model().radio.rssi = -100;
  EXPECT_EQ(ask(RSSI).at(0), (Bytes{0xCF, 0x20, 0, 0, 0, 0x9C, 0xFF}));
  EXPECT_EQ(ask({0xD2, 0, 0}).at(0), (Bytes{0xD2, 0, 0, 0, 0, 0, 2, 5, 3}));
  EXPECT_EQ(ask({0x01}).at(0), (Bytes{0x01, 0x4D, 0x3C, 0x2B, 0x1A}));
}

TEST_F(SimulatedModem, refuses_what_it_does_not_know) {
  EXPECT_EQ(ask({0x99, 1}).at(0), (Bytes{BAD_COMMAND, 0x99, 1}));
  EXPECT_EQ(ask({0xCF, 0xFE, 0}).at(0), (Bytes{BAD_COMMAND, 0xCF, 0xFE, 0}));
  EXPECT_EQ(ask({0xCF, 0x20, 0, 0}).at(0), (Bytes{BAD_LENGTH, 0xCF, 0x20, 0, 0}));
  EXPECT_EQ(ask({0xCF, 0x20, 1}).at(0), (Bytes{BAD_PARAMETER, 0xCF, 0x20, 1}));
}

TEST_F(SimulatedModem, drops_a_damaged_request) {
  Bytes wire = frame(RSSI);
  wire[0] ^= 1;
  modem.receive(wire, 0s);
  EXPECT_TRUE(answers(1h).empty());
  EXPECT_NE(lines.at(0).find("bad check"), std::string::npos);
}

TEST_F(SimulatedModem, keeps_nv_items) {
  Bytes read(133, 0), write(133, 0);
  read[0] = 0x26, read[1] = 0xB2, read[2] = 0x01;
  write[0] = 0x27, write[1] = 0xB2, write[2] = 0x01, write[3] = 0x42;
  EXPECT_EQ(ask(read).at(0)[131], 5);  // never written
  EXPECT_EQ(ask(write).at(0)[131], 0);
  Bytes answer = ask(read).at(0);
  EXPECT_EQ(answer.size(), 133u);
  EXPECT_EQ(answer[3], 0x42);
  EXPECT_EQ(answer[131], 0);
}

TEST_F(SimulatedModem, network_time_follows_its_clock) {
  modem.model().clock.zone = -20;
  Bytes answer = ask({0xCF, 0x14, 0}, 61s).at(0);
  // 24 July 2010, a Saturday: 13:03 UTC, 08:04 five hours to the west and a minute later.
  Bytes expected = {0xCF, 0x14, 0, 0, 0, 0xDA, 7, 7,    0,    24,   0,    8,
                    0,    4,    0, 0, 0, 6,    0, 0xEC, 0xFF, 0xFF, 0xFF, 0};
  EXPECT_EQ(answer, expected);
  modem.model().clock.provided = 0;
  EXPECT_EQ(ask({0xCF, 0x14, 0}).at(0), (Bytes{0xCF, 0x14, 0, 1, 0}));
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
    EXPECT_EQ(raw(RSSI), row.wire) << row.fault;
    EXPECT_EQ(raw(RSSI), good) << row.fault;
  }
}

TEST_F(SimulatedModem, faults_strike_where_they_are_told) {
  add_fault("silence:request=rssi,skip=1,count=2");
  EXPECT_EQ(ask(RSSI).size(), 1u);
  EXPECT_EQ(ask({0x1D}).size(), 1u);
  EXPECT_EQ(ask(RSSI).size(), 0u);
  EXPECT_EQ(ask(RSSI).size(), 0u);
  EXPECT_EQ(ask(RSSI).size(), 1u);
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

TEST_F(SimulatedModem, a_late_answer_is_due_later) {
  add_fault("delay=6000");
  EXPECT_TRUE(ask(RSSI).empty());
  EXPECT_EQ(modem.next_due(), Time(6s));
  EXPECT_TRUE(answers(5999ms).empty());
  EXPECT_EQ(answers(6s).size(), 1u);
}

TEST_F(SimulatedModem, a_hang_up_loses_what_was_on_its_way) {
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
  verify.push_back(0);  // a length that is refused, with the request in the answer
  ask(verify);
  ASSERT_GE(lines.size(), 6u);
  for (const std::string& text : lines) {
    EXPECT_EQ(text.find(" 37 37 37 37"), std::string::npos) << text;
  }
}
