// Detects a stuck modem by three symptoms that must not last.
#pragma once

#include <stdint.h>

// All three are called under gModuleMutex, query the modem, and return true if their symptom has
// lasted too long. A query that fails does not change a detector.

// A rejected routing-area update after which the modem does not attach again: over 60 s.
bool prv_get_modem_stuck_illegal_network_reject(int32_t attach_state);

// A PDP context active or being activated while the call is idle: over 5 s.
bool prv_get_modem_stuck_pdp_active_no_ppp();

// Limited service and a PDP reject while the current network is forbidden: over 300 s.
bool prv_get_modem_stuck_all_plmns_fplmn(int32_t service_status);

// 1 if the current network is on the SIM's list of forbidden networks, or if there is no network.
int prv_is_current_plmn_forbidden();

// Resets all three.
void prv_clear_stuck_detection();
