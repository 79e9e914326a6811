// zopctl firmware and dump.
#pragma once

#include "zopctl/host/module_library.h"
#include "zopctl/text/arguments.h"
#include "zopctl/text/output.h"

namespace zopctl {

Findings firmware_info(const ModuleLibrary&, const Arguments&);
Findings firmware_update(const ModuleLibrary&, const Arguments&);
Findings dump(const ModuleLibrary&, const Arguments&);

}  // namespace zopctl
