// Reads what a page is made from: a report, samples, or parsed logs of many devices.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "records/reading.h"
#include "records/recording.h"

namespace records {

// One recording a file, of a log one a device; closes the file. Throws Failure with the file's name
// and the line for what is none of these; an incomplete last line is reported and left out.
std::vector<Recording> read_recordings(std::FILE* file, const std::string& name,
                                       const Callbacks& callbacks);

// The same from a path; "-" is standard input.
std::vector<Recording> read_recordings(const std::string& path, const Callbacks& callbacks);

}  // namespace records
