// Whole reports of two scenarios and the names of all codes, compared with readable files.
// ZOP_REBUILD_GOLDEN=1 rewrites them; review the difference before committing it.
#include <cstdlib>
#include <fstream>
#include <set>
#include <sstream>

#include "report/rendering.h"
#include "simulator/scenario/scenario.h"
#include "tests/module/module_world.h"
#include "tests/support/simulated_far_end.h"

using namespace std::chrono_literals;
using namespace test;

class Golden : public ModuleTest {
 protected:
  static void expect_file(const std::string& name, const std::string& text) {
    std::string path = GOLDEN "/" + name;
    if (std::getenv("ZOP_REBUILD_GOLDEN") != nullptr) std::ofstream(path) << text;
    std::stringstream kept;
    kept << std::ifstream(path).rdbuf();
    EXPECT_EQ(text, kept.str()) << name;
  }
  void report(const std::string& scenario) {
    SimulatedFarEnd far_end(sim::load_scenario(SCENARIOS "/" + scenario + ".toml"));
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
    static const std::regex stamp("t=[0-9a-f]+,");  // differs in each report
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

// The named codes of each field, by their byte on the wire.
TEST_F(Golden, names) {
  std::ostringstream names;
  auto show = [&](const zop_log_item& row, int code) {
    const char* text = nullptr;
    int length = 0;
    EXPECT_EQ(row.format(&row, &text, &length, 0), 1) << row.label;
    std::string name(text, static_cast<size_t>(length));
    if (name.ends_with(" Unknown")) return;
    names << row.label << ' ' << code << ": " << name << '\n';
  };
  const std::set<std::string> fields = {
      "Band",        "System Mode",    "Data Service Mode", "Service Status",   "Reg Status",
      "Call Status", "MM LU State",    "GMM State",         "PDP State",        "Network Mode",
      "PMM Mode",    "Selection Mode", "HSDPA Status",      "HSDPA Indication", "EGPRS Indication",
      "MM LU Error", "PDP Rej Reason"};
  for (const zop_log_item* row = gLogItems; row->type != ZOP_ITEM_END; ++row) {
    for (int code = 0; code < 256 && fields.contains(row->label); ++code) {
      bool gsm = std::string(row->label).starts_with("EGPRS");
      gDiagInfo.screen.system_mode = gsm ? ZOP_SCREEN_GSM : ZOP_SCREEN_WCDMA;
      // Wider fields hold 255 as -1.
      memset(const_cast<void*>(row->value), code == 255 ? 0xFF : 0, static_cast<size_t>(row->size));
      *static_cast<uint8_t*>(const_cast<void*>(row->value)) = static_cast<uint8_t>(code);
      show(*row, code);
    }
    for (int code = 0; code < 9 && row->label == std::string("SIM Status"); ++code) {
      gDiagInfo.sim_status = gDiagInfo.lock_status = code;
      show(*row, code);
    }
  }
  expect_file("names", names.str());
}
