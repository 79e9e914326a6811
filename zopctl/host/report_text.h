// The diagnostic report as the module renders it for a host, and the same as JSON.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "zopctl/host/module_library.h"

namespace zopctl {

// Keeps the modem's field testing on for ten seconds. Throws Failure.
std::string log_string(const ModuleLibrary& module);

// It holds a field-test screen of the modem: not before the first one, nor on a closed module.
bool has_screen(const std::string& report);

// {"section": {"label": value}}: a number where the item is one, null where it is not known.
nlohmann::ordered_json report_as_json(const ModuleLibrary& module, const std::string& report);

}  // namespace zopctl
