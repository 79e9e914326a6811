// The diagnostic report as the module renders it for a host.
#pragma once

#include <string>
#include <string_view>

#include "zopctl/host/module_library.h"

namespace zopctl {

// Keeps the modem's field testing on for ten seconds. Throws Failure.
std::string log_string(const ModuleLibrary& module);

// Whether the report holds a field-test screen: not before the first one, nor on a closed module.
bool has_screen(const std::string& report);

// With "---" for the values of a screen, which are zeros and old ones before the first one.
std::string without_screen(std::string_view report);

}  // namespace zopctl
