// Reads what a page is made from: a report, samples, or the reports of many devices' logs.
#pragma once

#include <string>
#include <vector>

#include "zopctl/module_library.h"
#include "zopctl/recording.h"

namespace zopctl::page {

// One recording a file, of a log one a device. "-" is standard input. Throws Failure with file and
// line for what is none of these; a last line that its recorder could not end is told and left out.
std::vector<Recording> read_recordings(const std::string& name, const ModuleLibrary& module);

}  // namespace zopctl::page
