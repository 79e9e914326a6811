// What belongs to one radio technology: empty on a screen of the other.
#include "report/formatters.h"
#include "report/scratch.h"

enum { WCDMA_CELL_SIZE = 6, GSM_NEIGHBOR_SIZE = 5, GSM_BEST_SIZE = 9 };

static int prv_signed16(const uint8_t* p) { return static_cast<int16_t>(get_le16(p)); }

// An entry whose code and Ec/Io are zero ends the list; there is no count.
int prv_format_wcdma_cells(const zop_log_item*, const char** text, int* length, int) {
  BoundedWriter out = prv_scratch();
  const uint8_t* cell = prv_bytes(gDiagInfo.screen.radio.wcdma.cells);
  while (prv_is_wcdma_screen() && prv_is_in_record(cell, WCDMA_CELL_SIZE) && !out.is_full()) {
    int code = get_le16(cell + 2);
    int ecio = prv_signed16(cell + 4);
    if (code == 0 && ecio == 0) break;
    out.append("%d;%d;%d ", get_le16(cell), code, ecio);
    cell += WCDMA_CELL_SIZE;
  }
  return prv_give_list(out, text, length);
}

int prv_format_rscp(const zop_log_item* item, const char** text, int* length, int) {
  BoundedWriter out = prv_scratch();
  if (prv_is_wcdma_screen()) out.append("-%u", get_unaligned_uint16_t(item->value));
  return prv_give(out, text, length);
}

int prv_format_drx(const zop_log_item* item, const char** text, int* length, int) {
  BoundedWriter out = prv_scratch();
  if (prv_is_wcdma_screen()) out.append("%u", get_unaligned_uint16_t(item->value));
  return prv_give(out, text, length);
}

int prv_format_gsm_neighbors(const zop_log_item*, const char** text, int* length, int) {
  const zop_gsm_screen& gsm = gDiagInfo.screen.radio.gsm;
  BoundedWriter out = prv_scratch();
  uint32_t count = prv_is_gsm_screen() ? get_unaligned_uint32_t(gsm.neighbor_count) : 0;
  const uint8_t* cell = prv_bytes(gsm.neighbors);
  while (count > 0 && prv_is_in_record(cell, GSM_NEIGHBOR_SIZE) && !out.is_full()) {
    out.append("%d;%d;%d ", prv_signed16(cell), get_le16(cell + 2), cell[4]);
    cell += GSM_NEIGHBOR_SIZE;
    --count;
  }
  return prv_give_list(out, text, length);
}

int prv_format_gsm_best(const zop_log_item*, const char** text, int* length, int) {
  const zop_gsm_screen& gsm = gDiagInfo.screen.radio.gsm;
  BoundedWriter out = prv_scratch();
  uint32_t count = prv_is_gsm_screen() ? get_unaligned_uint32_t(gsm.best_count) : 0;
  const uint8_t* cell = prv_bytes(gsm.best);
  while (count > 0 && prv_is_in_record(cell, GSM_BEST_SIZE) && !out.is_full()) {
    out.append("%d;%d;%d;%d ", get_unaligned_int32_t(cell + 3), get_le16(cell + 7), cell[0],
               cell[1]);
    cell += GSM_BEST_SIZE;
    --count;
  }
  return prv_give_list(out, text, length);
}

int prv_format_pathloss(const zop_log_item* item, const char** text, int* length, int) {
  BoundedWriter out = prv_scratch();
  if (prv_is_gsm_screen()) out.append("%d", get_unaligned_int32_t(item->value));
  return prv_give(out, text, length);
}

int prv_format_mfrm(const zop_log_item* item, const char** text, int* length, int) {
  BoundedWriter out = prv_scratch();
  if (prv_is_gsm_screen()) out.append("%u", *prv_bytes(item->value));
  return prv_give(out, text, length);
}
