// Country changes, and the report of the current network.
#pragma once

// Writes the "mcc mnc report" line from the last field-test screen; asks the modem nothing.
void prv_report_mcc_mnc();
