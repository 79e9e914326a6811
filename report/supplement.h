// Data of the report that the modem provides besides its screen.
#pragma once

// Entries that fit in the record, whatever count the modem sends.
enum { OPLMN_BLOCKS = 7, BLOCK_ENTRIES = 20, HPLMN_ENTRIES = 10, FPLMN_ENTRIES = 20 };

// Reads the data service mode, the registered network and, while gRefetchPlmns is set, the SIM's
// network lists into gDiagInfo. Under gModuleMutex.
void prv_get_supplement_data();
