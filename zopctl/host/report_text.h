// The diagnostic report as the module renders it for a host.
#pragma once

#include <string>

#include "records/report.h"
#include "zopctl/host/module_library.h"

namespace zopctl {

// Keeps the modem's field testing on for ten seconds. Throws Failure.
std::string log_string(const ModuleLibrary& module);

// Whether the report holds a field-test screen: not before the first one, nor on a closed module.
bool has_screen(const std::string& report);

// The items of the module's own table.
records::ItemTable items_of(const ModuleLibrary& module);

}  // namespace zopctl
