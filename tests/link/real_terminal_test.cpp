// The port on a real pseudo-terminal, without a World: every byte value, a full line, an unplugged
// device, a host without standard streams.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include "link/exchange.h"
#include "tests/support/fresh_link.h"
#include "tests/support/world.h"

using test::fresh_link;
using test::hex;

class RealTerminal : public testing::Test {
 protected:
  void SetUp() override {
    fresh_link();
    master = posix_openpt(O_RDWR | O_NOCTTY);
    if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0) {
      GTEST_SKIP() << "no pseudo-terminals here";
    }
    path = ptsname(master);
    slave = open(path.c_str(), O_RDWR | O_NOCTTY);
  }
  void TearDown() override {
    diag_close();
    close(slave);
    close(master);
  }
  int master = -1;
  int slave = -1;
  std::string path;
};

TEST_F(RealTerminal, carries_every_byte_value) {
  ASSERT_EQ(diag_open(path.c_str()), 1);
  EXPECT_TRUE(fcntl(SER_SIG, F_GETFD) & FD_CLOEXEC);
  uint8_t sent[257];
  for (unsigned i = 0; i < 256; ++i) sent[i] = static_cast<uint8_t>(i);
  sent[256] = 0x7E;
  ASSERT_EQ(write(master, sent, sizeof sent), static_cast<ssize_t>(sizeof sent));
  uint8_t received[RAW_ANSWER_SIZE];
  ASSERT_EQ(diag_read(received), 257);
  EXPECT_EQ(memcmp(sent, received, sizeof sent), 0);
}

// The terminal buffers a few thousand bytes; only then does a write have to wait.
TEST_F(RealTerminal, a_write_to_a_full_line_can_be_abandoned) {
  ASSERT_EQ(diag_open(path.c_str()), 1);
  PortUse port([] { return false; });
  uint32_t sent = 0;
  int32_t written = 1;
  for (int i = 0; i < 1000 && written > 0; ++i) {
    written = write_port(port, test::Bytes(64, 0x55).data(), 64, &sent);
  }
  EXPECT_EQ(written, PORT_ABANDONED);
  EXPECT_EQ(diag_status(), 1);
}

TEST_F(RealTerminal, an_unplugged_device_fails_the_exchange) {
  ASSERT_EQ(diag_open(path.c_str()), 1);
  ASSERT_EQ(diag_write(hex("1d 7e").data(), 2), 2);
  close(slave);
  close(master);
  slave = master = -1;
  uint8_t answer[RAW_ANSWER_SIZE];
  EXPECT_EQ(diag_read(answer), PORT_ERROR);
  EXPECT_EQ(diag_status(), 0);
}

// A daemon may run with descriptors 0 to 2 closed: the port must not become one of them.
TEST_F(RealTerminal, stays_off_the_standard_streams) {
  pid_t child = fork();
  if (child == 0) {
    for (int fd : {0, 1, 2}) close(fd);
    bool good = diag_open(path.c_str()) == 1 && SER_SIG > 2 && diag_status() == 1;
    diag_close();
    bool left_closed = fcntl(0, F_GETFD) < 0 && fcntl(1, F_GETFD) < 0;
    _exit(good && left_closed ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
}
