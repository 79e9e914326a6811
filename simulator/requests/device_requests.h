// What the modem answers about itself: NV items, errors, profiles, calls, messages, its clock.
#pragma once

#include "simulator/requests/requests.h"

namespace sim {

void nv_read(const Incoming&, Answer&);
void nv_write(const Incoming&, Answer&);
void mode_control(const Incoming&, Answer&);
void set_band(const Incoming&, Answer&);
void error_log(const Incoming&, Answer&);
void clear_error(const Incoming&, Answer&);
void error_fatal(const Incoming&, Answer&);
void send_sms(const Incoming&, Answer&);
void backup_step(const Incoming&, Answer&);
void rebuild_nv(const Incoming&, Answer&);
void read_profile(const Incoming&, Answer&);
void write_profile(const Incoming&, Answer&);
void originate_call(const Incoming&, Answer&);
void event_originated(const Incoming&, Answer&);
void event_activated(const Incoming&, Answer&);
void event_deactivated(const Incoming&, Answer&);
void event_ended(const Incoming&, Answer&);
void end_call(const Incoming&, Answer&);
void set_time(const Incoming&, Answer&);

}  // namespace sim
