// Errors of files: what to do about them. The one table of it, for the libraries and the programs.
#pragma once

#include <string>

#include "records/reading.h"

namespace records {

// By errno; it never is empty.
const char* advice_after(int error);

// "WHAT: No space left on device", with its advice. WHAT names the file.
Failure file_failure(const std::string& what, int error);

// Why a file can't be read, as an errno; 0 when it can. Streams open folders.
int read_error(const std::string& path);

}  // namespace records
