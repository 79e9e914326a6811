// The module's log: lines to syslog, each enabled by one bit of gZOPModuleLogMask.
//
// The mask is read before every line, so that a host can switch lines on and off while the module
// runs. Each literal starts as its line does in syslog, so that searching for a line finds its
// statement. A source that writes "D" lines defines LOG_SOURCE, the name in their trailer, before
// it includes this header.
#pragma once

#include <syslog.h>

#include "include/vurn.h"

inline bool log_enabled(uint32_t bit) {
  return (__atomic_load_n(&gZOPModuleLogMask, __ATOMIC_RELAXED) & bit) != 0;
}

// A line feed in a text of the modem would forge a log line.
inline char log_character(char c) {
  unsigned char byte = static_cast<unsigned char>(c);
  return byte < 0x20 || byte == 0x7F ? '?' : c;
}

// Writes one line to syslog, truncated to 1279 bytes, with '?' for each control character.
__attribute__((format(printf, 2, 3))) void log_line(int priority, const char* format, ...);

#define LOG_LINE(bit, priority, ...)                       \
  do {                                                     \
    if (log_enabled(bit)) log_line(priority, __VA_ARGS__); \
  } while (0)

#define LOG_E(...) LOG_LINE(VURN_LOG_ERROR, LOG_ERR, __VA_ARGS__)
#define LOG_W(...) LOG_LINE(VURN_LOG_WARNING, LOG_WARNING, __VA_ARGS__)
#define LOG_I(...) LOG_LINE(VURN_LOG_INFO, LOG_NOTICE, __VA_ARGS__)

// "D" lines end with their origin: function, source name, line.
#define LOG_D(bit, text, ...)                                                                   \
  LOG_LINE(bit, LOG_DEBUG, text " (%s:%s:%d)" __VA_OPT__(, ) __VA_ARGS__, __func__, LOG_SOURCE, \
           __LINE__)

#define LOG_ENTER() LOG_D(VURN_LOG_TRACE, "D def:Enter")
#define LOG_RETURN() LOG_D(VURN_LOG_TRACE, "D def:Return")

// The common line for a value that could not be read from the modem.
#define LOG_GET_ERROR(parameter, error) \
  LOG_E("E zop:get:param=%s,error=%d:can't get parameter", parameter, static_cast<int>(error))
