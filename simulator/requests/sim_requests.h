// What the modem answers about its SIM card: PIN1, files, PLMN lists.
#pragma once

#include "simulator/requests/requests.h"

namespace sim {

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

}  // namespace sim
