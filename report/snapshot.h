// Diagnostic snapshots, and the refresh of data that is not in the modem's screen.
#pragma once

// Requests a snapshot: refreshes the data and posts the event. If lockModule is false, the caller
// holds gModuleMutex, which is released during the refresh and held again on return.
void prv_start_diagnostic_data_snapshot(bool lockModule);
