// The module, loaded as a host loads it.
#pragma once

#include <stdexcept>
#include <string>

#include "include/vurn.h"
#include "include/zop.h"
#include "include/zop_diag_info.h"

namespace zopctl {

// Something went wrong that the user must know; what() is a whole sentence.
struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

class ModuleLibrary {
 public:
  // path, or the library beside the program, or the loader's search. Throws Failure.
  explicit ModuleLibrary(const std::string& path);
  ~ModuleLibrary();
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
  // Every name once: a member of the function's own type, bound at load.
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
  BIND(vurn_get_data_service_mode);
  BIND(vurn_get_module_time);
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
  BIND(zop_get_band);
#undef BIND
};

}  // namespace zopctl
