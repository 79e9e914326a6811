// Rendering of rows that the table of items does not have: malformed ones, keys, texts with a zero.
#include "report/rendering.h"

#include <algorithm>

#include "report/field_test.h"
#include "report/text.h"
#include "tests/module/module_world.h"

using namespace test;

class Rendering : public ModuleTest {
 protected:
  Rendering() {
    prv_zop_init_logging();
    saved.assign(gLogItems, gLogItems + item_count());
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
  static std::string log_string() {
    std::string text(8192, '#');
    prv_zop_output_to_log_string(text.data(), 8192, 1);
    return text.c_str();
  }
  // The pairs of the last report in syslog.
  std::string syslog_report() {
    world.log.clear();
    vurn_set_log_mask(VURN_LOG_INFO);
    prv_zop_output_to_syslog(1, nullptr, 0);
    vurn_set_log_mask(0);
    return world.log_text();
  }
  std::vector<zop_log_item> saved;
};

TEST_F(Rendering, a_row_may_have_a_key_and_dots) {
  strcpy(gDiagInfo.screen.network_name, "A:B,C");
  item("Network Name").flags |= ZOP_ITEM_DOTS;
  item("Network Name").key = "1st";
  prv_zop_init_logging();
  EXPECT_NE(syslog_report().find(",Z1st=A.B;C,"), std::string::npos);
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

TEST_F(Rendering, the_first_header_starts_the_report) {
  for (const char* label : {"FIRST", "\nFIRST", " \nFIRST"}) {
    gLogItems[0].label = label;
    prv_zop_init_logging();
    EXPECT_TRUE(log_string().starts_with("FIRST\nIMEI: ")) << label;
  }
}

TEST(BoundedCopy, returns_its_size_or_the_complement_of_the_whole_length) {
  char text[8] = "#######";
  EXPECT_EQ(prv_strmaxcpy(text, "abc", 4, -1), 4);
  EXPECT_EQ(std::string(text, 7), std::string("abc\0###", 7));
  EXPECT_EQ(prv_strmaxcpy(text, "abcde", 3, 4), ~4);
  EXPECT_EQ(std::string(text, 7), std::string("ab\0\0###", 7));
  EXPECT_EQ(prv_strmaxcpy(text, "x", 0, 1), ~1);
  EXPECT_EQ(text[0], 'a');
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
  EXPECT_NE(syslog_report().find(",Channel=457,Band="), std::string::npos);
}
