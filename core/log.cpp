// Every line of the module reaches syslog here.
#include "core/log.h"

#include <stdarg.h>
#include <stdio.h>
#include <syslog.h>

enum { LINE_SIZE = 1280 };  // the longest is the report's: 1200 bytes, its stamp and its count

bool log_enabled(uint32_t bit) {
  return (__atomic_load_n(&gZOPModuleLogMask, __ATOMIC_RELAXED) & bit) != 0;
}

static int priority_of(uint32_t bit) {
  if (bit == VURN_LOG_ERROR) return LOG_ERR;
  if (bit == VURN_LOG_WARNING) return LOG_WARNING;
  return bit == VURN_LOG_INFO ? LOG_NOTICE : LOG_DEBUG;
}

static void write_line(uint32_t bit, char* text) {
  for (char* c = text; *c != '\0'; ++c) *c = log_character(*c);
  syslog(priority_of(bit), "%s", text);
}

void log_line(uint32_t bit, const char* format, ...) {
  if (!log_enabled(bit)) return;
  char text[LINE_SIZE];
  va_list arguments;
  va_start(arguments, format);
  vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  write_line(bit, text);
}

void log_detail(uint32_t bit, const char* function, const char* source, int line,
                const char* format, ...) {
  if (!log_enabled(bit)) return;
  char text[LINE_SIZE];
  va_list arguments;
  va_start(arguments, format);
  int length = vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  if (length >= 0 && length < LINE_SIZE) {
    size_t room = static_cast<size_t>(LINE_SIZE - length);
    snprintf(text + length, room, " (%s:%s:%d)", function, source, line);
  }
  write_line(bit, text);
}
