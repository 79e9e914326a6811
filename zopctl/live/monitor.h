// zopctl monitor.
#pragma once

#include "zopctl/host/verb.h"

namespace zopctl {

extern const Verb MONITOR;

}  // namespace zopctl
