// Every command against the simulated modem: each side must understand what the other sends. The
// two share no code, so a mistake in either shows here.

#include <cstring>

#include "include/zop_diag_info.h"
#include "tests/support/link_test.h"
#include "tests/support/simulated_far_end.h"

using namespace test;

class AgainstTheSimulator : public OpenLinkTest {
 protected:
  void SetUp() override {
    OpenLinkTest::SetUp();
    world.far_end = &far_end;
  }
  sim::Model& model() { return far_end.modem.model(); }

  SimulatedFarEnd far_end;
  uint32_t result = 4711;
};

// By number, because the names of bands come from the same header on both sides.
TEST_F(AgainstTheSimulator, bands_that_can_be_set) {
  std::string bands;
  for (uint32_t band = 0; band < 256; ++band) {
    if (zop_set_band(band) == ZOP_SUCCESS) bands += std::to_string(band) + " ";
  }
  EXPECT_EQ(bands, "43 44 47 48 80 81 84 ");
}

TEST_F(AgainstTheSimulator, a_pin_goes_through_its_life) {
  const uint8_t right[8] = {'1', '2', '3', '4'};
  const uint8_t other[8] = {'9', '8', '7', '6'};
  const uint8_t key[8] = {'1', '2', '3', '4', '5', '6', '7', '8'};
  auto retries = [] {
    uint32_t sim, lock, left;
    EXPECT_EQ(zop_simcard_status(&sim, &lock, &left), ZOP_SUCCESS);
    return left;
  };
  EXPECT_EQ(zop_simcard_enable(other, 4, &result), ZOP_SUCCESS);
  EXPECT_EQ(result, 1u);
  EXPECT_EQ(retries(), 2u);
  EXPECT_EQ(zop_simcard_enable(right, 4, &result), ZOP_SUCCESS);
  EXPECT_EQ(result, 0u);
  EXPECT_EQ(retries(), 3u);
  uint8_t copy[8];
  EXPECT_EQ(zop_simcard_pin_read(copy, 8, &result), ZOP_SUCCESS);
  EXPECT_EQ(memcmp(copy, right, 8), 0);
  EXPECT_EQ(zop_simcard_change(right, 4, other, 4, &result), ZOP_SUCCESS);
  EXPECT_EQ(result, 0u);
  EXPECT_EQ(zop_simcard_pin_read(copy, 8, &result), ZOP_SUCCESS);
  EXPECT_EQ(memcmp(copy, other, 8), 0);
  for (uint32_t left : {2u, 1u, 0u, 0u}) {
    EXPECT_EQ(zop_simcard_verify(right, 4, &result), ZOP_SUCCESS);
    EXPECT_EQ(result, 1u);
    EXPECT_EQ(retries(), left);
  }
  EXPECT_EQ(zop_simcard_verify(other, 4, &result), ZOP_SUCCESS);
  EXPECT_EQ(result, 1u);  // blocked: the right PIN does not help
  EXPECT_EQ(zop_simcard_unblock(other, 4, right, 4, &result), ZOP_SUCCESS);
  EXPECT_EQ(result, 1u);
  EXPECT_EQ(zop_simcard_unblock(key, 8, right, 4, &result), ZOP_SUCCESS);
  EXPECT_EQ(result, 0u);
  EXPECT_EQ(retries(), 3u);
  EXPECT_EQ(zop_simcard_disable(right, 4, &result), ZOP_SUCCESS);
  EXPECT_EQ(result, 0u);
  EXPECT_EQ(model().sim.lock, 5);
}

TEST_F(AgainstTheSimulator, operator_lists_of_any_length_come_in_blocks) {
  model().sim.operators.assign(45, {"310", "410"});
  uint8_t block[161];
  std::string counts;
  for (uint32_t first = 1; first <= 61; first += 20) {
    ASSERT_EQ(zop_get_uim_data_oplmn_partial(first, &result, block), ZOP_SUCCESS);
    EXPECT_EQ(result, 45u);
    counts += std::to_string(block[0]) + " ";
  }
  EXPECT_EQ(counts, "20 20 5 0 ");
  EXPECT_EQ(memcmp(block + 1, "\0\0\0", 3), 0);
}

TEST_F(AgainstTheSimulator, lists_keep_their_entries) {
  model().sim.forbidden = {{"310", "410"}, {"262", "01"}};
  uint8_t forbidden[121];
  ASSERT_EQ(zop_get_uim_data_fplmn(forbidden), ZOP_SUCCESS);
  EXPECT_EQ(forbidden[0], 2);
  EXPECT_EQ(memcmp(forbidden + 1, "31041026201\0", 12), 0);
  zop_uplmn_list user = {};
  memcpy(user.bytes,
         "\x01"
         "26202\0\x80",
         8);
  ASSERT_EQ(zop_set_uim_data_uplmn(user), ZOP_SUCCESS);
  uint8_t read_back[121];
  ASSERT_EQ(zop_get_uim_data_uplmn(read_back), ZOP_SUCCESS);
  EXPECT_EQ(memcmp(read_back, user.bytes, sizeof read_back), 0);
}

TEST_F(AgainstTheSimulator, profiles_and_files_are_read_back) {
  zop_pdp_record record = {};
  record.bytes[0] = 3;
  memcpy(record.bytes + 1, "internet", 8);
  ASSERT_EQ(zop_write_pdp_profile(record), ZOP_SUCCESS);
  Bytes profiles(1664);
  ASSERT_EQ(zop_read_pdp_profile(profiles.data()), ZOP_SUCCESS);
  EXPECT_EQ(memcmp(profiles.data() + 208, record.bytes, sizeof record.bytes), 0);
  uint8_t data[255];
  ASSERT_EQ(zop_get_uim_data(0x6FAD, 1, data, &result), ZOP_SUCCESS);
  EXPECT_EQ(result, 4u);
  EXPECT_EQ(to_hex({data, 4}), "00 00 02 00");
  EXPECT_EQ(zop_get_uim_data(0x6F7B, 0, data, &result), ZOP_ERR_MODEM_FAILURE);
}

TEST_F(AgainstTheSimulator, calls_and_messages) {
  uint32_t call = 4711;
  ASSERT_EQ(zop_originate_call_test(0, "15550199"), ZOP_SUCCESS);
  EXPECT_EQ(zop_get_call_status(&call), ZOP_SUCCESS);
  EXPECT_EQ(call, 5u);
  EXPECT_EQ(zop_end_call_test(), ZOP_SUCCESS);
  EXPECT_EQ(zop_get_call_status(&call), ZOP_SUCCESS);
  EXPECT_EQ(call, 0u);
  EXPECT_EQ(zop_send_sms("+15550100", "hello"), ZOP_SUCCESS);
  EXPECT_EQ(model().outbox.at(0).text, "hello");
  EXPECT_EQ(zop_send_sms("", "hello"), ZOP_ERR_MODEM_FAILURE);
}

TEST_F(AgainstTheSimulator, the_screen_shows_the_model) {
  zop_screen screen;
  const sim::Radio& radio = model().radio;
  void* bytes = &screen;
  ASSERT_EQ(zop_get_field_information(static_cast<uint8_t*>(bytes)), ZOP_SUCCESS);
  EXPECT_EQ(std::string(screen.network_name), model().network.name);
  EXPECT_EQ(std::string(screen.lac, 4), "1A2B");
  EXPECT_EQ(static_cast<int8_t>(screen.rssi[0]), radio.rssi);
  EXPECT_EQ(screen.band[0], radio.band);
  EXPECT_EQ(screen.radio.wcdma.cells[1].scrambling_code[0], 101);
  EXPECT_EQ(screen.radio.wcdma.hsdpa_indication, 1);
  model().radio.system_mode = 3;
  ASSERT_EQ(zop_get_field_information(static_cast<uint8_t*>(bytes)), ZOP_SUCCESS);
  EXPECT_EQ(screen.radio.gsm.pathloss[0], radio.pathloss);
  EXPECT_EQ(screen.radio.gsm.neighbor_count[0], 2);
  EXPECT_EQ(screen.radio.gsm.best_count[0], 1);
  EXPECT_EQ(screen.radio.gsm.mfrm, radio.mfrm);
  int32_t bars = 0;
  EXPECT_EQ(zop_get_bars(&bars), ZOP_SUCCESS);
  EXPECT_EQ(bars, 3);
}

TEST_F(AgainstTheSimulator, a_reset_takes_the_device_away_and_brings_it_back) {
  ASSERT_EQ(zop_set_reset(), ZOP_SUCCESS);
  world.advance(std::chrono::seconds(1));
  EXPECT_EQ(zop_get_rac(&result), ZOP_ERR_NO_RESPONSE);
  world.advance(std::chrono::seconds(10));
  EXPECT_EQ(zop_open(DEVICE), 0u);
  EXPECT_EQ(zop_get_rac(&result), ZOP_SUCCESS);
}
