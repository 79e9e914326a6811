// zopctl firmware and dump: verbs that last, and say at their end how the modem was left.
#pragma once

#include "zopctl/host/verb.h"

namespace zopctl {

extern const Verb FIRMWARE_INFO, FIRMWARE_SEAL, FIRMWARE_UPDATE, FIRMWARE_FINISH, DUMP;

}  // namespace zopctl
