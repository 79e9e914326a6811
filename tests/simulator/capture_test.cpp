// Capture files: written and read back, truncated, and replayed.
#include "simulator/line/capture.h"

#include <gtest/gtest.h>

#include "simulator/replay.h"
#include "simulator/requests/requests.h"

using namespace sim;
using namespace std::chrono_literals;

static Bytes written(const std::vector<CapturedPacket>& packets) {
  char* text;
  size_t size;
  FILE* file = open_memstream(&text, &size);
  write_capture_header(file);
  for (const CapturedPacket& packet : packets) write_captured(file, packet);
  fclose(file);
  Bytes bytes(text, text + size);
  free(text);
  return bytes;
}

static const std::vector<CapturedPacket> PACKETS = {
    {5'000'000'000'123us, CapturedPacket::TO_MODEM, frame(Bytes{0xCF, 0x20, 0})},
    {5'000'000'250'123us, CapturedPacket::FROM_MODEM,
     frame(Bytes{0xCF, 0x20, 0, 0, 0, 0xB5, 0xFF})},
    {5'000'000'300'123us, CapturedPacket::TO_MODEM, {0x7E}},
    {5'000'000'400'123us, CapturedPacket::FROM_MODEM, {}}};

TEST(Capture, is_read_as_it_was_written) {
  std::vector<CapturedPacket> read = parse_capture(written(PACKETS), "x");
  ASSERT_EQ(read.size(), PACKETS.size());
  for (size_t i = 0; i < read.size(); ++i) {
    EXPECT_EQ(read[i].at, PACKETS[i].at);
    EXPECT_EQ(read[i].direction, PACKETS[i].direction);
    EXPECT_EQ(read[i].bytes, PACKETS[i].bytes);
  }
}

TEST(Capture, a_truncated_file_gives_the_packets_before_the_cut) {
  Bytes good = written(PACKETS);
  for (size_t size = 0; size < good.size(); ++size) {
    try {
      EXPECT_LT(parse_capture({good.data(), size}, "x").size(), PACKETS.size());
    } catch (const CaptureError&) {
      EXPECT_LT(size, 12u);  // shorter than any block
    }
  }
}

TEST(Capture, replay_answers_by_bytes_then_by_command_and_refuses_the_rest) {
  Replay modem(PACKETS, {});
  modem.receive(frame(Bytes{0xCF, 0x20, 0}), 1s);
  EXPECT_EQ(modem.next_due(), 1s + 250ms);
  EXPECT_FALSE(modem.take_output(1s));
  EXPECT_EQ(modem.take_output(2s)->bytes, PACKETS[1].bytes);
  modem.receive(frame(Bytes{0xCF, 0x20, 9}), 2s);
  EXPECT_EQ(modem.take_output(3s)->bytes, PACKETS[1].bytes);
  modem.receive(frame(Bytes{0xCF, 0x21, 0}), 3s);
  EXPECT_EQ(modem.take_output(3s)->bytes, frame(Bytes{BAD_COMMAND, 0xCF, 0x21, 0}));
  Bytes download = frame(Bytes{0x07});
  download.insert(download.begin(), 0x7E);
  modem.receive(download, 3s);
  EXPECT_FALSE(modem.next_due());
  modem.receive(Bytes{0x7E}, 4s);
  EXPECT_EQ(modem.take_output(5s)->kind, Output::HANGS_UP);
  EXPECT_EQ(modem.take_output(9s)->kind, Output::COMES_BACK);
  EXPECT_THROW(Replay({}, {}), CaptureError);
}

// The order of requests differs from run to run, because the module has several threads.
TEST(Capture, replay_answers_each_request_in_its_own_order) {
  Bytes poll = frame(Bytes{0xCF, '=', 0}), query = frame(Bytes{0xCF, 0x20, 0});
  std::vector<CapturedPacket> packets;
  auto exchange = [&](const Bytes& request, uint8_t answer) {
    packets.push_back({0us, CapturedPacket::TO_MODEM, request});
    packets.push_back({0us, CapturedPacket::FROM_MODEM, {answer}});
  };
  exchange(query, 1);
  exchange(query, 2);
  exchange(query, 3);
  exchange(poll, 4);
  Replay modem(packets, {});
  std::string answers;
  for (const Bytes& request : {query, poll, query, poll, query, query}) {
    modem.receive(request, 1s);
    answers += std::to_string(modem.take_output(1s)->bytes[0]);
  }
  EXPECT_EQ(answers, "142431");
}
