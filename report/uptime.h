// Awake and asleep time of the device.
#pragma once

// Reads /proc/uptime into gDiagInfo.awake_seconds and asleep_seconds; leaves what it can't read.
void prv_get_uptime();
