// Layout of the diagnostic record, one field per line. Hosts rely on these offsets, which are the
// same on 32- and 64-bit platforms.
#include <stddef.h>

#include "include/zop_diag_info.h"

#define AT(offset, field) static_assert(offsetof(zop_diag_info, field) == (offset))

// The modem's screen.
AT(0, screen.system_mode);
AT(1, screen.service_status);
AT(2, screen.registration_status);
AT(3, screen.network_name);
AT(35, screen.imei);
AT(51, screen.imsi);
AT(67, screen.channel);
AT(71, screen.cell_id);
AT(75, screen.call_status);
AT(76, screen.mcc);
AT(79, screen.mnc);
AT(82, screen.lac);
AT(86, screen.rac);
AT(90, screen.rssi);
AT(94, screen.tx_power);
AT(98, screen.band);
AT(102, screen.network_mode);
AT(103, screen.mm_attach_state);
AT(104, screen.mm_attach_error);
AT(105, screen.mm_lu_state);
AT(106, screen.mm_lu_error);
AT(107, screen.gmm_attach_state);
AT(108, screen.gmm_attach_error);
AT(109, screen.gmm_rau_state);
AT(110, screen.gmm_rau_error);
AT(111, screen.gmm_state);
AT(112, screen.pdp_state);
AT(113, screen.pdp_reject_reason);
AT(114, screen.pmm_mode);
AT(115, screen.test_mode);
AT(116, screen.selection_mode);
AT(117, screen.radio.wcdma.rscp);
AT(119, screen.radio.wcdma.cells);
AT(311, screen.radio.wcdma.drx);
AT(313, screen.radio.wcdma.hsdpa_status);
AT(314, screen.radio.wcdma.hsdpa_indication);
AT(117, screen.radio.gsm.pathloss);
AT(121, screen.radio.gsm.neighbor_count);
AT(125, screen.radio.gsm.neighbors);
AT(285, screen.radio.gsm.best_count);
AT(289, screen.radio.gsm.best);
AT(343, screen.radio.gsm.mfrm);
AT(344, screen.radio.gsm.egprs_indication);
static_assert(sizeof(zop_wcdma_cell) == 6);
static_assert(sizeof(zop_gsm_neighbor) == 5);
static_assert(sizeof(zop_gsm_best_cell) == 9);
static_assert(sizeof(zop_screen) == 345);

// What the module adds.
AT(345, firmware);
AT(409, hardware);
AT(473, library);
AT(537, network_time);
AT(556, roaming);
AT(560, phone_number);
AT(576, iccid);
AT(600, sim_status);
AT(604, lock_status);
AT(608, pin_retries);
AT(612, data_service_mode);
AT(616, oplmn);
AT(1743, hplmn);
AT(1904, rplmn);
AT(1910, fplmn);
AT(2032, oplmn_count);
AT(2036, screen_time);
AT(2040, local_time_offset);
AT(2044, awake_seconds);
AT(2048, asleep_seconds);
AT(2052, pppd_start);
AT(2056, pppd_pid);
AT(2060, last_ring_time);
AT(2064, local_address);
AT(2080, peer_address);
AT(2096, bars);
AT(2100, rx_bytes);
AT(2104, tx_bytes);
AT(2108, rx_errors);
AT(2112, tx_errors);
AT(2116, name_servers);
AT(2124, ring_counts);
AT(2148, last_ring_origin);
static_assert(sizeof(zop_diag_info) == 2152);
