// Rendering: values by type and formatter, what fits and what is left out, line breaks in syslog.
#include "report/rendering.h"

#include <arpa/inet.h>

#include <algorithm>

#include "report/field_test.h"
#include "report/text.h"
#include "tests/module/module_fixture.h"

using namespace std::chrono_literals;
using namespace test;

class Rendering : public ModuleTest {
 protected:
  void SetUp() override {
    ModuleTest::SetUp();
    prv_zop_init_logging();
    saved.assign(gLogItems, gLogItems + item_count());
    world.advance(1000h * ++reports);  // so that the tests' stamps differ
  }
  void TearDown() override {
    std::copy(saved.begin(), saved.end(), gLogItems);
    ModuleTest::TearDown();
  }
  static size_t item_count() {
    size_t count = 0;
    while (gLogItems[count].type != ZOP_ITEM_END) ++count;
    return count;
  }
  static zop_log_item& item(const std::string& label, int which = 0) {
    for (zop_log_item* it = gLogItems;; ++it) {
      if (it->label != nullptr && label == it->label && which-- == 0) return *it;
    }
  }
  // The value of one item, by its formatter.
  static std::string value(const std::string& label, int which = 0) {
    const zop_log_item& row = item(label, which);
    const char* text = nullptr;
    int length = -1;
    EXPECT_EQ(row.format(&row, &text, &length, 0), 1) << label;
    return {text, static_cast<size_t>(length)};
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

static void put16(uint8_t* p, int value) { put_le16(p, static_cast<uint16_t>(value)); }
static void put32(uint8_t* p, int64_t value) { put_le32(p, static_cast<uint32_t>(value)); }

TEST_F(Rendering, codes_without_a_name) {
  zop_screen& s = gDiagInfo.screen;
  struct {
    const char* label;
    uint8_t* byte;
    int value;
    const char* text;
  } rows[] = {
      {"System Mode", &s.system_mode, 9, "9 Unknown"},
      {"Network Mode", &s.network_mode, 200, "-56 Unknown"},
      {"GMM RAU Error", &s.gmm_rau_error, 111, "111 Unknown"},
      {"Band", s.band, 13, "13 Unknown"},
  };
  for (auto& row : rows) {
    *row.byte = static_cast<uint8_t>(row.value);
    EXPECT_EQ(value(row.label), row.text) << row.label << " " << row.value;
  }
  gDiagInfo.data_service_mode = 0x1FF;  // its low byte, signed
  EXPECT_EQ(value("Data Service Mode"), "Unknown");
}

TEST_F(Rendering, items_of_one_radio_technology) {
  zop_screen& s = gDiagInfo.screen;
  s.system_mode = ZOP_SCREEN_WCDMA;
  put16(s.radio.wcdma.rscp, 82);
  put16(s.radio.wcdma.drx, 6);
  s.radio.wcdma.hsdpa_status = 1;
  s.radio.wcdma.hsdpa_indication = 255;
  put16(s.radio.wcdma.cells[0].scrambling_code, 100);
  put16(s.radio.wcdma.cells[0].ecio, -5);
  put16(s.radio.wcdma.cells[1].set, 1);
  put16(s.radio.wcdma.cells[1].ecio, -11);
  put16(s.radio.wcdma.cells[2].set, 7);  // code and Ec/Io of zero end the list
  EXPECT_EQ(value("RSCP"), "-82");
  EXPECT_EQ(value("DRX"), "6");
  EXPECT_EQ(value("HSDPA Status"), "Active");
  EXPECT_EQ(value("HSDPA Indication"), "None");
  EXPECT_EQ(value("Active/Monitored Sets"), "0;100;-5 1;0;-11");
  for (const char* gsm : {"N1", "B1", "Pathloss", "MFRM", "EGPRS Indication"}) {
    EXPECT_EQ(value(gsm), "") << gsm;
    EXPECT_NE(log_string().find(std::string(gsm) + ": \n"), std::string::npos) << gsm;
  }

  s.radio = {};
  s.system_mode = ZOP_SCREEN_GSM;
  zop_gsm_screen& gsm = s.radio.gsm;
  put32(gsm.pathloss, -90);
  gsm.mfrm = 4;
  gsm.egprs_indication = 255;
  put32(gsm.neighbor_count, 2);
  put16(gsm.neighbors[0].rssi, -71);
  put16(gsm.neighbors[0].arfcn, 661);
  gsm.neighbors[0].bsic = 12;
  put32(gsm.best_count, 1);
  gsm.best[0] = {1, 2, 3, {0x78, 0x56, 0x34, 0}, {0x95, 0x02}};
  EXPECT_EQ(value("N1"), "-71;661;12 0;0;0");
  EXPECT_EQ(value("B1"), "3430008;661;1;2");
  EXPECT_EQ(value("Pathloss"), "-90");
  EXPECT_EQ(value("MFRM"), "4");
  EXPECT_EQ(value("EGPRS Indication"), "255 Unknown");
  for (const char* wcdma :
       {"RSCP", "DRX", "HSDPA Status", "HSDPA Indication", "Active/Monitored Sets"}) {
    EXPECT_EQ(value(wcdma), "") << wcdma;
  }
}

// Whatever the count says, rendering stops at the end of the list and after a whole entry.
TEST_F(Rendering, hostile_counts_cost_nothing) {
  memset(static_cast<void*>(&gDiagInfo), 0xFF, sizeof gDiagInfo);
  struct {
    int mode;
    const char* label;
    int entries;
  } rows[] = {
      {ZOP_SCREEN_GSM, "N1", 32},
      {ZOP_SCREEN_GSM, "B1", 6},
      {ZOP_SCREEN_WCDMA, "Active/Monitored Sets", 32},
      {ZOP_SCREEN_WCDMA, "HPLMN", 10},
      {ZOP_SCREEN_WCDMA, "FPLMN", 20},
      {ZOP_SCREEN_WCDMA, "OPLMN", 127},  // of 140: the scratch buffer holds no more
  };
  for (auto& row : rows) {
    gDiagInfo.screen.system_mode = static_cast<uint8_t>(row.mode);
    std::string text = value(row.label);
    EXPECT_EQ(std::count(text.begin(), text.end(), ' ') + 1, row.entries) << row.label;
    EXPECT_EQ(text.substr(text.rfind(' ') + 1).size(), text.find(' ')) << row.label;
  }
  std::string text = log_string(100'000);
  EXPECT_EQ(result, 1);
  EXPECT_NE(syslog_report("x", 0).find(",n="), std::string::npos);
}

TEST_F(Rendering, texts_of_the_modem_end_with_their_field_and_are_one_line) {
  memset(static_cast<void*>(&gDiagInfo), '\n', sizeof gDiagInfo);
  memcpy(gDiagInfo.screen.imei, "\x7F\xC3\xA9 ", 4);
  std::string text = log_string();
  EXPECT_NE(text.find("\nIMEI: ?\xC3\xA9 ????????????\n"), std::string::npos);
  for (auto [label, size] : {std::pair{"Network Name", 32},
                             {"IMSI", 16},
                             {"Firmware", 64},
                             {"Hardware", 64},
                             {"Library", 64},
                             {"Phone Number", 16},
                             {"ICCID", 24},
                             {"IP Address", 16},
                             {"Dest IP Address", 16}}) {
    std::string line = std::string("\n") + label + ": " + std::string(size_t(size), '?') + "\n";
    EXPECT_NE(text.find(line), std::string::npos) << label;
  }
  std::string in_syslog = "Network Name=" + std::string(32, '?') + ",MCC MNC=??? ???,";
  EXPECT_NE(syslog_report("x", 0).find(in_syslog), std::string::npos);
}

TEST_F(Rendering, texts_times_and_addresses) {
  zop_diag_info& d = gDiagInfo;
  memcpy(d.screen.mcc, "310", 3);
  memcpy(d.screen.mnc, "41\0", 3);
  EXPECT_EQ(value("MCC MNC"), "310 41");
  memcpy(d.screen.mnc, "410", 3);
  EXPECT_EQ(value("MCC MNC"), "310 410");
  memcpy(d.screen.lac, "1A2B", 4);
  EXPECT_EQ(value("L1"), "6699");
  for (size_t i = 0; i < 6; ++i) put16(d.network_time + 2 * i, std::array{2010, 7, 4, 3, 2, 1}[i]);
  EXPECT_EQ(value("Network Time"), "2010/07/04 03.02.01");
  EXPECT_EQ(value("Time"), "2010/07/04 03.02.01");
  for (auto [seconds, text] : {std::pair{-1, "Not provided"}, {-5400, "-1h"}, {7200, "+2h"}}) {
    d.local_time_offset = seconds;
    EXPECT_EQ(value("Local Time Offset"), text);
  }
  for (auto [bars, text] : {std::pair{-1, "---"}, {-2, "----"}, {5, "5"}}) {
    d.bars = bars;
    EXPECT_EQ(value("Bars"), text);
  }
  for (auto [address, masked] : {std::pair{"10.64.1.2", "xxx.xxx.1.2"},
                                 {"not connected", "xxx.xxx"},
                                 {"255.255.255.255", "xxx.xxx.255.255"}}) {
    strcpy(d.local_address, address);
    EXPECT_EQ(value("IP Address", 1), masked);
  }
  d.name_servers[0] = 0x0100A8C0;
  EXPECT_EQ(value("Res"), "16820416, 0");
}

TEST_F(Rendering, ages) {
  zop_diag_info& d = gDiagInfo;
  world.advance(-world.now());  // 24 July 2010, 19:33:20
  EXPECT_EQ(value("FTD Age", 0), "None yet");
  EXPECT_EQ(value("FTD Age", 1), "None yet");
  EXPECT_EQ(value("pppd Age"), "---");
  EXPECT_EQ(value("Rh"), "0, 0, 0, 0, 0, 0");
  d.screen_time = 1'280'000'000 - 65;
  EXPECT_EQ(value("FTD Age", 0), "1:05 (Jul 24 19:32:15)");
  EXPECT_EQ(value("FTD Age", 1), "65s");
  d.screen_time = 1'280'000'000 + 65;  // the clock was set back
  EXPECT_EQ(value("FTD Age", 0), "-1:-5 (Jul 24 19:34:25)");
  EXPECT_EQ(value("FTD Age", 1), "-65s");
  d.awake_seconds = 90'061;
  d.asleep_seconds = 9;
  EXPECT_EQ(value("Awake"), "1/1:01:01 (Jul 23 18:32:10)");
  d.pppd_start = 86'400;
  EXPECT_EQ(value("pppd Age"), "1:01:01 (Jul 24 18:32:19)");
  d.ring_counts[2] = 4;
  d.last_ring_time = 1'280'000'000;
  d.last_ring_origin = 2;
  EXPECT_EQ(value("Rh"), "0, 0, 4, 0, 0, 0 (R) Jul 24 19:33:20");
  d.last_ring_origin = 7;
  EXPECT_EQ(value("Rh"), "0, 0, 4, 0, 0, 0 (?) Jul 24 19:33:20");
}

TEST_F(Rendering, networks) {
  zop_diag_info& d = gDiagInfo;
  EXPECT_EQ(value("RPLMN"), "");
  memcpy(d.rplmn, "31041\0", 6);
  EXPECT_EQ(value("RPLMN"), "310;41");
  EXPECT_EQ(value("FPLMN"), "");
  memcpy(d.fplmn,
         "\2"
         "31041026203\0",
         13);
  EXPECT_EQ(value("FPLMN"), "310;410 262;03");
  memcpy(d.hplmn,
         "\3"
         "310410\x80\0"
         "310411\0\x80"
         "310412\1\2",
         25);
  EXPECT_EQ(value("HPLMN"), "UMTS;310;410 GSM;310;411 1_2;310;412");
  EXPECT_EQ(value("OPLMN"), "");
  for (auto& block : d.oplmn) {
    block[0] = 1;
    memcpy(block + 1, "310410\x80\0", 8);
  }
  for (auto [count, blocks] : {std::pair{1u, 1}, {20u, 1}, {21u, 2}, {141u, 7}, {0xFFFFFFFFu, 7}}) {
    d.oplmn_count = count;
    std::string text = value("OPLMN");
    EXPECT_EQ(std::count(text.begin(), text.end(), 'U'), blocks) << count;
  }
}

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

TEST_F(Rendering, malformed_rows_are_told_in_the_report) {
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

TEST_F(Rendering, tells_the_length_of_a_log_string) {
  vurn_set_log_mask(VURN_LOG_STUCK);
  std::string text = log_string(4096);
  EXPECT_TRUE(std::regex_match(
      world.log_text(), std::regex("D zop:611len: 611 string len = " + std::to_string(text.size()) +
                                   " of 4096 chars: \\(prv_output_somewhere:logging:\\d+\\)\n")))
      << world.log_text();
}
