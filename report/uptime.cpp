// Awake and asleep time. The device's kernel adds the seconds asleep as a fourth number; where a
// kernel does not, the value keeps what it had.
#include "report/uptime.h"

#include <stdio.h>

#include "include/zop_diag_info.h"

void prv_get_uptime() {
  FILE* file = fopen("/proc/uptime", "re");
  if (file == nullptr) return;
  unsigned long seconds;
  unsigned long hundredths;
  unsigned long asleep;
  int read = fscanf(file, "%lu.%lu %*u.%*u %*u %lu", &seconds, &hundredths, &asleep);
  fclose(file);
  if (read >= 2) gDiagInfo.awake_seconds = static_cast<uint32_t>(seconds + (hundredths >= 50));
  if (read >= 3) gDiagInfo.asleep_seconds = static_cast<uint32_t>(asleep);
}
