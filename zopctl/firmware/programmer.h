// A programmer that an update which was killed has left running in the modem's RAM. It answers
// neither diagnostics nor what a boot ROM does.
#pragma once

namespace zopctl {

// Restarts the modem if a programmer answers at the mapped device. False if none does.
bool end_running_programmer();

}  // namespace zopctl
