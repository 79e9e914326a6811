// Data of the report that the device provides: the PPP link "ppp0", the name servers, the PPP
// daemon, and uptime.
#pragma once

// Reads the link, the name servers and the daemon into gDiagInfo. A source that fails leaves a
// readable marker.
void prv_get_wan_data();

// Reads /proc/uptime into gDiagInfo.awake_seconds and asleep_seconds. Values that are missing, as
// the time asleep is on most kernels, do not change.
void prv_get_uptime();
