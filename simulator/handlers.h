// The handlers that are more than a line, by the source that holds them.
#pragma once

#include "simulator/requests.h"

namespace sim {

// sim_requests.cpp
void sim_status(const Context&, Answer&);
void pin_verify(const Context&, Answer&);
void pin_change(const Context&, Answer&);
void pin_disable(const Context&, Answer&);
void pin_enable(const Context&, Answer&);
void pin_unblock(const Context&, Answer&);
void sim_file(const Context&, Answer&);
void operator_plmns(const Context&, Answer&);
void home_plmns(const Context&, Answer&);
void registered_plmn(const Context&, Answer&);
void forbidden_plmns(const Context&, Answer&);
void user_plmns(const Context&, Answer&);
void set_user_plmns(const Context&, Answer&);
void operator_plmn_block(const Context&, Answer&);
void home_plmn_block(const Context&, Answer&);

// radio_requests.cpp
void cell_set(const Context&, Answer&, int set);
void neighbors(const Radio&, Answer&);
void best_six(const Radio&, Answer&);
void screen(const Context&, Answer&);

// device_requests.cpp
void nv_read(const Context&, Answer&);
void nv_write(const Context&, Answer&);
void mode_control(const Context&, Answer&);
void set_band(const Context&, Answer&);
void error_log(const Context&, Answer&);
void clear_error(const Context&, Answer&);
void error_fatal(const Context&, Answer&);
void send_sms(const Context&, Answer&);
void backup_step(const Context&, Answer&);
void rebuild_nv(const Context&, Answer&);
void read_profile(const Context&, Answer&);
void write_profile(const Context&, Answer&);
void originate_call(const Context&, Answer&);
void event_originated(const Context&, Answer&);
void event_activated(const Context&, Answer&);
void event_deactivated(const Context&, Answer&);
void event_ended(const Context&, Answer&);
void end_call(const Context&, Answer&);
void set_time(const Context&, Answer&);

}  // namespace sim
