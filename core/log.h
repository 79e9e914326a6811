// The module's log: lines to syslog, each behind one bit of gZOPModuleLogMask.
//
// The mask is read afresh before every line, so that a host can switch lines on and off while the
// module runs. A literal begins as its line appears in syslog: one search finds the statement.
// A source that writes "D" lines defines LOG_SOURCE, the name in their trailer, before including.
#pragma once

#include <syslog.h>

#include "include/vurn.h"

inline bool log_enabled(uint32_t bit) {
  return (__atomic_load_n(&gZOPModuleLogMask, __ATOMIC_RELAXED) & bit) != 0;
}

// Texts of the modem may hold anything: a line feed in one would forge lines.
inline char log_character(char c) {
  unsigned char byte = static_cast<unsigned char>(c);
  return byte < 0x20 || byte == 0x7F ? '?' : c;
}

// One line to syslog, cut at 1279 bytes, a '?' for each control character.
__attribute__((format(printf, 2, 3))) void log_line(int priority, const char* format, ...);

#define LOG_LINE(bit, priority, ...)                       \
  do {                                                     \
    if (log_enabled(bit)) log_line(priority, __VA_ARGS__); \
  } while (0)

#define LOG_E(...) LOG_LINE(VURN_LOG_ERROR, LOG_ERR, __VA_ARGS__)
#define LOG_W(...) LOG_LINE(VURN_LOG_WARNING, LOG_WARNING, __VA_ARGS__)
#define LOG_I(...) LOG_LINE(VURN_LOG_INFO, LOG_NOTICE, __VA_ARGS__)

// "D" lines tell where they come from: function, source name, line.
#define LOG_D(bit, text, ...)                                                                   \
  LOG_LINE(bit, LOG_DEBUG, text " (%s:%s:%d)" __VA_OPT__(, ) __VA_ARGS__, __func__, LOG_SOURCE, \
           __LINE__)

#define LOG_ENTER() LOG_D(VURN_LOG_TRACE, "D def:Enter")
#define LOG_RETURN() LOG_D(VURN_LOG_TRACE, "D def:Return")

// Shared wording for a parameter that the modem did not give.
#define LOG_GET_ERROR(parameter, error) \
  LOG_E("E zop:get:param=%s,error=%d:can't get parameter", parameter, static_cast<int>(error))
