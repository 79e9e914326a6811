// zopctl status: what a host shows of the modem.
#pragma once

#include "zopctl/module_library.h"
#include "zopctl/output.h"

namespace zopctl {

Findings read_status(const ModuleLibrary& module);

}  // namespace zopctl
