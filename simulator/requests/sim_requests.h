// What the modem answers about its SIM card: PIN1, files, PLMN lists.
#pragma once

#include "simulator/requests/requests.h"

namespace sim {

void sim_status(const Incoming&, Answer&);
void pin_verify(const Incoming&, Answer&);
void pin_change(const Incoming&, Answer&);
void pin_disable(const Incoming&, Answer&);
void pin_enable(const Incoming&, Answer&);
void pin_unblock(const Incoming&, Answer&);
void sim_file(const Incoming&, Answer&);
void operator_plmns(const Incoming&, Answer&);
void home_plmns(const Incoming&, Answer&);
void registered_plmn(const Incoming&, Answer&);
void forbidden_plmns(const Incoming&, Answer&);
void user_plmns(const Incoming&, Answer&);
void set_user_plmns(const Incoming&, Answer&);
void operator_plmn_block(const Incoming&, Answer&);
void home_plmn_block(const Incoming&, Answer&);

}  // namespace sim
