// The module's log: lines to syslog, each enabled by one bit of gZOPModuleLogMask.
//
// The mask is read before every line, so that a host can switch lines on and off while the module
// runs. Each literal starts as its line does in syslog, so that searching for a line finds its
// statement. A source that writes "D" lines defines LOG_SOURCE, the name in their trailer, before
// it includes this header.
#pragma once

#include <stdint.h>

#include "include/vurn.h"

// Whether the lines of this bit are written.
bool log_enabled(uint32_t bit);

// A line feed in a text of the modem would forge a log line.
inline char log_character(char c) {
  unsigned char byte = static_cast<unsigned char>(c);
  return byte < 0x20 || byte == 0x7F ? '?' : c;
}

// Write one line to syslog if its bit is set: nothing is formatted otherwise. Truncated to 1279
// bytes, with '?' for each control character. A "D" line ends with its origin.
__attribute__((format(printf, 2, 3))) void log_line(uint32_t bit, const char* format, ...);
__attribute__((format(printf, 5, 6))) void log_detail(uint32_t bit, const char* function,
                                                      const char* source, int line,
                                                      const char* format, ...);

#define LOG_E(...) log_line(VURN_LOG_ERROR, __VA_ARGS__)
#define LOG_W(...) log_line(VURN_LOG_WARNING, __VA_ARGS__)
#define LOG_I(...) log_line(VURN_LOG_INFO, __VA_ARGS__)
#define LOG_D(bit, ...) log_detail(bit, __func__, LOG_SOURCE, __LINE__, __VA_ARGS__)

#define LOG_ENTER() LOG_D(VURN_LOG_TRACE, "D def:Enter")
#define LOG_RETURN() LOG_D(VURN_LOG_TRACE, "D def:Return")

// The common line for a value that could not be read from the modem.
#define LOG_GET_ERROR(parameter, error) \
  LOG_E("E zop:get:param=%s,error=%d:can't get parameter", parameter, static_cast<int>(error))
