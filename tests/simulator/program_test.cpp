// The program itself on a real terminal: first line, answers, link, clean end, bad usage.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include "simulator/line/frame.h"
#include "tests/support/program.h"

using sim::Bytes;

// Sends a frame to the terminal and reads until a flag comes.
static Bytes ask_terminal(const std::string& path, const Bytes& payload) {
  int fd = open(path.c_str(), O_RDWR | O_NOCTTY);
  if (fd < 0) return {};
  Bytes wire = sim::frame(payload), answer;
  if (write(fd, wire.data(), wire.size()) < 0) return {};
  while (answer.empty() || answer.back() != 0x7E) {
    pollfd input = {fd, POLLIN, 0};
    uint8_t byte;
    if (poll(&input, 1, 5000) != 1 || read(fd, &byte, 1) != 1) break;
    answer.push_back(byte);
  }
  close(fd);
  return answer;
}

TEST(SimulatorProgram, answers_on_its_terminal_and_ends_cleanly) {
  std::string link = testing::TempDir() + "modem-" + std::to_string(getpid());
  for (int signal : {SIGTERM, SIGINT}) {
    Program program({SIMULATOR, "healthy-wcdma", "--link", link, "--exit-with-parent"});
    EXPECT_EQ(program.line(), link);
    Bytes expected = sim::frame(Bytes{0xCF, 0x20, 0, 0, 0, 0xB5, 0xFF});
    EXPECT_EQ(ask_terminal(link, {0xCF, 0x20, 0}), expected);
    EXPECT_EQ(ask_terminal(link, {0xCF, 0x20, 0}), expected);  // the host closed and came back
    program.end(signal);
    EXPECT_EQ(program.exit_code(), 0);
    struct stat file;
    EXPECT_NE(lstat(link.c_str(), &file), 0);
  }
}

TEST(SimulatorProgram, a_hang_up_takes_the_terminal_away) {
  std::string link = testing::TempDir() + "modem-gone-" + std::to_string(getpid());
  Program program(
      {SIMULATOR, "--link", link, "--fault", "hang-up:request=rssi", "--exit-with-parent"});
  program.line();
  EXPECT_TRUE(ask_terminal(link, {0xCF, 0x20, 0}).empty());
  EXPECT_NE(access(link.c_str(), F_OK), 0);
  program.end(SIGTERM);
  EXPECT_EQ(program.exit_code(), 0);
}

TEST(SimulatorProgram, bad_usage_is_told_in_one_line) {
  struct {
    std::vector<std::string> words;
    const char* line;
  } rows[] = {
      {{"nowhere"}, "zop-modem-sim: no shipped scenario \"nowhere\"; --list-scenarios shows them"},
      {{"./nowhere.toml"}, "zop-modem-sim: ./nowhere.toml: can't be read"},
      {{"--fault", "rain"}, "zop-modem-sim: --fault: unknown fault \"rain\""},
  };
  for (auto& row : rows) {
    row.words.insert(row.words.begin(), SIMULATOR);
    Program program(row.words);
    EXPECT_EQ(program.line().substr(0, strlen(row.line)), row.line);
    EXPECT_EQ(program.exit_code(), 2);
  }
}

TEST(SimulatorProgram, the_link_of_a_killed_one_is_taken_over) {
  std::string link = testing::TempDir() + "dead-" + std::to_string(getpid());
  ASSERT_EQ(symlink("/dev/pts/none", link.c_str()), 0);
  Program program({SIMULATOR, "--link", link});
  EXPECT_EQ(program.line(), link);
  EXPECT_FALSE(ask_terminal(link, {0xCF, 0x20, 0}).empty());
  program.end(SIGTERM);
  EXPECT_EQ(program.exit_code(), 0);
}

// A link that is somebody else's is left alone.
TEST(SimulatorProgram, an_existing_link_is_not_replaced) {
  std::string path = testing::TempDir() + "taken-" + std::to_string(getpid());
  close(open(path.c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600));
  Program program({SIMULATOR, "--link", path});
  EXPECT_NE(program.line().find("can't make the link"), std::string::npos);
  EXPECT_EQ(program.exit_code(), 1);
  EXPECT_EQ(access(path.c_str(), F_OK), 0);
  unlink(path.c_str());
}
