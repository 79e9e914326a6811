// PLMN lists and files of the SIM: fixed-size blocks, copied as the modem sends them.
#include "commands/exchange.h"
#include "core/bytes.h"

enum { LAST_FIRST_ENTRY = 256, SIM_FILE_REQUEST = 11, SIM_FILE_OFFSET = 7 };
enum { FPLMN_COUNT = 5, FPLMN_ENTRIES = 8 };  // in the answer: u32 count, then the entries at 9

unsigned zop_get_uim_data_oplmn(uint8_t* block161) {
  return vendor_query('_', STATUS_BYTE3, {bytes(5, ZOP_PLMN_BLOCK_SIZE, block161)});
}

unsigned zop_get_uim_data_hplmn(uint8_t* list81) {
  return vendor_query('`', STATUS_BYTE3, {bytes(5, ZOP_HPLMN_LIST_SIZE, list81)});
}

unsigned zop_get_uim_data_rplmn(uint8_t* plmn6) {
  return vendor_query('a', STATUS_BYTE3, {bytes(5, ZOP_PLMN_SIZE, plmn6)});
}

// The modem's count has 32 bits; callers get its low byte, directly before the entries.
unsigned zop_get_uim_data_fplmn(uint8_t* list121) {
  return vendor_query(
      'b', STATUS_IGNORED,
      {bytes(FPLMN_ENTRIES, ZOP_FPLMN_LIST_SIZE, list121), bytes(FPLMN_COUNT, 1, list121)});
}

unsigned zop_get_uim_data_uplmn(uint8_t* list121) {
  return vendor_query('i', STATUS_BYTE3, {bytes(5, ZOP_UPLMN_LIST_SIZE, list121)});
}

unsigned zop_set_uim_data_uplmn(zop_uplmn_list list) {
  if (unsigned error = begin_vendor('j')) return error;
  put_request(REQUEST_PAYLOAD, list.bytes, sizeof list.bytes);
  if (unsigned error = exchange(REQUEST_PAYLOAD + static_cast<int>(sizeof list.bytes)))
    return error;
  return status(STATUS_BYTE3);
}

// The request holds the low byte of first: 256 is sent as 0.
static unsigned read_block(uint8_t subcommand, uint32_t first, uint32_t* total, uint8_t* block) {
  if (unsigned error = begin_vendor(subcommand)) return error;
  if (first < 1 || first > LAST_FIRST_ENTRY) return ZOP_ERR_BAD_RESPONSE;
  ft_buff[REQUEST_PAYLOAD] = static_cast<uint8_t>(first);
  if (unsigned error = exchange(PLAIN_REQUEST + 1)) return error;
  if (unsigned error = status(STATUS_BYTE3)) return error;
  copy_fields({u8(5, total), bytes(6, ZOP_PLMN_BLOCK_SIZE, block)});
  return ZOP_SUCCESS;
}

unsigned zop_get_uim_data_oplmn_partial(uint32_t first, uint32_t* total, uint8_t* block161) {
  return read_block('k', first, total, block161);
}

unsigned zop_get_uim_data_hplmn_partial(uint32_t first, uint32_t* total, uint8_t* block161) {
  return read_block('l', first, total, block161);
}

unsigned zop_get_uim_data(uint32_t file_id, uint32_t offset, uint8_t* data255, uint32_t* length) {
  if (unsigned error = begin_vendor('K')) return error;
  put_le32(ft_buff + REQUEST_PAYLOAD, file_id);
  put_le32(ft_buff + SIM_FILE_OFFSET, offset);
  if (unsigned error = exchange(SIM_FILE_REQUEST)) return error;
  if (unsigned error = status(STATUS_BYTE3)) return error;
  copy_fields({u32(5, length), bytes(9, ZOP_SIM_FILE_SIZE, data255)});
  return ZOP_SUCCESS;
}
