// Lines that fit the terminal, of which some are as narrow as a phone.
#pragma once

#include <string>
#include <string_view>

namespace zopctl {

// Of the terminal on standard output; 0 when there is none: nothing is folded.
size_t terminal_columns();

// Breaks long lines at blanks, where possible. The first line begins in the column of_first, and
// goes on in the column indent; the others go on a little to the right of where they begin.
std::string folded(std::string_view text, size_t of_first, size_t indent, size_t columns);

// Of lists of names and what they mean: lines go on below the meaning.
std::string folded_list(std::string_view text, size_t columns);

}  // namespace zopctl
