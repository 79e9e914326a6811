// Signal bars: both threshold tables at every edge, the choice of the Ec/Io, limited service.

#include "commands/exchange.h"
#include "core/bytes.h"
#include "include/zop_diag_info.h"
#include "tests/support/link_test.h"

using namespace test;

class Bars : public OpenLinkTest {
 protected:
  void SetUp() override {
    OpenLinkTest::SetUp();
    int32_t unused;  // a damaged answer resets the kept Ec/Io
    modem.answers = {{{hex("01 02 03 7e")}}};
    EXPECT_EQ(zop_get_bars(&unused), ZOP_ERR_BAD_RESPONSE);
    forget_owed();
  }

  int32_t bars(const zop_screen& screen) {
    Bytes answer = hex("cf 34 00 01 00");  // the status is ignored
    const void* bytes = &screen;
    auto first = static_cast<const uint8_t*>(bytes);
    answer.insert(answer.end(), first, first + sizeof screen);
    modem.answers = {{{frame(answer)}}};
    int32_t value = 4711;
    testing::internal::CaptureStdout();
    EXPECT_EQ(zop_get_bars(&value), ZOP_SUCCESS);
    fflush(stdout);
    printed = testing::internal::GetCapturedStdout();
    return value;
  }
  static zop_screen gsm(int rssi) {
    zop_screen screen = {};
    screen.system_mode = ZOP_SCREEN_GSM;
    put_le32(screen.rssi, static_cast<uint32_t>(rssi));
    return screen;
  }
  static zop_screen wcdma(int rssi, std::initializer_list<std::pair<int, int>> cells) {
    zop_screen screen = gsm(rssi);
    screen.system_mode = ZOP_SCREEN_WCDMA;
    size_t i = 0;
    for (auto [set, ecio] : cells) {
      put_le16(screen.radio.wcdma.cells[i].set, static_cast<unsigned>(set));
      put_le16(screen.radio.wcdma.cells[i].scrambling_code, 100);
      put_le16(screen.radio.wcdma.cells[i++].ecio, static_cast<unsigned>(ecio));
    }
    return screen;
  }

  std::string printed;
};

TEST_F(Bars, gsm_at_every_edge) {
  struct {
    int rssi, bars;
  } rows[] = {{0, 0},   {-1, 5},  {-64, 5}, {-65, 4},  {-74, 4},  {-75, 3}, {-84, 3},
              {-85, 2}, {-94, 2}, {-95, 1}, {-104, 1}, {-105, 0}, {70, 4},  {-32768, 5}};
  for (auto& row : rows) EXPECT_EQ(bars(gsm(row.rssi)), row.bars) << row.rssi;
  bars(gsm(-70));
  EXPECT_EQ(printed, "GSM::: rssi = -70\n");
}

TEST_F(Bars, wcdma_at_every_edge) {
  const int ecio[] = {-5, -10, -13, -16, -17};
  struct {
    int rssi;
    int bars[5];
  } rows[] = {{-90, {5, 4, 3, 2, 1}},  {-91, {4, 3, 2, 1, 1}},  {-95, {4, 3, 2, 1, 1}},
              {-96, {3, 2, 1, 1, 1}},  {-99, {3, 2, 1, 1, 1}},  {-100, {2, 1, 1, 1, 1}},
              {-102, {2, 1, 1, 1, 1}}, {-103, {1, 1, 1, 1, 1}}, {-105, {1, 1, 1, 1, 1}},
              {-106, {0, 0, 0, 0, 0}}};
  for (auto& row : rows) {
    for (int i = 0; i < 5; ++i) {
      EXPECT_EQ(bars(wcdma(row.rssi, {{0, ecio[i]}})), row.bars[i]) << row.rssi << " " << ecio[i];
    }
    for (int i = 0; i < 4; ++i) {  // one below each edge belongs to the next column
      EXPECT_EQ(bars(wcdma(row.rssi, {{0, ecio[i] - 1}})), row.bars[i + 1]) << row.rssi;
    }
  }
}

TEST_F(Bars, ecio_is_the_best_of_the_active_set) {
  struct {
    std::initializer_list<std::pair<int, int>> cells;
    int bars;
  } rows[] = {
      {{{0, -12}, {0, -7}, {0, -15}}, 4},
      {{{1, -3}, {0, -12}}, 3},  // monitored cells do not count
      {{{1, -3}}, 1},            // no active cell
  };
  for (auto& row : rows) EXPECT_EQ(bars(wcdma(-80, row.cells)), row.bars);
  // Cells after an empty entry do not count.
  zop_screen gap = wcdma(-80, {{0, -12}});
  gap.radio.wcdma.cells[2].ecio[0] = 0xFF;
  EXPECT_EQ(bars(gap), 3);
  zop_screen full = wcdma(-80, {});
  for (zop_wcdma_cell& cell : full.radio.wcdma.cells) put_le16(cell.ecio, 0xFFF8);
  put_le16(full.radio.wcdma.rscp, 85);
  full.radio.wcdma.hsdpa_status = 1;
  EXPECT_EQ(bars(full), 4);
  EXPECT_EQ(printed, "WCDMA::: rssi = -80, ecio = -8, rscp = 85, HSPDA = 1\n");
}

TEST_F(Bars, an_empty_first_entry_keeps_the_last_ecio_until_gsm) {
  EXPECT_EQ(bars(wcdma(-80, {})), 1);  // nothing known yet: -32
  EXPECT_EQ(bars(wcdma(-80, {{0, -4}})), 5);
  EXPECT_EQ(bars(wcdma(-80, {})), 5);
  bars(gsm(-80));
  EXPECT_EQ(bars(wcdma(-80, {})), 1);
}

TEST_F(Bars, limited_service_comes_before_the_mode) {
  for (int mode : {3, 5, 0}) {
    for (int service : {1, 3}) {
      zop_screen screen = gsm(-70);
      screen.system_mode = static_cast<uint8_t>(mode);
      screen.service_status = static_cast<uint8_t>(service);
      EXPECT_EQ(bars(screen), -1);
      EXPECT_EQ(printed,
                "service_status : ZOP_SERVICE_STATUS_LIMITED or "
                "ZOP_SERVICE_STATUS_LIMITED_REGIONAL\n");
    }
  }
  zop_screen nothing = gsm(-70);
  nothing.system_mode = 0;
  EXPECT_EQ(bars(nothing), 0);
  EXPECT_EQ(printed, "");
}
