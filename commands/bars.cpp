// Signal bars from the field-test screen, by two tables of thresholds.
//
// last_ecio keeps the Ec/Io of the last WCDMA screen, for a screen whose first cell entry is empty.
// A GSM screen and a damaged answer reset it.
#include <stdio.h>
#include <string.h>

#include "commands/exchange.h"
#include "core/bytes.h"
#include "include/zop_diag_info.h"

enum { NO_ECIO = -32 };

static constinit int16_t last_ecio = NO_ECIO;

namespace {
// GSM: bars up to each level, which is the magnitude of the RSSI.
struct GsmStep {
  int level;
  int bars;
};
}  // namespace

static constexpr GsmStep GSM_STEPS[] = {{64, 5}, {74, 4}, {84, 3}, {94, 2}, {104, 1}};

// WCDMA: a row for each lowest RSSI (dBm), a column for each lowest Ec/Io (dB).
static constexpr int ECIO_STEPS[] = {-5, -10, -13, -16};  // fifth column: below

namespace {
struct WcdmaStep {
  int rssi;
  int bars[5];
};
}  // namespace

static constexpr WcdmaStep WCDMA_STEPS[] = {
    {-90, {5, 4, 3, 2, 1}},  {-95, {4, 3, 2, 1, 1}},  {-99, {3, 2, 1, 1, 1}},
    {-102, {2, 1, 1, 1, 1}}, {-105, {1, 1, 1, 1, 1}},
};

// The magnitude has 16 bits, so that of -32768 stays negative and counts as a strong signal.
static int gsm_bars(int16_t rssi) {
  int level = static_cast<int16_t>(rssi < 0 ? -rssi : rssi);
  if (level == 0) return 0;
  for (const GsmStep& step : GSM_STEPS) {
    if (level <= step.level) return step.bars;
  }
  return 0;
}

static int wcdma_bars(int16_t rssi, int16_t ecio) {
  size_t column = 0;
  while (column < 4 && ecio < ECIO_STEPS[column]) ++column;
  for (const WcdmaStep& step : WCDMA_STEPS) {
    if (rssi >= step.rssi) return step.bars[column];
  }
  return 0;
}

static bool is_empty(const zop_wcdma_cell& cell) {
  static constexpr zop_wcdma_cell EMPTY = {};
  return memcmp(&cell, &EMPTY, sizeof cell) == 0;
}

// The best Ec/Io of the active set, up to the first empty entry; previous if there is no entry.
static int16_t select_ecio(const zop_wcdma_screen& screen, int16_t previous) {
  if (is_empty(screen.cells[0])) return previous;
  int16_t best = NO_ECIO;
  for (const zop_wcdma_cell& cell : screen.cells) {
    if (is_empty(cell)) break;
    int16_t ecio = get_le16_signed(cell.ecio);
    if (get_le16(cell.set) == ZOP_CELL_ACTIVE && ecio > best) best = ecio;
  }
  return best;
}

static int bars_of(const zop_screen& screen) {
  if (screen.system_mode == ZOP_SCREEN_GSM) {
    int16_t rssi = get_le16_signed(screen.rssi);
    last_ecio = NO_ECIO;
    printf("GSM::: rssi = %d\n", rssi);
    return gsm_bars(rssi);
  }
  if (screen.system_mode != ZOP_SCREEN_WCDMA) return 0;
  const zop_wcdma_screen& wcdma = screen.radio.wcdma;
  last_ecio = select_ecio(wcdma, last_ecio);
  printf("WCDMA::: rssi = %d, ecio = %d, rscp = %d, HSPDA = %d\n",
         static_cast<int32_t>(get_le32(screen.rssi)), last_ecio, get_le16(wcdma.rscp),
         wcdma.hsdpa_status);
  return wcdma_bars(get_le16_signed(screen.rssi), last_ecio);
}

unsigned zop_get_bars(int32_t* bars) {
  if (unsigned error = begin_vendor('4')) return error;
  unsigned error = exchange(PLAIN_REQUEST);
  if (error == ZOP_ERR_BAD_RESPONSE) last_ecio = NO_ECIO;
  if (error != ZOP_SUCCESS) return error;
  zop_screen screen = {};
  copy_fields({bytes(ANSWER_PAYLOAD, sizeof screen, &screen)});
  if (screen.service_status == ZOP_SERVICE_LIMITED ||
      screen.service_status == ZOP_SERVICE_LIMITED_REGIONAL) {
    puts("service_status : ZOP_SERVICE_STATUS_LIMITED or ZOP_SERVICE_STATUS_LIMITED_REGIONAL");
    *bars = ZOP_BARS_NONE;
    return ZOP_SUCCESS;
  }
  *bars = bars_of(screen);
  return ZOP_SUCCESS;
}
