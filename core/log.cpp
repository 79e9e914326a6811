// Every line of the module reaches syslog here.
#include "core/log.h"

#include <stdarg.h>
#include <stdio.h>

enum { LINE_SIZE = 1280 };  // the longest is the report's: 1200 bytes, its stamp and its count

void log_line(int priority, const char* format, ...) {
  char text[LINE_SIZE];
  va_list arguments;
  va_start(arguments, format);
  vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  for (char* c = text; *c != '\0'; ++c) *c = log_character(*c);
  syslog(priority, "%s", text);
}
