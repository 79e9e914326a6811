// The PPP link "ppp0" as the device's kernel sees it, the name servers, and the PPP daemon.
#pragma once

// Reads them into gDiagInfo. Every source is optional and leaves a readable marker when it fails.
void prv_get_wan_data();
