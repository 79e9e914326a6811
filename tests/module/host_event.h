// The platform's event for these tests; its calls are in host_events_test.cpp.
#pragma once

#include "include/nubi.h"

struct NubiEvent {
  const char* source;
  const char* name;
  int origin = 0;
  int error = 0;
};
