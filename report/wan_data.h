// What the report shows of the device: the PPP link "ppp0", the name servers, the PPP daemon, and
// how long the device has been up. All of it comes from the kernel and from files.
#pragma once

// Reads the link, the name servers and the daemon into gDiagInfo. Every source is optional and
// leaves a readable marker when it fails.
void prv_get_wan_data();

// Reads /proc/uptime into gDiagInfo.awake_seconds and asleep_seconds. A number that is not there,
// as the time asleep on other kernels, keeps its old value.
void prv_get_uptime();
