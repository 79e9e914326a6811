// Snapshots of the diagnostic data, and the refresh of what does not come from the modem's screen.
#pragma once

// Asks for a snapshot: refreshes the data and posts the event. With lockModule false the caller
// holds gModuleMutex, which is released during the refresh and held again at the return.
void prv_start_diagnostic_data_snapshot(bool lockModule);
