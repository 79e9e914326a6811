// Text in buffers of a fixed size, and the scratch buffer that formatters share.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "core/bytes.h"

// Appends to a buffer and keeps it terminated. What does not fit is cut or left out.
class BoundedWriter {
 public:
  BoundedWriter(char* buffer, size_t size) : buffer_(buffer), size_(size) { buffer_[0] = '\0'; }

  __attribute__((format(printf, 2, 3))) void append(const char* format, ...);

  // A list entry, whole or not at all. The first that does not fit ends the list: no later, shorter
  // one is added.
  __attribute__((format(printf, 2, 3))) void append_entry(const char* format, ...);

  void append_character(char c);

  // Each entry of a list ends with a blank.
  void drop_trailing_blank() {
    if (length_ > 0) buffer_[--length_] = '\0';
  }

  size_t length() const { return length_; }
  const char* text() const { return buffer_; }

 private:
  size_t room() const { return size_ - length_ - 1; }

  char* buffer_;
  size_t size_;  // at least 1
  size_t length_ = 0;
};

// A writer at the start of the scratch buffer. Discards the text of the previous item.
BoundedWriter prv_scratch();

// Sets a formatter's outputs to the text written. Always 1, "show the item".
int prv_finish(const BoundedWriter& out, const char** text, int* length);

// The same for a list, without the blank after its last entry.
int prv_finish_list(BoundedWriter& out, const char** text, int* length);

// Copies source_length characters (all of source when negative) into destination of size bytes and
// terminates. Returns the bytes written with the terminator, or, when it had to truncate, the
// bitwise complement of source_length.
int prv_strmaxcpy(char* destination, const char* source, unsigned size, int source_length);

inline const uint8_t* prv_bytes(const void* p) { return static_cast<const uint8_t*>(p); }

// Little-endian values at any address.
inline uint32_t get_unaligned_uint32_t(const void* p) { return get_le32(prv_bytes(p)); }
inline int32_t get_unaligned_int32_t(const void* p) {
  return static_cast<int32_t>(get_le32(prv_bytes(p)));
}
inline uint16_t get_unaligned_uint16_t(const void* p) { return get_le16(prv_bytes(p)); }
