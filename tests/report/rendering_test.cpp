// Rendering: what fits and what is left out, line breaks in syslog.
#include "report/rendering.h"

#include <algorithm>

#include "report/field_test.h"
#include "report/text.h"
#include "tests/module/module_world.h"

using namespace std::chrono_literals;
using namespace test;

class Rendering : public ModuleTest {
 protected:
  Rendering() {
    prv_zop_init_logging();
    saved.assign(gLogItems, gLogItems + item_count());
    world.advance(1000h * ++reports);  // so that the tests' stamps differ
  }
  ~Rendering() override { std::copy(saved.begin(), saved.end(), gLogItems); }
  static size_t item_count() {
    size_t count = 0;
    while (gLogItems[count].type != ZOP_ITEM_END) ++count;
    return count;
  }
  static zop_log_item& item(const std::string& label) {
    zop_log_item* item = gLogItems;
    while (item->label == nullptr || label != item->label) ++item;
    return *item;
  }
  std::string log_string(unsigned size = 8192) {
    std::string text(size, '#');
    result = prv_zop_output_to_log_string(text.data(), static_cast<int>(size), 1);
    return text.c_str();
  }
  // The pairs of the last report in syslog.
  std::string syslog_report(const char* exception, int snapshot) {
    world.log.clear();
    vurn_set_log_mask(VURN_LOG_INFO);
    prv_zop_output_to_syslog(1, exception, snapshot);
    vurn_set_log_mask(0);
    return world.log_text();
  }
  static inline int reports = 0;
  std::vector<zop_log_item> saved;
  int result = -1;
};

TEST_F(Rendering, the_log_string_leaves_out_what_does_not_fit) {
  strcpy(gDiagInfo.screen.imei, "004999010640000");
  std::string whole = log_string();
  EXPECT_EQ(result, 1);
  EXPECT_TRUE(
      whole.starts_with("      ********* MODEM *********\nIMEI: 004999010640000\nLibrary: \n"));
  EXPECT_EQ(log_string(static_cast<unsigned>(whole.size()) + 2), whole);
  EXPECT_EQ(result, 1);
  // Too small for the IMEI, large enough for a shorter item after it.
  std::string cut = log_string(48);
  EXPECT_EQ(result, 0);
  EXPECT_EQ(cut, "      ********* MODEM *********\nLibrary: \nN1: \n");
  for (unsigned size : {0u, 1u, 2u}) {
    std::string text(4, '#');
    EXPECT_EQ(prv_output_somewhere(nullptr, 0, 0, text.data(), size), 0);
    EXPECT_EQ(text.substr(size), std::string(4 - size, '#'));
  }
}

TEST_F(Rendering, syslog_pairs) {
  strcpy(gDiagInfo.screen.network_name, "A:B,C");
  std::string report = syslog_report("dial, failed: 3", 0);
  EXPECT_NE(report.find(",Network Name=A=B;C,MCC MNC= ,"), std::string::npos) << report;
  EXPECT_NE(report.find(",Exc=dial; failed= 3,n="), std::string::npos) << report;
  EXPECT_NE(log_string().find("Network Name: A:B,C\n"), std::string::npos);
  EXPECT_EQ(report.find("IMEI"), std::string::npos);
  item("Network Name").flags |= ZOP_ITEM_DOTS;
  item("Network Name").key = "1st";
  prv_zop_init_logging();
  EXPECT_NE(syslog_report(nullptr, 0).find(",Z1st=A.B;C,"), std::string::npos);
}

TEST_F(Rendering, a_snapshot_has_its_items_only) {
  std::string report = syslog_report("x", 1);
  for (const char* absent : {"Network Name=", "IP Address=", "Exc=", "*****", "OPLMN="}) {
    EXPECT_EQ(report.find(absent), std::string::npos) << absent;
  }
  EXPECT_NE(report.find(",Network Time="), std::string::npos);
  EXPECT_TRUE(report.find(",MCC MNC=") < report.find(",FPLMN="));
}

TEST_F(Rendering, lines_break_between_pairs_and_count_themselves) {
  memset(gDiagInfo.screen.network_name, 'x', 32);
  gDiagInfo.oplmn_count = 140;
  for (auto& block : gDiagInfo.oplmn) {
    block[0] = 20;
    for (size_t i = 0; i < 20; ++i) memcpy(block + 1 + 8 * i, "310410\x80\0", 8);
  }
  std::string report = syslog_report("e", 0);
  ASSERT_GE(world.log.size(), 2u);
  std::string stamp = world.log[0].text.substr(0, world.log[0].text.find(','));
  for (const LogLine& line : world.log) {
    EXPECT_EQ(line.text.substr(0, line.text.find(',')), stamp);
    EXPECT_EQ(line.text.back(), ':');
    std::string pairs = line.text.substr(stamp.size());
    EXPECT_LE(pairs.substr(0, pairs.find(",n=")).size(), 1201u);
    EXPECT_EQ(line.priority, 5);
    bool last = &line == &world.log.back();
    EXPECT_EQ(line.text.find(",n=") != std::string::npos, last);
  }
  EXPECT_TRUE(report.ends_with(",n=" + std::to_string(world.log.size()) + ":\n"));
  // The list is longer than a line: cut after an entry in syslog, whole in the log string.
  std::string list = report.substr(report.find("OPLMN=") + 6);
  EXPECT_EQ(list.find(','), 91 * 13 - 1u);
  std::string text = log_string();
  size_t at = text.find("OPLMN: ");
  EXPECT_EQ(text.find('\n', at) - at, 7 + 140 * 13 - 1u);
}

TEST_F(Rendering, no_two_reports_share_a_stamp) {
  std::string first = syslog_report(nullptr, 1).substr(0, 24);
  std::string second = syslog_report(nullptr, 1).substr(0, 24);
  EXPECT_NE(first, second);
}

TEST_F(Rendering, malformed_rows_are_reported) {
  item("Channel").size = 3;
  item("C1").type = 9;
  item("C1").format = nullptr;
  item("R1").type = 9;
  item("R1").flags |= ZOP_ITEM_SPECIAL;
  static const float number = 1.5f;
  item("Test Mode").type = ZOP_ITEM_FLOAT;
  item("Test Mode").value = &number;
  vurn_set_log_mask(VURN_LOG_ERROR);
  std::string text = log_string();
  EXPECT_NE(text.find("Channel: item 12 bad size 3\nBand: "), std::string::npos);
  EXPECT_NE(text.find("C1: item 14 bad type 9\n"), std::string::npos);
  EXPECT_NE(text.find("UNKNOWN SPECIAL: item=16\n"), std::string::npos);
  EXPECT_NE(text.find("Test Mode: 1.500\n"), std::string::npos);
  EXPECT_EQ(world.log_text(), "E zop:itemnolabel:item=16:oops\n");
}

// A text may look like this while another thread is storing it.
TEST_F(Rendering, a_zero_in_a_text_ends_the_text_and_not_the_report) {
  item("Channel").format = [](const zop_log_item*, const char** text, int* length, int) {
    *text =
        "4\0"
        "57";
    *length = 4;
    return 1;
  };
  EXPECT_NE(log_string().find("Channel: 4\nBand: "), std::string::npos);
  EXPECT_NE(syslog_report(nullptr, 1).find(",Channel=457,Band="), std::string::npos);
}
