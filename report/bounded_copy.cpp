// Bounded text copy; nothing is written into a destination of size 0.
#include "report/bounded_copy.h"

#include <string.h>

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
