// Radio measurements and cell lists. The status of these answers is not checked.
#include <string.h>

#include "commands/exchange.h"
#include "core/bytes.h"

// The only query that compares the header of the answer with its request.
unsigned zop_get_rssi(int32_t* rssi) {
  if (unsigned error = begin_vendor(' ')) return error;
  if (unsigned error = exchange(PLAIN_REQUEST)) return error;
  if (memcmp(fr_buff, ft_buff, PLAIN_REQUEST) != 0) return ZOP_ERR_BAD_RESPONSE;
  copy_fields({s16(5, rssi)});
  return ZOP_SUCCESS;
}

unsigned zop_get_rscp(int32_t* rscp) { return vendor_query('\'', STATUS_IGNORED, {s16(5, rscp)}); }

unsigned zop_get_txpower(int32_t* txpower) {
  return vendor_query('(', STATUS_IGNORED, {s16(5, txpower)});
}

unsigned zop_get_pathloss(int32_t* pathloss) {
  return vendor_query('9', STATUS_IGNORED, {s16(5, pathloss)});
}

// A set of cells in the answer: u8 count, then two u16 for each cell.
enum { SET_COUNT = 5, SET_ENTRIES = 6, SET_ENTRY_SIZE = 4 };

// The capacity is checked after the exchange, when the number of cells is known.
static unsigned cell_set(uint8_t subcommand, uint8_t type, uint8_t* cells, uint32_t* count) {
  if (unsigned error = begin_vendor(subcommand)) return error;
  if (unsigned error = exchange(PLAIN_REQUEST)) return error;
  uint32_t n = fr_buff[SET_COUNT];
  if (unsigned error = capacity(count, n)) return error;
  *count = n > ZOP_CELL_SET_MAX ? 0 : n;
  const uint8_t* entry = fr_buff + SET_ENTRIES;
  for (uint32_t i = 0; i < *count; ++i) {
    cells[0] = type;
    cells[1] = 0;
    memcpy(cells + 2, entry, SET_ENTRY_SIZE);
    cells += ZOP_CELL_RECORD_SIZE;
    entry += SET_ENTRY_SIZE;
  }
  return ZOP_SUCCESS;
}

unsigned zop_get_active_set_list(uint8_t* cells, uint32_t* count) {
  return cell_set(')', ZOP_CELL_ACTIVE, cells, count);
}

unsigned zop_get_monitored_set_list(uint8_t* cells, uint32_t* count) {
  return cell_set('*', ZOP_CELL_MONITORED, cells, count);
}

unsigned zop_get_detected_set_list(uint8_t* cells, uint32_t* count) {
  return cell_set('+', ZOP_CELL_DETECTED, cells, count);
}

// A list of size bytes that starts with a u32 count; zeros if the count is not 1 to most.
static unsigned counted_list(uint8_t subcommand, uint32_t most, uint8_t* list, uint16_t size) {
  if (unsigned error = begin_vendor(subcommand)) return error;
  if (unsigned error = exchange(PLAIN_REQUEST)) return error;
  uint32_t count = get_le32(fr_buff + ANSWER_PAYLOAD);
  if (count >= 1 && count <= most) {
    copy_fields({bytes(ANSWER_PAYLOAD, size, list)});
  } else {
    memset(list, 0, size);
  }
  return ZOP_SUCCESS;
}

unsigned zop_get_neighbor_cell_list(uint8_t* list164) {
  return counted_list(',', 32, list164, ZOP_NEIGHBOR_LIST_SIZE);
}

unsigned zop_get_best_six_cell_list(uint8_t* list58) {
  return counted_list('-', 6, list58, ZOP_BEST_SIX_SIZE);
}

unsigned zop_get_field_information(uint8_t* record345) {
  return vendor_query('4', STATUS_IGNORED, {bytes(5, ZOP_SCREEN_SIZE, record345)});
}
