// What the modem answers about its cells, and the field-test screen.
#pragma once

#include "simulator/requests/requests.h"

namespace sim {

void cell_set(const Incoming&, Answer&, int set);
void neighbors(const Radio&, Answer&);
void best_six(const Radio&, Answer&);
void screen(const Incoming&, Answer&);

}  // namespace sim
