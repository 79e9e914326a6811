// Whole reports of two scenarios, held against files that a person can read. ZOP_REBUILD_GOLDEN=1
// writes them anew; look at the difference before it is kept.
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "simulator/scenario/scenario.h"
#include "tests/module/module_fixture.h"
#include "tests/support/simulated_far_end.h"

using namespace std::chrono_literals;
using namespace test;

class Golden : public ModuleTest {
 protected:
  static void expect_file(const std::string& name, const std::string& text) {
    std::string path = std::string(GOLDEN) + "/" + name;
    if (std::getenv("ZOP_REBUILD_GOLDEN") != nullptr) std::ofstream(path) << text;
    std::stringstream kept;
    kept << std::ifstream(path).rdbuf();
    EXPECT_EQ(text, kept.str()) << name;
  }
  void report(const std::string& scenario) {
    SimulatedFarEnd far_end(sim::load_scenario(std::string(SCENARIOS) + "/" + scenario + ".toml"));
    world.far_end = &far_end;
    world.ppp0_error = 0;
    world.ppp0_addresses = {"10.64.1.2", "10.112.112.112"};
    ASSERT_EQ(vurn_open(), VURN_OK);
    world.advance(3s);  // two screens
    char imei[32];
    vurn_get_radio_cert_param1(imei, sizeof imei);
    const char* names[] = {"no carrier"};
    vurn_set_log_mask(VURN_LOG_INFO);
    world.log.clear();
    EXPECT_EQ(vurn_log_message(0, names), VURN_OK);
    world.advance(1600ms);
    static const std::regex stamp("t=[0-9a-f]+,");  // grows from report to report
    expect_file(scenario + ".syslog", std::regex_replace(world.log_text(), stamp, "t=STAMP,"));
    vurn_set_log_mask(0);
    char text[8192];
    EXPECT_EQ(vurn_get_log_string(text, sizeof text), VURN_OK);
    expect_file(scenario + ".log-string", text);
    vurn_close(1);
  }
};

TEST_F(Golden, wcdma) { report("healthy-wcdma"); }
TEST_F(Golden, gsm) { report("healthy-gsm"); }
