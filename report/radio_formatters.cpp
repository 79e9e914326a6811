// What belongs to one radio technology: empty on a screen of the other.
#include <iterator>

#include "report/formatters.h"
#include "report/scratch.h"

static int prv_signed16(const uint8_t* p) { return static_cast<int16_t>(get_le16(p)); }

// A count of the screen, at most what its list has room for.
static uint32_t prv_count(const uint8_t* field, size_t room) {
  uint32_t count = get_le32(field);
  return count < room ? count : static_cast<uint32_t>(room);
}

// An entry whose code and Ec/Io are zero ends the list; there is no count.
int prv_format_wcdma_cells(const zop_log_item*, const char** text, int* length, int) {
  BoundedWriter out = prv_scratch();
  for (const zop_wcdma_cell& cell : gDiagInfo.screen.radio.wcdma.cells) {
    int code = get_le16(cell.scrambling_code);
    int ecio = prv_signed16(cell.ecio);
    if (!prv_is_wcdma_screen() || (code == 0 && ecio == 0)) break;
    out.append_entry("%d;%d;%d ", get_le16(cell.set), code, ecio);
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
  uint32_t count = prv_count(gsm.neighbor_count, std::size(gsm.neighbors));
  for (uint32_t i = 0; prv_is_gsm_screen() && i < count; ++i) {
    const zop_gsm_neighbor& cell = gsm.neighbors[i];
    out.append_entry("%d;%d;%d ", prv_signed16(cell.rssi), get_le16(cell.arfcn), cell.bsic);
  }
  return prv_give_list(out, text, length);
}

int prv_format_gsm_best(const zop_log_item*, const char** text, int* length, int) {
  const zop_gsm_screen& gsm = gDiagInfo.screen.radio.gsm;
  BoundedWriter out = prv_scratch();
  uint32_t count = prv_count(gsm.best_count, std::size(gsm.best));
  for (uint32_t i = 0; prv_is_gsm_screen() && i < count; ++i) {
    const zop_gsm_best_cell& cell = gsm.best[i];
    out.append_entry("%d;%d;%d;%d ", get_unaligned_int32_t(cell.c), get_le16(cell.d), cell.a,
                     cell.b);
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
