// Appends text to a buffer, never beyond its end. What does not fit is cut, or left out.
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
    size_t wanted = print(format, arguments);
    va_end(arguments);
    length_ += wanted < room() ? wanted : room();
  }

  // An entry of a list: all of it, or nothing.
  __attribute__((format(printf, 2, 3))) void append_entry(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    size_t wanted = print(format, arguments);
    va_end(arguments);
    if (wanted <= room()) {
      length_ += wanted;
    } else {
      size_ = length_ + 1;  // the list ends here: it has no holes
    }
    buffer_[length_] = '\0';
  }

  void append_character(char c) {
    if (room() == 0) return;
    buffer_[length_++] = c;
    buffer_[length_] = '\0';
  }

  // Lists put a blank behind each entry.
  void drop_trailing_blank() {
    if (length_ > 0) buffer_[--length_] = '\0';
  }

  size_t length() const { return length_; }
  const char* text() const { return buffer_; }

 private:
  size_t room() const { return size_ - length_ - 1; }

  // What there is room for, behind what is written; the length of all of it.
  __attribute__((format(printf, 2, 0))) size_t print(const char* format, va_list arguments) {
    int wanted = vsnprintf(buffer_ + length_, room() + 1, format, arguments);
    return wanted > 0 ? static_cast<size_t>(wanted) : 0;
  }

  char* buffer_;
  size_t size_;  // at least 1
  size_t length_ = 0;
};
