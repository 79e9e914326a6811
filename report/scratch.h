// The scratch buffer that all formatters write into, and what they share.
#pragma once

#include <stdint.h>

#include "core/bytes.h"
#include "report/bounded_writer.h"

enum { SCRATCH_SIZE = 2048 };

// A writer at the start of the scratch buffer: the text of the item before is gone.
BoundedWriter prv_scratch();

// Gives what was written; always 1, "write the item".
int prv_give(const BoundedWriter& out, const char** text, int* length);

// As prv_give for a list, without the blank behind its last entry.
int prv_give_list(BoundedWriter& out, const char** text, int* length);

// Which radio technology the last screen is of.
bool prv_is_wcdma_screen();
bool prv_is_gsm_screen();

inline const uint8_t* prv_bytes(const void* p) { return static_cast<const uint8_t*>(p); }

// Little-endian values at any address.
inline uint32_t get_unaligned_uint32_t(const void* p) { return get_le32(prv_bytes(p)); }
inline int32_t get_unaligned_int32_t(const void* p) {
  return static_cast<int32_t>(get_le32(prv_bytes(p)));
}
inline uint16_t get_unaligned_uint16_t(const void* p) { return get_le16(prv_bytes(p)); }
