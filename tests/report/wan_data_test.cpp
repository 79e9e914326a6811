// What the report gathers besides the modem's screen: the PPP link, name servers, the daemon's age,
// the SIM's lists.
#include "report/wan_data.h"

#include <filesystem>
#include <fstream>

#include "report/supplement.h"
#include "tests/module/module_fixture.h"
#include "tests/support/temporary_folder.h"

using namespace test;
namespace fs = std::filesystem;

class WanData : public ModuleTest {
 protected:
  void SetUp() override {
    ModuleTest::SetUp();
    world.missing.clear();
    for (const char* path : {"/proc/net/dev", "/etc/resolv.conf", "/proc/uptime", "/proc"}) {
      world.files[path] = root / fs::path(path).relative_path();
    }
    fs::create_directories(root / "proc/net");
    fs::create_directories(root / "etc");
  }
  void write(const std::string& path, const std::string& text) {
    fs::create_directories((root / path).parent_path());
    std::ofstream(root / path) << text;
    world.files["/" + path] = root / path;
  }
  void process(unsigned pid, const std::string& name, unsigned long start_ticks) {
    std::string stat = std::to_string(pid) + " " + name + " S";
    for (int field = 4; field < 22; ++field) stat += " 0";
    write("proc/" + std::to_string(pid) + "/stat",
          stat + " " + std::to_string(start_ticks) + " 0\n");
  }
  TemporaryFolder temporary;
  fs::path root = temporary.path;
};

TEST_F(WanData, addresses_or_why_there_are_none) {
  struct {
    int ppp0_error, socket_error;
    const char *local, *peer;
  } rows[] = {
      {0, 0, "10.64.1.2", "10.112.112.112"},
      {ENODEV, 0, "not connected", "not connected"},
      {EADDRNOTAVAIL, 0, "connecting", "connecting"},
      {EPERM, 0, "1", "1"},
      {0, EMFILE, "se=24", "se=24"},
  };
  world.ppp0_addresses = {"10.64.1.2", "10.112.112.112"};
  for (auto& row : rows) {
    world.ppp0_error = row.ppp0_error;
    world.socket_error = row.socket_error;
    prv_get_wan_data();
    EXPECT_STREQ(gDiagInfo.local_address, row.local);
    EXPECT_STREQ(gDiagInfo.peer_address, row.peer);
  }
}

TEST_F(WanData, counters) {
  struct {
    const char* line;
    uint32_t rx, tx, rx_errors, tx_errors;
  } rows[] = {
      {"  ppp0: 1000 10 1 2 3 4 0 0 2000 20 10 20 30 40 50 0", 1000, 2000, 10, 150},
      {"ppp0:1000 10 1 2 3 4 0 0 2000 20 10 20 30 40 50 0", 1000, 2000, 10, 150},
      {"  ppp0: 1000 10 1 2 3 4 0 0 2000 20 10 20 30 40 50", ~0u, ~0u, ~0u, ~0u},
      {"  ppp01: 1000 10 1 2 3 4 0 0 2000 20 10 20 30 40 50 0", ~0u, ~0u, ~0u, ~0u},
      {"  eth0: 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1", ~0u, ~0u, ~0u, ~0u},
  };
  for (auto& row : rows) {
    write("proc/net/dev", std::string("Inter-|   Receive\n face |bytes\n    lo: 5 5\n") + row.line +
                              "\n  ppp0: 7 7 7 7 7 7 7 7 7 7 7 7 7 7 7 7\n");
    prv_get_wan_data();
    bool other = std::string(row.line).find("eth0") != std::string::npos;
    EXPECT_EQ(gDiagInfo.rx_bytes, other ? 7 : row.rx) << row.line;
    EXPECT_EQ(gDiagInfo.tx_bytes, other ? 7 : row.tx) << row.line;
    EXPECT_EQ(gDiagInfo.rx_errors, other ? 28 : row.rx_errors) << row.line;
    EXPECT_EQ(gDiagInfo.tx_errors, other ? 35 : row.tx_errors) << row.line;
  }
}

TEST_F(WanData, the_first_two_name_servers) {
  write("etc/resolv.conf",
        "# nameserver 9.9.9.9\nsearch x\n nameserver bad\nnameserver\t10.0.0.1\n"
        "nameserver 10.0.0.2\nnameserver 10.0.0.3\n");
  prv_get_wan_data();
  EXPECT_EQ(gDiagInfo.name_servers[0], 0x0100000Au);
  EXPECT_EQ(gDiagInfo.name_servers[1], 0x0200000Au);
  fs::remove(root / "etc/resolv.conf");
  prv_get_wan_data();
  EXPECT_EQ(gDiagInfo.name_servers[0], 0u);
}

TEST_F(WanData, the_daemon_is_found_by_its_name) {
  unsigned long hertz = static_cast<unsigned long>(sysconf(_SC_CLK_TCK));
  vurn_set_log_mask(VURN_LOG_GENERAL);
  process(7, "(pppdx)", hertz);
  process(9, "(xpppd)", hertz);
  prv_get_wan_data();
  EXPECT_EQ(gDiagInfo.pppd_start, 0u);
  EXPECT_EQ(gDiagInfo.pppd_pid, 0u);
  process(814, "(pppd)", 120 * hertz + hertz / 2);
  prv_get_wan_data();
  EXPECT_EQ(gDiagInfo.pppd_start, 120u);
  EXPECT_EQ(gDiagInfo.pppd_pid, 814u);
  EXPECT_EQ(log_lines(), "D zop:found (pppd) at pid 814\n");
  // The process found is checked directly; after it has ended, another one is searched for.
  prv_get_wan_data();
  EXPECT_EQ(log_lines(), "D zop:found (pppd) at pid 814\n");
  fs::remove_all(root / "proc/814");
  process(815, "(pppd)", 300 * hertz);
  prv_get_wan_data();
  EXPECT_EQ(gDiagInfo.pppd_pid, 815u);
  EXPECT_EQ(gDiagInfo.pppd_start, 300u);
  fs::remove_all(root / "proc/815");
  world.log.clear();
  world.missing["/proc"] = EACCES;
  prv_get_wan_data();
  EXPECT_EQ(log_lines(), "D zop:can't opendir /proc: errno = 13\n");
  EXPECT_EQ(gDiagInfo.pppd_pid, 0u);
}

TEST_F(WanData, uptime_with_and_without_the_time_asleep) {
  write("proc/uptime", "1234.50 99.00 0 77\n");
  prv_get_uptime();
  EXPECT_EQ(gDiagInfo.awake_seconds, 1235u);
  EXPECT_EQ(gDiagInfo.asleep_seconds, 77u);
  write("proc/uptime", "1300.49 99.00\n");
  prv_get_uptime();
  EXPECT_EQ(gDiagInfo.awake_seconds, 1300u);
  EXPECT_EQ(gDiagInfo.asleep_seconds, 77u);
}

TEST_F(WanData, operator_lists_of_every_length) {
  struct {
    unsigned total;
    int blocks;
    uint32_t stored;
    const char* error;
  } rows[] = {
      {0, 1, 0, ""},   {20, 1, 20, ""},   {21, 2, 21, ""},
      {45, 3, 45, ""}, {140, 7, 140, ""}, {200, 7, 140, "E zop:toomanyoplmns:found=200,max=128:\n"},
  };
  for (auto& row : rows) {
    for (int block = 0; block < 11; ++block) {
      uint8_t first = static_cast<uint8_t>(block * 20 + 1);
      std::string request = "cf 6b 00 " + to_hex(Bytes{first});
      answers[request] = "cf 6b 00 00 00 " + to_hex(Bytes{static_cast<uint8_t>(row.total), 255});
    }
    diag_open(DEVICE);
    gRefetchPlmns = true;
    modem.payloads.clear();
    world.log.clear();
    vurn_set_log_mask(VURN_LOG_ERROR);
    prv_get_supplement_data();
    std::string requests = asked();
    int blocks = 0;
    for (size_t at = 0; (at = requests.find("cf 6b", at)) != std::string::npos; ++at) ++blocks;
    EXPECT_EQ(blocks, row.blocks) << row.total;
    EXPECT_EQ(gDiagInfo.oplmn_count, row.stored);
    EXPECT_EQ(world.log_text(), row.error);
    EXPECT_FALSE(gRefetchPlmns);
    diag_close();
  }
}

TEST_F(WanData, a_list_that_fails_keeps_what_came_before_and_the_others_are_read) {
  diag_open(DEVICE);
  gRefetchPlmns = true;
  answers["cf 6b 00 01"] = "cf 6b 00 00 00 32 14";
  answers["cf 6b 00 15"] = "cf 6b 00 01 00";
  for (const char* request : {"cf 24 00", "cf 60 00", "cf 61 00"}) refuse(request);
  garble("cf 24 00");
  vurn_set_log_mask(VURN_LOG_ERROR | VURN_LOG_STUCK);
  gDiagInfo.data_service_mode = 3;
  prv_get_supplement_data();
  EXPECT_EQ(gDiagInfo.oplmn_count, 20u);
  EXPECT_EQ(gDiagInfo.data_service_mode, 3);
  EXPECT_EQ(log_lines(),
            "E zop:get:param=data_service_mode,error=7:can't get parameter\n"
            "D zop:re-fetching PLMNs\n"
            "D zop:fetched a block containing 20 (of 50) oplmn entries\n"
            "E zop:get:param=oplmn,error=10:can't get parameter\n"
            "D zop:fetched 20 oplmn entries in 1 blocks\n"
            "E zop:get:param=hplmn,error=10:can't get parameter\n"
            "E zop:get:param=rplmn,error=10:can't get parameter\n");
  // Unless the lists are requested again, only the registered network is read.
  modem.payloads.clear();
  prv_get_supplement_data();
  EXPECT_EQ(asked(), "cf 24 00\ncf 61 00\n");
  diag_close();
}
