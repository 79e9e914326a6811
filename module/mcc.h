// Country changes, and the log line of the current network.
#pragma once

// Writes the "mcc mnc report" line from the last field-test screen, without using the modem.
void prv_report_mcc_mnc();
