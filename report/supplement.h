// What the report shows of the modem besides its screen.
#pragma once

// Reads the data service mode, the registered network and, while gRefetchPlmns is set, the SIM's
// network lists into gDiagInfo. Under gModuleMutex.
void prv_get_supplement_data();
