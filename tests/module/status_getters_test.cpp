// Status getters: what the host gets, what the diagnostic record keeps, which line a failure logs.
#include <functional>

#include "tests/module/module_fixture.h"

using namespace test;

class StatusGetters : public ModuleTest {
 protected:
  void open() {
    ASSERT_EQ(vurn_open(), VURN_OK);
    world.log.clear();
    modem.payloads.clear();
  }
};

namespace {
struct Getter {
  const char* name;
  std::function<int()> call;
  const char* request;
  const char* failure;  // the line logged for result 7
};
}  // namespace

static char text[64];
static int number;
static time_t when;

static const Getter GETTERS[] = {
    {"rssi", [] { return vurn_get_rssi(&number); }, "cf 20 00",
     "E zop:get:param=rssi,error=7:can't get parameter\n"},
    {"roaming", [] { return vurn_get_roaming_status(&number); }, "cf 21 00",
     "E zop:roaming:status=7:can't get roaming status\n"},
    {"realm", [] { return vurn_get_realm(text, 64); }, "cf 67 00",
     "E zop:get:param=imei,error=7:can't get parameter\n"},
    {"serial number", [] { return vurn_get_radio_serial_number(text, 64); }, "cf 67 00",
     "E zop:get:param=imei,error=7:can't get parameter\n"},
    {"iccid", [] { return vurn_get_radio_cert_param1(text, 64); }, "cf 23 00",
     "E zop:get:param=iccid,error=7:can't get parameter\n"},
    {"imsi as certificate", [] { return vurn_get_radio_cert_param2(text, 64); }, "cf 68 00",
     "E zop:get:param=imsi,error=7:can't get parameter\n"},
    {"imsi", [] { return vurn_get_imsi(text, 64); }, "cf 68 00",
     "E zop:get:param=imsi,error=7:can't get parameter\n"},
    {"phone number", [] { return vurn_get_radio_phone_number(text, 64); }, "cf 07 00",
     "E zop:get:param=phone number,error=7:can't get parameter\n"},
    {"firmware", [] { return vurn_get_firmware_version(text, 64); }, "cf 5d 00",
     "E zop:fwver:status=7:can't get firmware version\n"},
    {"mode", [] { return vurn_get_data_service_mode(&number); }, "cf 1f 00",
     "E zop:dataserv:status=7:can't get data service mode\n"},
    {"time", [] { return vurn_get_module_time(&when, &number); }, "cf 14 00",
     "E zop:get:param=local_time,error=7:can't get parameter\n"},
};

TEST_F(StatusGetters, say_not_open_and_ask_nothing) {
  vurn_set_log_mask(LOG_EVERYTHING);
  for (const Getter& getter : GETTERS) {
    EXPECT_EQ(getter.call(), VURN_ERR_NOT_OPEN) << getter.name;
  }
  EXPECT_TRUE(world.written.empty());
  EXPECT_EQ(gDiagInfo.roaming, -1);
  EXPECT_EQ(gDiagInfo.local_time_offset, -1);
}

TEST_F(StatusGetters, fail_with_one_line_and_leave_numbers_alone) {
  open();
  vurn_set_log_mask(VURN_LOG_ERROR);
  for (const Getter& getter : GETTERS) {
    world.log.clear();
    garble(getter.request);
    number = 4711;
    when = 4711;
    EXPECT_EQ(getter.call(), VURN_ERR_FAILED) << getter.name;
    EXPECT_EQ(world.log_text(), getter.failure) << getter.name;
    EXPECT_EQ(number, 4711) << getter.name;
    EXPECT_EQ(when, 4711) << getter.name;
  }
}

TEST_F(StatusGetters, never_pass_a_small_buffer_on) {
  open();
  int (*texts[])(char*, unsigned) = {vurn_get_realm, vurn_get_imsi, vurn_get_radio_cert_param1,
                                     vurn_get_radio_phone_number, vurn_get_firmware_version};
  for (auto get : texts) EXPECT_EQ(get(text, 19), VURN_ERR_FAILED);
  EXPECT_TRUE(modem.payloads.empty());
}

TEST_F(StatusGetters, roaming_is_0_or_1_for_the_host_and_raw_in_the_record) {
  open();
  for (int raw : {0, 1, 2, 255}) {
    char answer[32];
    snprintf(answer, sizeof answer, "cf 21 00 00 00 %02x", static_cast<unsigned>(raw));
    answers["cf 21 00"] = answer;
    EXPECT_EQ(vurn_get_roaming_status(&number), VURN_OK);
    EXPECT_EQ(number, raw != 0);
    EXPECT_EQ(gDiagInfo.roaming, raw);
  }
}

static std::string answer_of(const char* request, const std::string& payload) {
  return std::string(request) + " 00 00 " + to_hex(Bytes(payload.begin(), payload.end()));
}

TEST_F(StatusGetters, texts_reach_the_host_whole_and_the_record_cut) {
  answers["cf 68 00"] = answer_of("cf 68 00", "001010123456789");
  answers["cf 23 00"] = answer_of("cf 23 00", "89014103211118510720XXXXX");
  answers["cf 07 00"] = answer_of("cf 07 00", std::string(20, '5') + std::string(16, '\0'));
  open();
  vurn_set_log_mask(VURN_LOG_GENERAL);
  EXPECT_EQ(vurn_get_imsi(text, 64), VURN_OK);
  EXPECT_STREQ(text, "001010123456789");
  EXPECT_EQ(world.log.at(0).text.substr(0, 27), "D zop:imsi=001010123456789 ");
  // The modem's text uses all 20 bytes and has no terminator.
  char exact[20];
  EXPECT_EQ(vurn_get_radio_cert_param1(exact, 20), VURN_OK);
  EXPECT_STREQ(gDiagInfo.iccid, "89014103211118510720");
  EXPECT_EQ(vurn_get_radio_phone_number(text, 64), VURN_OK);
  EXPECT_EQ(strlen(text), 20u);
  EXPECT_STREQ(gDiagInfo.phone_number, "555555555555555");
  EXPECT_EQ(world.log.back().text.substr(0, 45), "D zop:radio phone number=55555555555555555555");
}

TEST_F(StatusGetters, data_service_mode) {
  struct {
    const char* system;
    const char* egprs;
    int mode;
  } rows[] = {{"05", "", VURN_DATA_WCDMA},     {"07", "", VURN_DATA_WCDMA},
              {"03", "01 00", VURN_DATA_EDGE}, {"03", "00 00", VURN_DATA_GPRS},
              {"03", "ff ff", VURN_DATA_GPRS}, {"00", "", VURN_DATA_NONE},
              {"08", "", VURN_DATA_NONE}};
  open();
  for (auto& row : rows) {
    answers["cf 1f 00"] = std::string("cf 1f 00 00 00 ") + row.system;
    answers["cf 5e 00"] = std::string("cf 5e 00 00 00 ") + row.egprs;
    EXPECT_EQ(vurn_get_data_service_mode(&number), VURN_OK);
    EXPECT_EQ(number, row.mode) << row.system << " " << row.egprs;
  }
  answers["cf 1f 00"] = "cf 1f 00 00 00 03";
  refuse("cf 5e 00");
  vurn_set_log_mask(VURN_LOG_ERROR);
  number = 4711;
  EXPECT_EQ(vurn_get_data_service_mode(&number), VURN_ERR_FAILED);
  EXPECT_EQ(world.log_text(), "E zop:egprs:status=10:can't get egprs indication\n");
  EXPECT_EQ(number, 4711);
}

// 2010-07-24 13:02:59, a Saturday, 5 hours west of Greenwich, daylight saving.
static const char NETWORK_TIME[] =
    "cf 14 00 00 00 da 07 07 00 18 00 0d 00 02 00 3b 00 05 00 ec ff ff ff 01";

TEST_F(StatusGetters, network_time_in_the_local_zone) {
  answers["cf 14 00"] = NETWORK_TIME;
  open();
  vurn_set_log_mask(VURN_LOG_STUCK);
  EXPECT_EQ(vurn_get_module_time(&when, &number), VURN_OK);
  EXPECT_EQ(when, 1279976579);
  EXPECT_EQ(number, -18000);
  EXPECT_EQ(gDiagInfo.local_time_offset, -18000);
  EXPECT_EQ(gDiagInfo.network_time[18], 1);
  EXPECT_EQ(world.log_text().substr(0, 34), "D zop:localTimeOffset=-18000 dst=1");
}

TEST_F(StatusGetters, the_c_library_decides_on_daylight_saving) {
  setenv("TZ", "EST5EDT", 1);
  tzset();
  answers["cf 14 00"] = NETWORK_TIME;
  open();
  EXPECT_EQ(vurn_get_module_time(&when, &number), VURN_OK);
  EXPECT_EQ(when, 1279976579 + 4 * 3600);
}

TEST_F(StatusGetters, network_time_that_was_not_sent_clears_the_record) {
  answers["cf 14 00"] = NETWORK_TIME;
  open();
  EXPECT_EQ(vurn_get_module_time(&when, &number), VURN_OK);
  refuse("cf 14 00");
  vurn_set_log_mask(VURN_LOG_TRACE);
  EXPECT_EQ(vurn_get_module_time(&when, &number), VURN_ERR_TIME_NOT_PROVIDED);
  EXPECT_EQ(gDiagInfo.local_time_offset, -1);
  EXPECT_EQ(to_hex(gDiagInfo.network_time), to_hex(Bytes(19, 0)));
  EXPECT_EQ(world.log_text().substr(0, 32), "D zop:Network time not provided ");
}
