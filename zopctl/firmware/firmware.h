// zopctl firmware and dump.
#pragma once

#include "zopctl/host/verb.h"

namespace zopctl {

extern const Verb FIRMWARE_INFO, FIRMWARE_SEAL, FIRMWARE_UPDATE, DUMP;

}  // namespace zopctl
