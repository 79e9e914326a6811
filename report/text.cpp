// The scratch buffer is guarded by the renderer's lock.
#include "report/text.h"

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

static char gScratch[2048];

// Prints into room bytes and a terminator. Returns the length of the whole text.
__attribute__((format(printf, 3, 0))) static size_t print(char* buffer, size_t room,
                                                          const char* format, va_list arguments) {
  int wanted = vsnprintf(buffer, room + 1, format, arguments);
  return wanted > 0 ? static_cast<size_t>(wanted) : 0;
}

void BoundedWriter::append(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  size_t wanted = print(buffer_ + length_, room(), format, arguments);
  va_end(arguments);
  length_ += wanted < room() ? wanted : room();
}

void BoundedWriter::append_entry(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  size_t wanted = print(buffer_ + length_, room(), format, arguments);
  va_end(arguments);
  if (wanted <= room()) {
    length_ += wanted;
  } else {
    size_ = length_ + 1;
  }
  buffer_[length_] = '\0';
}

void BoundedWriter::append_character(char c) {
  if (room() == 0) return;
  buffer_[length_++] = c;
  buffer_[length_] = '\0';
}

BoundedWriter prv_scratch() { return {gScratch, sizeof gScratch}; }

int prv_finish(const BoundedWriter& out, const char** text, int* length) {
  *text = out.text();
  *length = static_cast<int>(out.length());
  return 1;
}

int prv_finish_list(BoundedWriter& out, const char** text, int* length) {
  out.drop_trailing_blank();
  return prv_finish(out, text, length);
}

static int copy_and_terminate(char* destination, const char* source, unsigned length) {
  memcpy(destination, source, length);
  destination[length] = '\0';
  return static_cast<int>(length) + 1;
}

int prv_strmaxcpy(char* destination, const char* source, unsigned size, int source_length) {
  if (source_length < 0) source_length = static_cast<int>(strlen(source));
  unsigned length = static_cast<unsigned>(source_length);
  if (length < size) return copy_and_terminate(destination, source, length);
  if (size > 0) copy_and_terminate(destination, source, size - 1);
  return ~source_length;
}
