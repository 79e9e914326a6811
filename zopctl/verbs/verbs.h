// What the verbs do, one source a noun. Those that print as they go find nothing.
#pragma once

#include "zopctl/host/module_library.h"
#include "zopctl/text/arguments.h"
#include "zopctl/text/output.h"

namespace zopctl {

Findings status_show(const ModuleLibrary&, const Arguments&);
Findings sim_status_verb(const ModuleLibrary&, const Arguments&);
Findings sim_verify(const ModuleLibrary&, const Arguments&);
Findings sim_enable(const ModuleLibrary&, const Arguments&);
Findings sim_disable(const ModuleLibrary&, const Arguments&);
Findings sim_change(const ModuleLibrary&, const Arguments&);
Findings sim_unblock(const ModuleLibrary&, const Arguments&);
Findings plmn_list(const ModuleLibrary&, const Arguments&);
Findings plmn_set_user(const ModuleLibrary&, const Arguments&);
Findings nv_read(const ModuleLibrary&, const Arguments&);
Findings nv_write(const ModuleLibrary&, const Arguments&);
Findings config_show(const ModuleLibrary&, const Arguments&);
Findings config_set_band(const ModuleLibrary&, const Arguments&);
Findings config_set_mode(const ModuleLibrary&, const Arguments&);
Findings config_set_search_order(const ModuleLibrary&, const Arguments&);
Findings config_diag_port(const ModuleLibrary&, const Arguments&);
Findings config_factory_test(const ModuleLibrary&, const Arguments&);
Findings config_reset(const ModuleLibrary&, const Arguments&);
Findings config_error_fatal(const ModuleLibrary&, const Arguments&);
Findings profile_list(const ModuleLibrary&, const Arguments&);
Findings profile_write(const ModuleLibrary&, const Arguments&);
Findings bars_show(const ModuleLibrary&, const Arguments&);
Findings mcc_show(const ModuleLibrary&, const Arguments&);
Findings event_ring(const ModuleLibrary&, const Arguments&);
Findings event_downloaded(const ModuleLibrary&, const Arguments&);
Findings call_test_start(const ModuleLibrary&, const Arguments&);
Findings call_test_stop(const ModuleLibrary&, const Arguments&);
Findings report_show(const ModuleLibrary&, const Arguments&);
Findings exception_report(const ModuleLibrary&, const Arguments&);
Findings parse_log(const ModuleLibrary&, const Arguments&);
Findings html(const ModuleLibrary&, const Arguments&);
Findings doctor(const ModuleLibrary&, const Arguments&);
Findings signal_show(const ModuleLibrary&, const Arguments&);
Findings cells_show(const ModuleLibrary&, const Arguments&);
Findings errlog_read(const ModuleLibrary&, const Arguments&);
Findings errlog_clear(const ModuleLibrary&, const Arguments&);
Findings call_start(const ModuleLibrary&, const Arguments&);
Findings call_end(const ModuleLibrary&, const Arguments&);
Findings sms_send(const ModuleLibrary&, const Arguments&);
Findings time_set(const ModuleLibrary&, const Arguments&);

}  // namespace zopctl
