// Formatters of networks and cells. A value of one radio technology is empty on a screen of the
// other.
#include <stdio.h>

#include <iterator>

#include "include/zop.h"
#include "report/formatters.h"
#include "report/supplement.h"
#include "report/text.h"

// ---- networks: MCC and MNC; in the home and operator lists also the access technology ----

enum { ENTRY_SIZE = 8 };
enum { TECHNOLOGY = 128 };  // UMTS in the first byte, GSM in the second

static const char* prv_text(const uint8_t* p) {
  return static_cast<const char*>(static_cast<const void*>(p));
}

// A list starts with its count, which is the modem's: at most the entries in its field are used.
static int prv_list_count(const uint8_t* list, int most) { return list[0] < most ? list[0] : most; }

// The registered network; empty if there is none.
int prv_format_plmn(const zop_log_item* item, const char** text, int* length, int) {
  const uint8_t* plmn = prv_bytes(item->value);
  BoundedWriter out = prv_scratch();
  bool none = plmn[0] == 0 && plmn[3] == 0;
  if (!none) out.append("%.3s;%.3s", prv_text(plmn), prv_text(plmn + 3));
  return prv_finish(out, text, length);
}

int prv_format_plmn_list(const zop_log_item* item, const char** text, int* length, int) {
  const uint8_t* list = prv_bytes(item->value);
  BoundedWriter out = prv_scratch();
  const uint8_t* plmn = list + 1;
  for (int left = prv_list_count(list, FPLMN_ENTRIES); left > 0; --left) {
    out.append_entry("%.3s;%.3s ", prv_text(plmn), prv_text(plmn + 3));
    plmn += ZOP_PLMN_SIZE;
  }
  return prv_finish_list(out, text, length);
}

static const char* prv_technology(const uint8_t* entry, char* text, size_t size) {
  uint8_t first = entry[6];
  uint8_t second = entry[7];
  if (first == TECHNOLOGY && second == 0) return "UMTS";
  if (first == 0 && second == TECHNOLOGY) return "GSM";
  snprintf(text, size, "%d_%d", first, second);
  return text;
}

static void prv_append_block(BoundedWriter& out, const uint8_t* block, int most) {
  const uint8_t* entry = block + 1;
  for (int left = prv_list_count(block, most); left > 0; --left) {
    char text[8];  // two bytes, at most 255_255
    out.append_entry("%s;%.3s;%.3s ", prv_technology(entry, text, sizeof text), prv_text(entry),
                     prv_text(entry + 3));
    entry += ENTRY_SIZE;
  }
}

// The home list, which is shorter than a block of the operator list.
int prv_format_plmn_block(const zop_log_item* item, const char** text, int* length, int) {
  BoundedWriter out = prv_scratch();
  prv_append_block(out, prv_bytes(item->value), HPLMN_ENTRIES);
  return prv_finish_list(out, text, length);
}

int prv_format_oplmn(const zop_log_item*, const char** text, int* length, int) {
  BoundedWriter out = prv_scratch();
  for (uint32_t block = 0; block < OPLMN_BLOCKS && block * BLOCK_ENTRIES < gDiagInfo.oplmn_count;
       ++block) {
    prv_append_block(out, gDiagInfo.oplmn[block], BLOCK_ENTRIES);
  }
  return prv_finish_list(out, text, length);
}

// ---- cells ----

// A count in the screen, at most the entries in its list.
static uint32_t prv_count(const uint8_t* field, size_t room) {
  uint32_t count = get_le32(field);
  return count < room ? count : static_cast<uint32_t>(room);
}

// There is no count: an entry whose code and Ec/Io are zero ends the list.
int prv_format_wcdma_cells(const zop_log_item*, const char** text, int* length, int) {
  BoundedWriter out = prv_scratch();
  for (const zop_wcdma_cell& cell : gDiagInfo.screen.radio.wcdma.cells) {
    int code = get_le16(cell.scrambling_code);
    int ecio = get_le16_signed(cell.ecio);
    if (!prv_is_wcdma_screen() || (code == 0 && ecio == 0)) break;
    out.append_entry("%d;%d;%d ", get_le16(cell.set), code, ecio);
  }
  return prv_finish_list(out, text, length);
}

int prv_format_rscp(const zop_log_item* item, const char** text, int* length, int) {
  BoundedWriter out = prv_scratch();
  if (prv_is_wcdma_screen()) out.append("-%u", get_unaligned_uint16_t(item->value));
  return prv_finish(out, text, length);
}

int prv_format_drx(const zop_log_item* item, const char** text, int* length, int) {
  BoundedWriter out = prv_scratch();
  if (prv_is_wcdma_screen()) out.append("%u", get_unaligned_uint16_t(item->value));
  return prv_finish(out, text, length);
}

int prv_format_gsm_neighbors(const zop_log_item*, const char** text, int* length, int) {
  const zop_gsm_screen& gsm = gDiagInfo.screen.radio.gsm;
  BoundedWriter out = prv_scratch();
  uint32_t count = prv_count(gsm.neighbor_count, std::size(gsm.neighbors));
  for (uint32_t i = 0; prv_is_gsm_screen() && i < count; ++i) {
    const zop_gsm_neighbor& cell = gsm.neighbors[i];
    out.append_entry("%d;%d;%d ", get_le16_signed(cell.rssi), get_le16(cell.arfcn), cell.bsic);
  }
  return prv_finish_list(out, text, length);
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
  return prv_finish_list(out, text, length);
}

int prv_format_pathloss(const zop_log_item* item, const char** text, int* length, int) {
  BoundedWriter out = prv_scratch();
  if (prv_is_gsm_screen()) out.append("%d", get_unaligned_int32_t(item->value));
  return prv_finish(out, text, length);
}

int prv_format_mfrm(const zop_log_item* item, const char** text, int* length, int) {
  BoundedWriter out = prv_scratch();
  if (prv_is_gsm_screen()) out.append("%u", *prv_bytes(item->value));
  return prv_finish(out, text, length);
}
