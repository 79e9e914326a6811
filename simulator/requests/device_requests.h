// What the modem answers about itself: NV items, errors, profiles, calls, messages, its clock.
#pragma once

#include "simulator/requests/requests.h"

namespace sim {

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
