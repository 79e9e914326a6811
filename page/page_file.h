// Writing a page.
#pragma once

#include <string>

namespace page {

// To a file, which is removed when it can't be written whole; "-" is standard output. check is
// called between two pieces, and an exception from it ends the writing. Throws records::Failure.
void write_page(const std::string& name, const std::string& text, void (*check)());

}  // namespace page
