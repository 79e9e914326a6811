// The country code and its file: every kind of content, and the lines logged.
#include <fcntl.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "commands/exchange.h"
#include "link/frame_codec.h"
#include "tests/module/module_fixture.h"
#include "tests/support/temporary_folder.h"

using namespace test;
namespace fs = std::filesystem;

static const char MCC_FILE[] = "/var/local/wan/mcc";

class Mcc : public ModuleTest {
 protected:
  void SetUp() override {
    ModuleTest::SetUp();
    world.files[MCC_FILE] = file;
    vurn_set_log_mask(VURN_LOG_TRACE | VURN_LOG_INFO | VURN_LOG_ERROR);
    diag_open(DEVICE);
    forget();
  }
  void TearDown() override { diag_close(); }
  void modem_says(const std::string& mcc) {
    answers["cf 30 00"] = "cf 30 00 00 00 " + to_hex(Bytes(mcc.begin(), mcc.end()));
  }
  // Makes the module remember a country that no test uses.
  void forget() {
    modem_says("999");
    int ignored;
    vurn_get_mcc(&ignored);
    fs::remove(file);
    world.log.clear();
  }
  int ask(const std::string& mcc) {
    modem_says(mcc);
    value = 4711;
    world.log.clear();
    return vurn_get_mcc(&value);
  }
  std::string content() const {
    std::ifstream in(file);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  TemporaryFolder temporary;
  fs::path folder = temporary.path;
  std::string file = folder / "mcc";
  int value = 4711;
};

static const char ASKING[] = "D zop:getting mcc to see if it has changed\n";

TEST_F(Mcc, a_first_country_is_a_change_and_is_kept) {
  mode_t mask = umask(022);
  EXPECT_EQ(ask("310"), VURN_OK);
  umask(mask);
  EXPECT_EQ(value, 310);
  EXPECT_EQ(log_lines(), std::string(ASKING) +
                             "D def:current MCC = 310 no previous MCC\n"
                             "I zop:mccchanged:mcc=310:mcc has changed\n");
  EXPECT_EQ(content(), "310");
  EXPECT_EQ(fs::status(file).permissions(), fs::perms(0644));
  // The file is read again only when the country changes.
  fs::remove(file);
  EXPECT_EQ(ask("310"), VURN_OK);
  EXPECT_EQ(log_lines(), ASKING);
  EXPECT_FALSE(fs::exists(file));
}

TEST_F(Mcc, what_the_file_holds) {
  struct {
    const char* before;
    const char* mcc;
    int result;
    int value;
    const char* lines;
    const char* after;
  } rows[] = {
      {"310", "310", 0, 310, "D def:current MCC = 310 previous MCC = 310\n", "310"},
      {"310\n", "001", 0, 1,
       "D def:current MCC = 001 previous MCC = 310\nI zop:mccchanged:mcc=001:mcc has changed\n",
       "001\n"},
      {"31", "262", 0, 262, "E zop:readfile:name=\"/var/local/wan/mcc\",errno=0:can't read file\n",
       ""},
      {"262", "FFF", 2, 0,
       "D def:current MCC = FFF previous MCC = 262\nI zop:mccchanged:mcc=FFF:mcc has changed\n"
       "E zop:getmcc:mcc=FFF:bad value for mcc\n",
       "FFF"},
  };
  for (auto& row : rows) {
    forget();
    std::ofstream(file) << row.before;
    EXPECT_EQ(ask(row.mcc), row.result) << row.before;
    EXPECT_EQ(value, row.value);
    EXPECT_EQ(log_lines(), std::string(ASKING) + row.lines);
    EXPECT_EQ(content(), row.after);
    EXPECT_EQ(fs::exists(file), *row.after != '\0');
  }
}

TEST_F(Mcc, files_that_fail) {
  std::string change = "I zop:mccchanged:mcc=310:mcc has changed\n";
  std::string first = "D def:current MCC = 310 no previous MCC\n";
  world.missing[MCC_FILE] = EACCES;
  EXPECT_EQ(ask("310"), VURN_OK);
  EXPECT_EQ(log_lines(),
            std::string(ASKING) +
                "E zop:openfile:name=\"/var/local/wan/mcc\",errno=13:can't open file\n");
  world.missing.clear();
  EXPECT_EQ(ask("310"), VURN_OK);  // tried again only with the next country
  EXPECT_EQ(log_lines(), ASKING);

  forget();
  world.files[MCC_FILE] = folder / "no" / "mcc";
  EXPECT_EQ(ask("310"), VURN_OK);
  EXPECT_EQ(log_lines(),
            ASKING + first + change +
                "E zop:openfile:name=\"/var/local/wan/mcc\",errno=2:can't open file\n");

  world.files[MCC_FILE] = folder;  // a folder can be opened but not read
  EXPECT_EQ(ask("262"), VURN_OK);
  EXPECT_EQ(log_lines(),
            std::string(ASKING) +
                "E zop:readfile:name=\"/var/local/wan/mcc\",errno=21:can't read file\n");

  world.files[MCC_FILE] = file;
  forget();
  world.files[MCC_FILE] = folder / "full";
  fs::create_symlink("/dev/full", folder / "full");
  EXPECT_EQ(ask("310"), VURN_OK);  // reads as zeros, so the country differs
  EXPECT_EQ(log_lines(),
            ASKING + std::string("D def:current MCC = 310 previous MCC = \n") + change +
                "E zop:writefile:name=\"/var/local/wan/mcc\",errno=28:can't write file\n");
  EXPECT_FALSE(fs::is_symlink(folder / "full"));  // an incomplete file is removed
}

TEST_F(Mcc, bad_arguments_and_a_modem_that_does_not_tell) {
  modem.payloads.clear();
  EXPECT_EQ(vurn_get_mcc(nullptr), VURN_ERR_NULL_ARGUMENT);
  EXPECT_TRUE(modem.payloads.empty());
  EXPECT_TRUE(world.log.empty());
  value = 4711;
  diag_close();
  EXPECT_EQ(vurn_get_mcc(&value), VURN_ERR_FAILED);
  EXPECT_EQ(log_lines(), std::string(ASKING) + "E zop:get:param=mcc,error=1:can't get parameter\n");
  EXPECT_EQ(value, 4711);
}

// A command in progress on another thread may be using them.
TEST_F(Mcc, leaves_the_command_buffers_alone) {
  memset(ft_buff, 0x11, 8);
  memset(fr_buff, 0x22, 8);
  memset(m_pTxBuf, 0x33, 8);
  EXPECT_EQ(ask("310"), VURN_OK);
  EXPECT_EQ(ft_buff[0], 0x11);
  EXPECT_EQ(fr_buff[0], 0x22);
  EXPECT_EQ(m_pTxBuf[0], 0x33);
}
