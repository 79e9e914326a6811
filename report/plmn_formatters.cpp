// Networks: MCC and MNC, and in the home's and operator's lists the access technology.
#include <stdio.h>

#include "report/formatters.h"
#include "report/scratch.h"
#include "report/supplement.h"

enum { PLMN_SIZE = 6, ENTRY_SIZE = 8 };
enum { TECHNOLOGY = 128 };  // in the first byte UMTS, in the second GSM

static const char* prv_text(const uint8_t* p) {
  return static_cast<const char*>(static_cast<const void*>(p));
}

// A list begins with its count.
static int prv_count(const uint8_t* list, int most) { return list[0] < most ? list[0] : most; }

// One network, registered with; empty when there is none.
int prv_format_plmn(const zop_log_item* item, const char** text, int* length, int) {
  const uint8_t* plmn = prv_bytes(item->value);
  BoundedWriter out = prv_scratch();
  bool none = plmn[0] == 0 && plmn[3] == 0;
  if (!none) out.append("%.3s;%.3s", prv_text(plmn), prv_text(plmn + 3));
  return prv_give(out, text, length);
}

int prv_format_plmn_list(const zop_log_item* item, const char** text, int* length, int) {
  const uint8_t* list = prv_bytes(item->value);
  BoundedWriter out = prv_scratch();
  const uint8_t* plmn = list + 1;
  for (int left = prv_count(list, FPLMN_ENTRIES); left > 0; --left) {
    out.append_entry("%.3s;%.3s ", prv_text(plmn), prv_text(plmn + 3));
    plmn += PLMN_SIZE;
  }
  return prv_give_list(out, text, length);
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
  for (int left = prv_count(block, most); left > 0; --left) {
    char text[8];  // two bytes, at most 255_255
    out.append_entry("%s;%.3s;%.3s ", prv_technology(entry, text, sizeof text), prv_text(entry),
                     prv_text(entry + 3));
    entry += ENTRY_SIZE;
  }
}

// The home's list, which is shorter than a block of the operator's.
int prv_format_plmn_block(const zop_log_item* item, const char** text, int* length, int) {
  BoundedWriter out = prv_scratch();
  prv_append_block(out, prv_bytes(item->value), HPLMN_ENTRIES);
  return prv_give_list(out, text, length);
}

int prv_format_oplmn(const zop_log_item*, const char** text, int* length, int) {
  BoundedWriter out = prv_scratch();
  for (uint32_t block = 0; block < OPLMN_BLOCKS && block * BLOCK_ENTRIES < gDiagInfo.oplmn_count;
       ++block) {
    prv_append_block(out, gDiagInfo.oplmn[block], BLOCK_ENTRIES);
  }
  return prv_give_list(out, text, length);
}
