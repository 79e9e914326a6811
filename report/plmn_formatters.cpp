// Networks: MCC and MNC, and in the home's and operator's lists the access technology.
#include <string.h>

#include "report/formatters.h"
#include "report/scratch.h"

enum { PLMN_SIZE = 6, ENTRY_SIZE = 8, BLOCKS = 7, BLOCK_SIZE = 161, BLOCK_ENTRIES = 20 };
enum { TECHNOLOGY = 128 };  // in the first byte UMTS, in the second GSM

static const char* prv_text(const uint8_t* p) {
  return static_cast<const char*>(static_cast<const void*>(p));
}

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
  for (int left = list[0]; left > 0 && prv_is_in_record(plmn, PLMN_SIZE); --left) {
    out.append("%.3s;%.3s ", prv_text(plmn), prv_text(plmn + 3));
    plmn += PLMN_SIZE;
  }
  return prv_give_list(out, text, length);
}

static void prv_append_technology(BoundedWriter& out, uint8_t first, uint8_t second) {
  if (first == TECHNOLOGY && second == 0) {
    out.append("UMTS");
  } else if (first == 0 && second == TECHNOLOGY) {
    out.append("GSM");
  } else {
    out.append("%d_%d", first, second);
  }
}

static void prv_append_block(BoundedWriter& out, const uint8_t* block) {
  const uint8_t* entry = block + 1;
  for (int left = block[0]; left > 0 && prv_is_in_record(entry, ENTRY_SIZE); --left) {
    prv_append_technology(out, entry[6], entry[7]);
    out.append(";%.3s;%.3s ", prv_text(entry), prv_text(entry + 3));
    entry += ENTRY_SIZE;
  }
}

int prv_format_plmn_block(const zop_log_item* item, const char** text, int* length, int) {
  BoundedWriter out = prv_scratch();
  prv_append_block(out, prv_bytes(item->value));
  return prv_give_list(out, text, length);
}

int prv_format_oplmn(const zop_log_item*, const char** text, int* length, int) {
  BoundedWriter out = prv_scratch();
  for (uint32_t block = 0; block < BLOCKS && block * BLOCK_ENTRIES < gDiagInfo.oplmn_count;
       ++block) {
    prv_append_block(out, gDiagInfo.oplmn[block]);
  }
  return prv_give_list(out, text, length);
}
