// Where a page goes.
#pragma once

#include <string>

namespace page {

// Into a file, of which nothing is left when it can't be written whole; "-" is standard output.
// check is called between two pieces, and what it throws ends the writing. Throws
// records::Failure.
void write_page(const std::string& name, const std::string& text, void (*check)());

}  // namespace page
