// Appends text to a buffer, never beyond its end. What does not fit is cut.
#pragma once

#include <stdarg.h>
#include <stddef.h>
#include <stdio.h>

class BoundedWriter {
 public:
  BoundedWriter(char* buffer, size_t size) : buffer_(buffer), size_(size) { buffer_[0] = '\0'; }

  __attribute__((format(printf, 2, 3))) void append(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    int wanted = vsnprintf(buffer_ + length_, size_ - length_, format, arguments);
    va_end(arguments);
    size_t room = size_ - length_ - 1;
    if (wanted > 0)
      length_ += static_cast<size_t>(wanted) < room ? static_cast<size_t>(wanted) : room;
  }

  void append_character(char c) {
    if (is_full()) return;
    buffer_[length_++] = c;
    buffer_[length_] = '\0';
  }

  // Lists put a blank behind each entry.
  void drop_trailing_blank() {
    if (length_ > 0) buffer_[--length_] = '\0';
  }

  bool is_full() const { return length_ + 1 >= size_; }
  size_t length() const { return length_; }
  const char* text() const { return buffer_; }

 private:
  char* buffer_;
  size_t size_;  // at least 1
  size_t length_ = 0;
};
