// zopctl monitor.
#pragma once

#include "zopctl/host/module_library.h"
#include "zopctl/text/arguments.h"
#include "zopctl/text/output.h"

namespace zopctl {

// Prints as it goes.
Findings monitor(const ModuleLibrary&, const Arguments&);

}  // namespace zopctl
