// Every query of the command library, one row each: the request it sends, an answer, and what must
// come out of it.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>

#include "commands/exchange.h"
#include "link/serial_port.h"
#include "tests/support/fresh_link.h"
#include "tests/support/far_ends.h"

using namespace test;

static const char DEVICE[] = "/dev/tts/USB1";

// Runs a command and shows its outputs as text.
using Call = std::function<unsigned(std::string& shown)>;

template <typename Value>
static Call scalar(unsigned (*command)(Value*)) {
  return [command](std::string& shown) {
    Value value = 4711;
    unsigned result = command(&value);
    shown = std::to_string(value);
    return result;
  };
}

template <typename Value>
static Call pair(unsigned (*command)(Value*, Value*)) {
  return [command](std::string& shown) {
    Value a = 4711, b = 4711;
    unsigned result = command(&a, &b);
    shown = std::to_string(a) + " " + std::to_string(b);
    return result;
  };
}

// A buffer command: what was written of a canvas of 0xEE bytes, as hex.
static std::string written_part(const Bytes& canvas) {
  auto last = std::find_if(canvas.rbegin(), canvas.rend(), [](uint8_t b) { return b != 0xEE; });
  return to_hex({canvas.begin(), last.base()});
}

template <typename Byte>
static Call text(unsigned (*command)(Byte*, uint32_t*), uint32_t minimum) {
  return [command, minimum](std::string& shown) {
    Bytes canvas(300, 0xEE);
    uint32_t size = minimum;
    void* out = canvas.data();
    unsigned result = command(static_cast<Byte*>(out), &size);
    EXPECT_EQ(size, minimum);
    shown = written_part(canvas);
    return result;
  };
}

static Call record(unsigned (*command)(uint8_t*)) {
  return [command](std::string& shown) {
    Bytes canvas(300, 0xEE);
    unsigned result = command(canvas.data());
    shown = written_part(canvas);
    return result;
  };
}

namespace {
struct Query {
  const char* name;
  Call call;
  std::string request;  // payload of the frame, hex
  std::string answer;   // behind the header of a vendor answer with status 0
  std::string shown;
};
}  // namespace

// Bytes 0x01, 0x02 ... as hex, followed by zeros.
static std::string counting(size_t count, size_t zeros = 0) {
  Bytes bytes(count + zeros, 0);
  for (size_t i = 0; i < count; ++i) bytes[i] = static_cast<uint8_t>(i + 1);
  return to_hex(bytes);
}

static const Query QUERIES[] = {
    {"roaming", scalar(zop_get_roaming_status), "cf 21 00", "ff", "255"},
    {"data service mode", scalar(zop_get_data_service_mode), "cf 24 00", "ff", "-1"},
    {"uarfcn", scalar(zop_get_uarfcn), "cf 25 00", "fe ff", "65534"},
    {"call status", scalar(zop_get_call_status), "cf 26 00", "ff", "255"},
    {"rac", scalar(zop_get_rac), "cf 2f 00", "ff", "255"},
    {"mcc", text(zop_get_mcc, 3), "cf 30 00", "33 31 30 34", "33 31 30"},
    {"mnc", text(zop_get_mnc, 3), "cf 31 00", "34 31 30 34", "34 31 30"},
    {"location area", text(zop_get_location_area_id, 14), "cf 32 00", counting(20), counting(14)},
    {"cell id", scalar(zop_get_cell_id), "cf 33 00", "78 56 34 f2", "4063516280"},
    {"network name", text(zop_get_network_name, 255), "cf 3a 00", counting(60, 195),
     counting(60, 195)},
    {"service", scalar(zop_get_service_status), "cf 3b 00", "ff", "-1"},
    {"registration", scalar(zop_get_registration_status), "cf 3c 00", "ff", "255"},
    {"event originated", record(zop_get_info_event_orig), "cf 3e 00", counting(100), counting(89)},
    {"event activated", record(zop_get_info_event_act), "cf 3f 00", counting(60), counting(47)},
    {"event deactivated", record(zop_get_info_event_deact), "cf 40 00", "05 06", "05"},
    {"event ended", record(zop_get_info_event_end), "cf 41 00", "05 06 07 08", "05 06 07"},
    {"band", scalar(zop_get_band), "cf 51 00", "54 ff", "-172"},
    {"network mode", scalar(zop_get_network_op_mode), "cf 52 00", "ff ff", "-1"},
    {"mm attach", pair(zop_get_mm_attach_state), "cf 53 00", "01 80 ff ff", "-32767 -1"},
    {"gmm attach", pair(zop_get_gmm_attach_state), "cf 54 00", "01 00 6f 00", "1 111"},
    {"mfrm", scalar(zop_get_mfrm), "cf 55 00", "ff ff", "-1"},
    {"gmm state", scalar(zop_get_gmm_state), "cf 56 00", "03 00", "3"},
    {"pdp state", pair(zop_get_pdp_state), "cf 57 00", "02 00 ff ff", "2 -1"},
    {"pmm mode", scalar(zop_get_pmm_mode), "cf 58 00", "ff ff", "-1"},
    {"drx", scalar(zop_get_drx), "cf 59 00", "ff ff", "65535"},
    {"hsdpa", pair(zop_get_hsdpa_status), "cf 5a 00", "01 00 ff ff", "1 -1"},
    {"egprs", scalar(zop_get_egprs_indication), "cf 5e 00", "ff ff", "-1"},
    {"mm lu", pair(zop_get_mm_lu_state), "cf 65 00", "0d 00 00 80", "13 -32768"},
    {"gmm rau", pair(zop_get_gmm_rau_state), "cf 66 00", "06 00 6f 00", "6 111"},
    {"powerup flag", scalar(zop_get_powerup_flag), "cf 6d 00", "01", "1"},
    {"rau type", scalar(zop_get_rau_type), "cf 6e 00", "ff", "255"},
    {"carrier", scalar(zop_get_carrier), "cf 6f 00", "ff", "-1"},
    {"network time", record(zop_get_network_time), "cf 14 00", counting(30), counting(19)},
    {"system mode", scalar(zop_get_system_mode), "cf 1f 00", "07", "7"},
    {"imei", text(zop_get_imei, 20), "cf 67 00", counting(20), counting(16, 4)},
    {"imsi", text(zop_get_imsi, 20), "cf 68 00", counting(20), counting(16, 4)},
    {"iccid", text(zop_get_iccid, 20), "cf 23 00", counting(30), counting(20)},
    {"phone number", text(zop_get_radio_phone_number, 36), "cf 07 00", counting(50), counting(36)},
    {"hardware", text(zop_get_hardware_version, 20), "cf 48 00", counting(30), counting(20)},
    {"firmware", text(zop_get_firmware_version, 20), "cf 5d 00", counting(30), counting(20)},
    {"card mode", scalar(zop_get_card_mode), "cf 4a 00", "ff ff", "-1"},
    {"rssi", scalar(zop_get_rssi), "cf 20 00", "b5 ff", "-75"},
};

class Queries : public testing::Test {
 protected:
  void SetUp() override {
    world.far_end = &modem;
    fresh_link();
  }
  void TearDown() override { diag_close(); }

  // The answer of a vendor command: header of the request, status, payload.
  static Bytes vendor_answer(const std::string& request, unsigned status, const std::string& rest) {
    Bytes answer = hex(request);
    answer.push_back(static_cast<uint8_t>(status));
    answer.push_back(static_cast<uint8_t>(status >> 8));
    Bytes payload = hex(rest);
    answer.insert(answer.end(), payload.begin(), payload.end());
    return answer;
  }
  unsigned run(const Call& call, std::string& shown, const Bytes& answer) {
    diag_open(DEVICE);
    modem.requests.clear();
    modem.answers = {{{frame(answer)}}};
    return call(shown);
  }

  World world;
  Script modem;
};

TEST_F(Queries, send_their_request_and_show_their_answer) {
  for (const Query& row : QUERIES) {
    std::string shown;
    EXPECT_EQ(run(row.call, shown, vendor_answer(row.request, 0, row.answer)), ZOP_SUCCESS)
        << row.name;
    EXPECT_EQ(shown, row.shown) << row.name;
    ASSERT_EQ(modem.requests.size(), 1u) << row.name;
    EXPECT_EQ(to_hex(modem.requests[0]), to_hex(frame(hex(row.request)))) << row.name;
  }
}

// A capacity one below the minimum gives the minimum back, closed link or open, and sends nothing.
TEST_F(Queries, want_the_minimum_capacity) {
  struct {
    unsigned (*command)(uint8_t*, uint32_t*);
    uint32_t minimum;
  } rows[] = {{zop_get_mcc, 3},
              {zop_get_mnc, 3},
              {zop_get_imei, 20},
              {zop_get_imsi, 20},
              {zop_get_iccid, 20},
              {zop_get_location_area_id, 14},
              {zop_get_network_name, 255},
              {zop_get_hardware_version, 20},
              {zop_get_firmware_version, 20},
              {zop_get_radio_serial_number, 8},
              {zop_get_tq2_version, 17}};
  for (auto& row : rows) {
    for (uint32_t capacity : {row.minimum - 1, 0u, 0xFFFFFFFFu}) {
      uint8_t canvas[300];
      memset(canvas, 0xEE, sizeof canvas);
      uint32_t size = capacity;
      EXPECT_EQ(row.command(canvas, &size), ZOP_ERR_BUFFER_TOO_SMALL);
      EXPECT_EQ(size, row.minimum);
      EXPECT_EQ(canvas[0], 0xEE);
    }
  }
  uint32_t size = 35;
  char number[64];
  EXPECT_EQ(zop_get_radio_phone_number(number, &size), ZOP_ERR_BUFFER_TOO_SMALL);
  EXPECT_EQ(size, 36u);
  EXPECT_TRUE(world.written.empty());
}

TEST_F(Queries, home_network) {
  struct {
    const char* answer;
    unsigned result;
  } rows[] = {{"cf 22 00 00 00 01", ZOP_SUCCESS},
              {"cf 22 00 00 00 00", ZOP_ERR_HOME_NETWORK_REFUSED},
              {"cf 22 00 01 00 01", ZOP_ERR_MODEM_FAILURE}};
  for (auto& row : rows) {
    std::string shown;
    Call call = [](std::string&) { return zop_try_to_use_home_network(); };
    EXPECT_EQ(run(call, shown, hex(row.answer)), row.result) << row.answer;
  }
}

TEST_F(Queries, a_powerup_flag_above_1_is_a_failure) {
  std::string shown;
  EXPECT_EQ(run(scalar(zop_get_powerup_flag), shown, hex("cf 6d 00 00 00 02")),
            ZOP_ERR_MODEM_FAILURE);
  EXPECT_EQ(shown, "4711");
}

TEST_F(Queries, serial_number_is_hexadecimal_most_significant_first) {
  std::string shown;
  EXPECT_EQ(run(text(zop_get_radio_serial_number, 8), shown, hex("01 01 02 03 fa")), ZOP_SUCCESS);
  EXPECT_EQ(shown, to_hex(Bytes{'F', 'A', '0', '3', '0', '2', '0', '1'}));
  EXPECT_EQ(to_hex(modem.requests.at(0)), to_hex(frame(hex("01"))));
}

TEST_F(Queries, library_version_needs_no_link) {
  uint8_t version[17];
  uint32_t size = 17;
  EXPECT_EQ(zop_get_tq2_version(version, &size), ZOP_SUCCESS);
  EXPECT_EQ(memcmp(version, "REV_3.0 20100419", 17), 0);
}

TEST_F(Queries, sim_status) {
  uint32_t sim = 9, lock = 9, retries = 9;
  diag_open(DEVICE);
  modem.answers = {{{frame(hex("d2 00 00 00 00 00 02 01 03"))}},
                   {{frame(hex("d2 00 00 01 00 00 04 04 00"))}}};
  EXPECT_EQ(zop_simcard_status(&sim, &lock, &retries), ZOP_SUCCESS);
  EXPECT_EQ(to_hex(modem.requests.at(0)), to_hex(frame(hex("d2 00 00"))));
  EXPECT_EQ(sim, 2u);
  EXPECT_EQ(lock, 1u);
  EXPECT_EQ(retries, 3u);
  EXPECT_EQ(zop_simcard_status(&sim, &lock, &retries), ZOP_ERR_MODEM_FAILURE);
  EXPECT_EQ(sim, 2u);
}
