// The serial port: line settings, the claim, short and failing calls, silent and unplugged devices.
// Every fatal error must leave the port closed and free.

#include "link/serial_port.h"

#include <cerrno>
#include <cstring>

#include "link/exchange.h"
#include "link/frame_codec.h"
#include "tests/support/link_test.h"

using namespace std::chrono_literals;
using namespace test;

class SerialPort : public LinkTest {
 protected:
  void expect_closed_and_free() {
    EXPECT_EQ(diag_status(), 0);
    EXPECT_EQ(SIO_USED_LOCK, 0u);
    EXPECT_FALSE(world.port_is_open());
  }
  int32_t exchange() {
    int32_t written = diag_write(hex("1d 7e").data(), 2);
    return written == 2 ? diag_read(answer) : written;
  }

  uint8_t answer[DLOAD_SIZE] = {};
};

TEST_F(SerialPort, open_sets_the_line_and_close_restores_it) {
  const termios found = [] {
    termios settings{};
    settings.c_iflag = ICRNL;
    settings.c_cc[VINTR] = 3;
    return settings;
  }();
  world.line_settings = found;
  ASSERT_EQ(diag_open(DEVICE), 1);
  EXPECT_EQ(diag_status(), 1);
  termios wanted{};
  wanted.c_iflag = 0x4;
  wanted.c_oflag = 0x1;
  wanted.c_cflag = 0x10B2;
  EXPECT_EQ(memcmp(&world.line_settings, &wanted, sizeof wanted), 0);
  EXPECT_EQ(world.flushes, 1);
  ASSERT_EQ(diag_open(DEVICE), 1);  // leaves no descriptor open
  diag_close();
  EXPECT_EQ(memcmp(&world.line_settings, &found, sizeof found), 0);
  expect_closed_and_free();
  diag_close();
  EXPECT_EQ(SER_SIG, 0);
}

TEST_F(SerialPort, a_failed_open_reads_as_open_until_the_first_write) {
  world.missing[DEVICE] = ENOENT;
  EXPECT_EQ(diag_open(DEVICE), PORT_ERROR);
  EXPECT_EQ(SER_SIG, -1);
  EXPECT_EQ(diag_status(), 1);
  EXPECT_EQ(exchange(), PORT_ERROR);
  expect_closed_and_free();
}

TEST_F(SerialPort, closed_port_fails_without_touching_descriptor_0) {
  EXPECT_EQ(exchange(), PORT_ERROR);
  EXPECT_EQ(diag_read(answer), PORT_ERROR);
  EXPECT_EQ(diag_read_wait_1sec(answer), PORT_ERROR);
  EXPECT_EQ(dload_read(answer), 0);
  EXPECT_EQ(world.polls_made, 0);
  expect_closed_and_free();
}

// A piece that does not end in a flag is joined with the next, even if it contains a flag; what
// follows a finished answer stays for the next read. A failure closes the port. A reply to a
// download may start with a flag, ends with a pause of 0.2 s, and never closes the port.
TEST_F(SerialPort, answers_and_their_time) {
  const Piece slow = {hex("01"), 4s}, after_a_second = {hex("01"), 950ms};
  const Piece packet = {Bytes(64, 0x11), 190ms}, late_packet = {Bytes(64, 0x11), 210ms};
  struct {
    const char* name;
    int32_t (*read)(uint8_t*);
    Answer pieces;
    int32_t result;
    Time takes;
    const char* bytes = "";
  } rows[] = {
      {"silence", diag_read, {{hex("01 02")}}, PORT_TIMEOUT, 5s},
      {"silence of a probe", diag_read_wait_1sec, {{hex("01")}}, PORT_TIMEOUT, 1s},
      {"silence in a download", dload_read, {}, 0, 4s},
      {"no end", diag_read, Answer(9, slow), PORT_TIMEOUT, 15s},
      {"no end of a probe", diag_read_wait_1sec, Answer(9, after_a_second), PORT_TIMEOUT, 3s},
      {"no end in a download", dload_read, Answer(30, packet), 21 * 64, 4s},
      {"too long", diag_read, {{Bytes(400, 0x55)}, {hex("7e")}}, PORT_ERROR, 0s},
      {"a full buffer", dload_read, {{Bytes(2048, 0x11)}, {Bytes(20)}, {hex("33")}}, 2068, 0s},
      {"a pause", dload_read, {packet, late_packet}, 64, 390ms},
      {"flag first", dload_read, {{hex("7e")}, packet, {hex("22 7e"), 190ms}, packet}, 67, 380ms},
      {"two answers", diag_read, {{hex("01 7e")}, {hex("02 7e")}}, 2, 0s, "01 7e"},
      {"three pieces",
       diag_read,
       {{hex("01")}, {hex("02 7e 03"), 4s}, {hex("04 7e"), 4s}},
       6,
       8s,
       "01 02 7e 03 04 7e"},
  };
  for (auto& row : rows) {
    SCOPED_TRACE(row.name);
    modem = Script();
    modem.answers = {row.pieces};
    ASSERT_EQ(diag_open(DEVICE), 1);
    ASSERT_EQ(diag_write(hex("1d 7e").data(), 2), 2);
    EXPECT_FALSE(try_claim_port(PortUse()));
    Time start = world.now();
    EXPECT_EQ(row.read(answer), row.result);
    EXPECT_EQ(world.now() - start, row.takes);
    EXPECT_EQ(SIO_USED_LOCK, 0u);
    EXPECT_EQ(diag_status(), row.result > 0 || row.read == dload_read);
    bool is_short = row.bytes[0] != '\0';
    EXPECT_EQ(is_short ? to_hex({answer, static_cast<size_t>(row.result)}) : "", row.bytes);
    bool another = is_short && row.pieces.size() == 2;
    EXPECT_EQ(another ? diag_read(answer) : 2, 2);
  }
}

TEST_F(SerialPort, a_download_waits_longer_while_the_modem_erases) {
  ASSERT_EQ(diag_open(DEVICE), 1);
  efs_clear = 1;
  diag_write(hex("06 7e").data(), 2);
  EXPECT_EQ(dload_read(answer), 0);
  EXPECT_EQ(world.now(), Time(30s));
}

// Another thread reopens the port during an exchange: the exchange can't read from the new port and
// doesn't affect it or its claim; its own claim is void.
TEST_F(SerialPort, a_port_that_is_replaced_ends_the_exchange_and_stays) {
  ASSERT_EQ(diag_open(DEVICE), 1);
  {
    PortUse port;
    ASSERT_TRUE(claim_port(port));
    ASSERT_EQ(diag_open(DEVICE), 1);
    EXPECT_NE(SER_SIG, port.fd);
    modem.answers = {{{hex("01 7e")}}};
    ASSERT_EQ(diag_write(hex("1d 7e").data(), 2), 2);
    EXPECT_EQ(read_port(port, answer, 2, monotonic_ms() + 5000), PORT_ERROR);
    EXPECT_FALSE(claim_port(port));
    release_port(port);
    EXPECT_EQ(fail_port(port, PORT_ERROR), PORT_ERROR);
    EXPECT_FALSE(try_claim_port(PortUse()));
    EXPECT_EQ(diag_read(answer), 2);
  }
  EXPECT_EQ(diag_status(), 1);
  diag_close();
  expect_closed_and_free();
}

TEST_F(SerialPort, the_longest_packet) {
  ASSERT_EQ(diag_open(DEVICE), 1);
  Bytes payload(2498, 0x7E);
  EXPECT_EQ(DiagPacketTXCRC(payload.data(), 2498, 1), PORT_ERROR);
  EXPECT_EQ(DiagPacketTXCRC(payload.data(), 2497, 1), 1 + 2 * 2497 + 2 + 1);
}

TEST_F(SerialPort, a_sender_waits_for_the_claim_and_then_gives_up) {
  ASSERT_EQ(diag_open(DEVICE), 1);
  {
    OtherExchange other;
    EXPECT_EQ(diag_write(hex("1d 7e").data(), 2), PORT_ERROR);
  }
  EXPECT_EQ(world.sleeps, std::vector<Time>(100, 2ms));
  EXPECT_TRUE(world.written.empty());
  expect_closed_and_free();
}

TEST_F(SerialPort, calls_that_fail_and_calls_that_are_short) {
  const std::deque<PortCall> ready_15_times(15, Accept{1}), empty_15_times(15, Accept{0});
  const std::deque<PortCall> ready_16_times(16, Accept{1}), empty_16_times(16, Accept{0});
  struct {
    const char* name;
    std::deque<PortCall> writes, polls, reads;
    int32_t result;  // above 0: the port stays open
  } rows[] = {
      {"write error", {Fail{EIO}}, {}, {}, PORT_ERROR},
      {"write error after a piece", {Accept{1}, Fail{EIO}}, {}, {}, PORT_ERROR},
      {"14 writes that take nothing", std::deque<PortCall>(14, Accept{0}), {}, {}, 2},
      {"15 writes that take nothing", std::deque<PortCall>(15, Accept{0}), {}, {}, 0},
      {"poll error", {}, {Fail{EBADF}}, {}, PORT_ERROR},
      {"read error", {}, {}, {Fail{EIO}}, PORT_ERROR},
      {"nothing to read", {}, {}, {Fail{EAGAIN}}, 2},
      {"interrupted", {Fail{EINTR}}, {Fail{EINTR}, Fail{EINTR}}, {Fail{EINTR}}, 2},
      {"byte by byte", {Accept{1}, Accept{1}}, {}, {Accept{1}, Accept{1}}, 2},
      {"15 empty reads", {}, ready_15_times, empty_15_times, 2},
      {"16 empty reads", {}, ready_16_times, empty_16_times, PORT_ERROR},
  };
  for (auto& row : rows) {
    ASSERT_EQ(diag_open(DEVICE), 1);
    modem.answers = {{{hex("01 7e")}}};
    world.writes = row.writes;
    world.polls = row.polls;
    world.reads = row.reads;
    EXPECT_EQ(exchange(), row.result) << row.name;
    EXPECT_TRUE(world.writes.empty()) << row.name;
    EXPECT_TRUE(world.reads.empty()) << row.name;
    EXPECT_EQ(diag_status(), row.result > 0) << row.name;
    if (row.result > 0) diag_close();
    expect_closed_and_free();
  }
}
