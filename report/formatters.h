// Formatters: an item's value as text, for both forms of the report.
//
// A formatter writes to the scratch buffer, returns the text and its length through its arguments,
// and returns 1 to show the item or 0 to omit it. A length of 0 is an empty value. Formatters read
// only gDiagInfo; the renderer's lock serialises them. The last argument is always 0.
#pragma once

#include "include/zop_diag_info.h"

zop_log_format prv_format_mcc_mnc;
zop_log_format prv_format_hex_to_decimal;
zop_log_format prv_format_date_time;
zop_log_format prv_format_hour_offset;
zop_log_format prv_format_counter;
zop_log_format prv_format_sim_status;
zop_log_format prv_format_name_servers;
zop_log_format prv_format_masked_address;
zop_log_format prv_format_event_history;
zop_log_format prv_format_awake;
zop_log_format prv_format_pppd_age;
zop_log_format prv_format_ftd_age;
zop_log_format prv_format_ftd_age_seconds;

// Radio technology of the last screen.
inline bool prv_is_wcdma_screen() { return gDiagInfo.screen.system_mode == ZOP_SCREEN_WCDMA; }
inline bool prv_is_gsm_screen() { return gDiagInfo.screen.system_mode == ZOP_SCREEN_GSM; }

// WCDMA or GSM only: the value is empty on a screen of the other.
zop_log_format prv_format_wcdma_cells;
zop_log_format prv_format_rscp;
zop_log_format prv_format_drx;
zop_log_format prv_format_gsm_neighbors;
zop_log_format prv_format_gsm_best;
zop_log_format prv_format_pathloss;
zop_log_format prv_format_mfrm;

zop_log_format prv_format_plmn;
zop_log_format prv_format_plmn_list;
zop_log_format prv_format_plmn_block;
zop_log_format prv_format_oplmn;

// Names of the modem's codes.
zop_log_format prv_format_band;
zop_log_format prv_format_system_mode;
zop_log_format prv_format_data_service_mode;
zop_log_format prv_format_service_status;
zop_log_format prv_format_reg_status;
zop_log_format prv_format_call_status;
zop_log_format prv_format_update_result;
zop_log_format prv_format_gmm_state;
zop_log_format prv_format_pdp_state;
zop_log_format prv_format_network_mode;
zop_log_format prv_format_pmm_mode;
zop_log_format prv_format_selection_mode;
zop_log_format prv_format_hsdpa_status;
zop_log_format prv_format_hsdpa_indication;
zop_log_format prv_format_egprs_indication;
zop_log_format prv_format_mm_cause;
zop_log_format prv_format_pdp_cause;
