// The program itself on a real terminal: first line, answers, link, clean end.
#include <poll.h>

#include "simulator/line/frame.h"
#include "tests/support/program.h"
#include "tests/support/temporary_folder.h"

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

class SimulatorProgram : public testing::Test {
 protected:
  TemporaryFolder folder;
  std::string link = folder / "modem";
};

TEST_F(SimulatorProgram, answers_on_its_terminal_and_ends_cleanly) {
  std::filesystem::create_symlink("/dev/pts/none", link);  // left by a killed simulator
  for (int signal : {SIGTERM, SIGINT}) {
    Program program({SIMULATOR, "healthy-wcdma", "--link", link, "--exit-with-parent"});
    EXPECT_EQ(program.line(), link);
    Bytes expected = sim::frame(Bytes{0xCF, 0x20, 0, 0, 0, 0xB5, 0xFF});
    EXPECT_EQ(ask_terminal(link, {0xCF, 0x20, 0}), expected);
    EXPECT_EQ(ask_terminal(link, {0xCF, 0x20, 0}), expected);  // the host closed and came back
    EXPECT_EQ(program.end(signal), 0);
    EXPECT_FALSE(std::filesystem::is_symlink(link));
  }
}

TEST_F(SimulatorProgram, a_hang_up_takes_the_terminal_away) {
  Program program({SIMULATOR, "--link", link, "--fault", "hang-up:request=rssi"});
  program.line();
  EXPECT_TRUE(ask_terminal(link, {0xCF, 0x20, 0}).empty());
  EXPECT_FALSE(std::filesystem::exists(link));  // follows the link
  EXPECT_EQ(program.end(SIGTERM), 0);
}

TEST_F(SimulatorProgram, a_half_written_modem_stays_in_its_boot_rom_when_it_is_started_again) {
  std::string scenario = folder.write("half.toml", "[device]\nhalf_written = true\n");
  for (const std::string& start : {scenario, std::string("healthy-wcdma")}) {
    Program program({SIMULATOR, "--link", link, "--state", folder / "state", start});
    EXPECT_EQ(program.line(), link);
    EXPECT_EQ(ask_terminal(link, {0x06}), (Bytes{0x7E})) << start;  // an acknowledgement follows
    program.end(SIGKILL);
  }
}

TEST_F(SimulatorProgram, a_link_that_was_left_does_not_lead_to_the_next_owner_of_the_terminal) {
  Program killed({SIMULATOR, "--link", link});
  killed.line();
  killed.end(SIGKILL);
  Program other({SIMULATOR, "--link", folder / "other"});  // gets the name that is free
  other.line();
  Program program({SIMULATOR, "--link", link});
  EXPECT_EQ(program.line(), link);
  EXPECT_NE(std::filesystem::canonical(link), std::filesystem::canonical(folder / "other"));
  Program refused({SIMULATOR, "--link", link});
  EXPECT_EQ(refused.line(), "zop-modem-sim: can't make the link " + link +
                                ": File exists; name another, or remove it first");
}

TEST_F(SimulatorProgram, a_command_runs_once_at_its_request_before_the_answer) {
  std::string seen = folder / "seen";
  Program program(
      {SIMULATOR, "--link", link, "--run", "esn:exit 3", "--run",
       "rssi,skip=1:echo $SIM_REQUEST >> " + seen + "; kill -TERM $$; echo >> " + seen});
  program.line();
  for (const char* content : {"", "rssi\n", "rssi\n"}) {
    EXPECT_FALSE(ask_terminal(link, {0xCF, 0x20, 0}).empty());
    EXPECT_EQ(folder.read("seen"), content);
  }
  EXPECT_FALSE(ask_terminal(link, {0x01}).empty());
  program.send(SIGTERM);
  EXPECT_EQ(program.line(), "zop-modem-sim: the command at rssi failed (-1)");
  EXPECT_EQ(program.line(), "zop-modem-sim: the command at esn failed (3)");
}

TEST(SimulatorProgramUsage, commands_that_are_refused) {
  const char* const rows[][2] = {
      {"rain:true", "unknown request \"rain\"; zop-modem-sim --list-requests shows them"},
      {"rssi", "\"rssi\" is not REQUEST[,skip=N]:COMMAND"},
      {"rssi:", "\"rssi:\" is not REQUEST[,skip=N]:COMMAND"},
      {"dmss_go,skip=-1:true", "\"skip=-1\" is not skip=N"},
      {"dmss_go,skip=1x:true", "\"skip=1x\" is not skip=N"},
      {"dmss_go,count=1:true", "\"count=1\" is not skip=N"},
  };
  for (auto& [text, reason] : rows) {
    Program program({SIMULATOR, "--run", text});
    EXPECT_EQ(program.line(), std::string("zop-modem-sim: --run: ") + reason);
    EXPECT_EQ(program.exit_code(), 2) << text;
  }
}
