// The common form of the report: each item of the module has a place in it, each of its names a
// code and a word, and what is not known is null.
#include <gtest/gtest.h>

#include <set>

#include "include/zop_diag_info.h"
#include "records/report_form.h"
#include "records/state_words.h"
#include "report/names.h"

using namespace records;

static std::string form_of(const std::string& label, const std::string& value) {
  ReportText report;
  report.add(label, value);
  std::string text;
  report.append_to(text);
  return text;
}

TEST(report_form, every_item_of_the_module_has_a_key_of_its_own) {
  std::set<std::string> labels, keys;
  for (const zop_log_item* item = gLogItems; item->type != ZOP_ITEM_END; ++item) {
    if (item->type == ZOP_ITEM_HEADER || !labels.insert(item->label).second) continue;
    const ReportItem* found = find_item(item->label);
    ASSERT_NE(found, nullptr) << item->label;
    std::string key =
        SECTIONS[static_cast<size_t>(found->section)] + std::string(found->key.name());
    bool is_time = found->key.name() == "network_time";  // the module has two labels for it
    EXPECT_TRUE(keys.insert(key).second || is_time) << item->label;
    // What the module knows only from a screen is in the screen.
    auto at = static_cast<const char*>(item->value) - reinterpret_cast<const char*>(&gDiagInfo);
    bool in_screen = item->value == nullptr ? item->type != ZOP_ITEM_EXCEPTION
                                            : at >= 0 && at < ptrdiff_t{sizeof gDiagInfo.screen};
    EXPECT_EQ(found->source == Source::SCREEN, in_screen) << item->label;
  }
}

// As the report shows a name: with blanks, and in most items in small letters from the second on.
static std::string shown(std::string name, bool lower) {
  for (size_t i = 0; i < name.size(); ++i) {
    if (name[i] == '_') name[i] = ' ';
    if (lower && i > 0) name[i] = static_cast<char>(tolower(name[i]));
  }
  return name;
}

template <typename NAMES, typename WORDS>
static void expect_words(const NAMES& names, const WORDS& words, bool lower = false,
                         std::set<int32_t> of_others = {}) {
  for (const EnumName& row : names) {
    if (of_others.contains(row.value)) continue;
    bool found = false;
    for (const StateWord& word : words) {
      found = found || (word.code == row.value && word.name == shown(row.name, lower));
    }
    EXPECT_TRUE(found) << row.name;
  }
}

TEST(report_form, every_name_of_the_module_has_its_code) {
  expect_words(BAND_NAMES, BANDS);
  expect_words(SYSTEM_MODE_NAMES, SYSTEM_MODES);
  expect_words(DATA_SERVICE_MODE_NAMES, DATA_SERVICES, false, {ZOP_DATA_UNKNOWN});
  expect_words(SERVICE_STATUS_NAMES, SERVICES);
  expect_words(REG_STATUS_NAMES, REGISTRATIONS, true);
  expect_words(CALL_STATUS_NAMES, CALLS);
  expect_words(UPDATE_RESULT_NAMES, MM_RESULTS, false, {ZOP_ATTACH_ACCEPTED, ZOP_ATTACH_REJECTED});
  expect_words(UPDATE_RESULT_NAMES, GMM_RESULTS, false,
               {ZOP_MM_ATTACH_ACCEPTED, ZOP_MM_ATTACH_REJECTED});
  expect_words(GMM_STATE_NAMES, GMM_STATES);
  expect_words(PDP_STATE_NAMES, PDP_STATES, true);
  expect_words(NETWORK_MODE_NAMES, NETWORK_MODES);
  expect_words(PMM_MODE_NAMES, PMM_MODES, true);
  expect_words(SELECTION_MODE_NAMES, SELECTION_MODES, true);
  expect_words(HSDPA_STATUS_NAMES, HSDPA_STATES, true);
  expect_words(HSDPA_INDICATION_NAMES, HSPA_SUPPORT);
  expect_words(EGPRS_INDICATION_NAMES, EGPRS_SUPPORT);
  expect_words(SIM_STATE_NAMES, SIM_STATES, true);
  expect_words(PIN_STATE_NAMES, PIN_STATES, true);
  expect_words(MM_CAUSE_NAMES, REJECT_CAUSES);
  expect_words(PDP_CAUSE_NAMES, PDP_CAUSES);
}

namespace {
struct Case {
  const char* label;
  const char* value;
  const char* expected;
};
}  // namespace

TEST(report_form, values) {
  static const Case CASES[] = {
      {"Network Name", "Test\"net\x1b", R"({"network":{"name":"Test\"net␛"}})"},
      {"Network Name", "", R"({"network":{"name":null}})"},
      {"MCC MNC", "001 01", R"({"network":{"mcc":"001","mnc":"01"}})"},
      {"MCC MNC", " ", R"({"network":{"mcc":null,"mnc":null}})"},
      {"Channel", "-1", R"({"network":{"channel":null}})"},
      {"C1", "0", R"({"network":{"cell_id":null}})"},
      {"L1", "65534", R"({"network":{"lac":null}})"},
      {"Time", "2010/07/24 08.02.03", R"({"network":{"network_time":"2010-07-24 08:02:03"}})"},
      {"Network Time", "0000/00/00 00.00.00", R"({"network":{"network_time":null}})"},
      {"Local Time Offset", "+2h", R"({"network":{"utc_offset_s":7200}})"},
      {"Local Time Offset", "-5h", R"({"network":{"utc_offset_s":-18000}})"},
      {"Local Time Offset", "Not provided", R"({"network":{"utc_offset_s":null}})"},
      {"Bars", "---", R"({"state":{"bars":null}})"},
      {"Bars", "-1", R"({"state":{"bars":null}})"},
      {"Bars", "5", R"({"state":{"bars":5}})"},
      {"Roaming", "0", R"({"state":{"roaming":false}})"},
      {"Roaming", "2", R"({"state":{"roaming":true}})"},
      {"Roaming", "4294967295", R"({"state":{"roaming":null}})"},
      {"RSSI", "-71", R"({"state":{"rssi_dbm":-71}})"},
      {"RSSI", "0", R"({"state":{"rssi_dbm":null}})"},
      {"RSCP", "-0", R"({"wcdma":{"rscp_dbm":null}})"},
      {"RSSI", "-71x", R"({"state":{"rssi_dbm":null}})"},
      {"Tx Power", "0", R"({"state":{"tx_power_dbm":0}})"},
      {"Band", "WCDMA V 850", R"({"network":{"band":{"code":84,"text":"WCDMA 850"}}})"},
      {"Band", "17 Unknown", R"x({"network":{"band":{"code":17,"text":"unknown (17)"}}})x"},
      {"Band", "Cut na", R"({"network":{"band":{"code":null,"text":"Cut na"}}})"},
      {"HSDPA Status", "", R"({"wcdma":{"hsdpa":null}})"},
      {"MM Attach State", "Attach accept",
       R"({"status":{"mm_attach":{"code":11,"text":"attach accepted"}}})"},
      {"GMM Attach State", "Attach accept",
       R"({"status":{"gmm_attach":{"code":1,"text":"attach accepted"}}})"},
      {"SIM Status", "Valid, PIN perm disabled, R3",
       R"({"sim":{"status":{"code":2,"text":"ready"},"lock":{"code":5,"text":"PIN disabled"},)"
       R"("pin_retries":3}})"},
      {"SIM Status", "Not init; PIN9 Unknown; R",
       R"({"sim":{"status":{"code":3,"text":"not initialised"},)"
       R"x("lock":{"code":9,"text":"unknown (9)"},"pin_retries":null}})x"},
      {"Active/Monitored Sets", "0;100;-5 7;101;-11 1;2 a;b;c",
       R"({"wcdma":{"cells":[{"set":"active","scrambling_code":100,"ecio_db":-5},)"
       R"({"set":"detected","scrambling_code":101,"ecio_db":-11}]}})"},
      {"N1", "1;2 -71;661;12", R"({"gsm":{"neighbors":[{"arfcn":661,"bsic":12,"rssi_dbm":-71}]}})"},
      {"B1", "3430008;661;1;4", R"({"gsm":{"best_cells":[{"a":1,"b":4,"c":3430008,"d":661}]}})"},
      {"IP Address", "10.64.64.64", R"({"wan":{"ip_address":"10.64.64.64"}})"},
      {"IP Address", "xxx.xxx.64.64", R"({"wan":{"ip_address":"xxx.xxx.64.64"}})"},
      {"IP Address", "se=19", R"({"wan":{"ip_address":null}})"},
      {"Rx Bytes", "----", R"({"wan":{"rx_bytes":null}})"},
      {"Res", "24145930; 0", R"({"wan":{"name_servers":["10.112.112.1"]}})"},
      {"Rh", "1, 0, 0, 0, 2, 0 (W) Jul 24 19:11:28",
       R"({"wan":{"rings":[1,0,0,0,2,0],"last_ring_origin":{"code":4,"text":"W"},)"
       R"("last_ring_time":"Jul 24 19:11:28"}})"},
      {"Rh", "0, 0, 0, 0, 0, 0",
       R"({"wan":{"rings":[0,0,0,0,0,0],"last_ring_origin":null,"last_ring_time":null}})"},
      {"Awake", "1/02:03:04 (Jul 24 19:11:28)", R"({"wan":{"awake_s":93784}})"},
      {"pppd Age", "---", R"({"wan":{"pppd_age_s":null}})"},
      {"FTD Age", "-1:-05 (Jul 24 19:11:28)", R"({"wan":{"field_test_age_s":-65}})"},
      {"FTD Age", "12s", R"({"wan":{"field_test_age_s":12}})"},
      {"RPLMN", "001;01", R"({"plmn":{"registered":[{"mcc":"001","mnc":"01"}]}})"},
      {"OPLMN", "UMTS;310;410 x",
       R"({"plmn":{"operator":[{"mcc":"310","mnc":"410","technology":"umts"}]}})"},
      {"FPLMN", "", R"({"plmn":{"forbidden":[]}})"},
      {"Tomorrow's \"item\"", "7", R"({"other":{"Tomorrow's \"item\"":"7"}})"},
  };
  for (const Case& row : CASES) EXPECT_EQ(form_of(row.label, row.value), row.expected) << row.label;
}

TEST(report_form, a_screen_that_never_came_has_no_values) {
  Json report = report_of_text(
      "      ********* NETWORK *********\nBand: BC0\nMCC MNC: 001 01\nN1: \nBars: 5\n"
      "FTD Age: None yet\nRPLMN: \n");
  EXPECT_EQ(
      report.dump(),
      R"({"network":{"band":null,"mcc":null,"mnc":null},"state":{"bars":5},)"
      R"("gsm":{"neighbors":null},"wan":{"field_test_age_s":null},"plmn":{"registered":[]}})");
}

// One maker, as for a log. What a pair became is not taken where the screen, or the label, is
// another.
TEST(report_form, a_report_does_not_depend_on_the_last_one) {
  ReportText made;
  auto text = [&](std::initializer_list<Pair> pairs) {
    for (const Pair& pair : pairs) made.add(pair.label, pair.value);
    std::string out;
    made.append_to(out);
    return out;
  };
  std::string first = text({{"Channel", "7"}, {"R1", "7"}, {"FTD Age", "1s"}});
  EXPECT_EQ(text({{"Channel", "7"}, {"R1", "7"}, {"FTD Age", "None yet"}}),
            R"({"network":{"channel":null,"rac":null},"wan":{"field_test_age_s":null}})");
  EXPECT_EQ(text({{"R1", "7"}, {"Channel", "8"}}), R"({"network":{"rac":7,"channel":8}})");
  EXPECT_EQ(text({{"Channel", "7"}, {"R1", "7"}, {"FTD Age", "1s"}}), first);
}

TEST(report_form, older_reports_are_read) {
  Json old = {{"state", {{"RSSI", -71}, {"Bars", nullptr}}}, {"gsm", {{"N1", "-71;661;12"}}}};
  EXPECT_TRUE(has_labels(old));
  Json made = without_labels(old);
  EXPECT_EQ(made.dump(), R"({"state":{"rssi_dbm":-71,"bars":null},)"
                         R"("gsm":{"neighbors":[{"arfcn":661,"bsic":12,"rssi_dbm":-71}]}})");
  EXPECT_FALSE(has_labels(made));
  Json strange = {{"state", {{"RSSI", {{"RSSI", -71}}}, {"Bars", true}}}, {"gsm", 7}};
  EXPECT_EQ(without_labels(strange).dump(), R"({"state":{"rssi_dbm":null,"bars":null}})");
}
