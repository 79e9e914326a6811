// The module, loaded as a host loads it.
#pragma once

#include <string>

#include "include/modem_download.h"
#include "include/vurn.h"
#include "include/zop.h"
#include "include/zop_diag_info.h"

namespace zopctl {

class ModuleLibrary {
 public:
  // From path; when empty from beside the program, or by the loader's search. Throws Failure.
  explicit ModuleLibrary(const std::string& path);
  ModuleLibrary(const ModuleLibrary&) = delete;
  ModuleLibrary& operator=(const ModuleLibrary&) = delete;

 private:
  void* handle_;
  void* symbol(const char* name) const;
  template <typename Type>
  Type bind(const char* name) const {
    return reinterpret_cast<Type>(symbol(name));
  }

 public:
  // Each name once: a member of the function's own type, bound on loading.
#define BIND(name) decltype(&::name) const name = bind<decltype(&::name)>(#name)
  BIND(vurn_open);
  BIND(vurn_close);
  BIND(vurn_set_log_mask);
  BIND(vurn_get_rssi);
  BIND(vurn_get_roaming_status);
  BIND(vurn_get_realm);
  BIND(vurn_get_radio_cert_param1);
  BIND(vurn_get_radio_phone_number);
  BIND(vurn_get_imsi);
  BIND(vurn_get_firmware_version);
  BIND(vurn_get_module_time);
  BIND(gZOPModuleLogMask);
  BIND(gDiagInfo);
  BIND(sTestNum);
  BIND(vurn_get_log_string);
  BIND(vurn_log_message);
  BIND(vurn_get_bars);
  BIND(vurn_get_mcc);
  BIND(vurn_report_event);
  BIND(vurn_originate_call_test);
  BIND(vurn_stop_call_test);
  BIND(modem_set_config);
  BIND(modem_diag_process);
  BIND(modem_dload_process);
  BIND(modem_dload_end_process);
  BIND(modem_resume_update);
  BIND(mem_dump_process);
  BIND(mem_dump_set_files);
  BIND(zop_get_gmm_attach_state);
  BIND(zop_get_gmm_rau_state);
  BIND(zop_get_call_status);
  BIND(zop_get_pdp_state);
  BIND(zop_get_imei);
  BIND(zop_get_imsi);
  BIND(zop_get_iccid);
  BIND(zop_get_radio_phone_number);
  BIND(zop_get_hardware_version);
  BIND(zop_get_tq2_version);
  BIND(zop_simcard_status);
  BIND(zop_get_network_name);
  BIND(zop_get_mcc);
  BIND(zop_get_mnc);
  BIND(zop_get_location_area_id);
  BIND(zop_get_rac);
  BIND(zop_get_cell_id);
  BIND(zop_get_registration_status);
  BIND(zop_get_service_status);
  BIND(zop_get_system_mode);
  BIND(zop_get_data_service_mode);
  BIND(zop_get_band);
  BIND(zop_open);
  BIND(zop_close);
  BIND(zop_get_firmware_version);
  BIND(zop_simcard_verify);
  BIND(zop_simcard_enable);
  BIND(zop_simcard_disable);
  BIND(zop_simcard_change);
  BIND(zop_simcard_unblock);
  BIND(zop_get_uim_data_hplmn);
  BIND(zop_get_uim_data_uplmn);
  BIND(zop_get_uim_data_oplmn_partial);
  BIND(zop_get_uim_data_fplmn);
  BIND(zop_get_uim_data_rplmn);
  BIND(zop_set_uim_data_uplmn);
  BIND(zop_nv_read);
  BIND(zop_nv_write);
  BIND(zop_get_pref_mode);
  BIND(zop_set_pref_mode);
  BIND(zop_get_pref_service_domain);
  BIND(zop_get_mgrf_supported);
  BIND(zop_get_acq_band_order);
  BIND(zop_get_backup_status);
  BIND(zop_set_band);
  BIND(zop_set_network_search_order);
  BIND(zop_set_diag_port);
  BIND(zop_enable_factory_test);
  BIND(zop_set_reset);
  BIND(zop_set_error_fatal);
  BIND(zop_read_pdp_profile);
  BIND(zop_write_pdp_profile);
  BIND(zop_get_err_log);
  BIND(zop_get_err_clr);
  BIND(zop_get_rssi);
  BIND(zop_get_rscp);
  BIND(zop_get_txpower);
  BIND(zop_get_pathloss);
  BIND(zop_get_bars);
  BIND(zop_get_active_set_list);
  BIND(zop_get_monitored_set_list);
  BIND(zop_get_detected_set_list);
  BIND(zop_get_neighbor_cell_list);
  BIND(zop_originate_call_test);
  BIND(zop_end_call_test);
  BIND(zop_send_sms);
  BIND(zop_set_module_time);
#undef BIND
};

}  // namespace zopctl
