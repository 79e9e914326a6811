// A question on the terminal whose answer is not shown.
#pragma once

#include <string>

namespace zopctl {

// Asks on the terminal of standard input. Whatever ends or stops the program meanwhile, the
// terminal shows its input again. Throws Interrupted.
std::string ask_hidden(const std::string& question);

}  // namespace zopctl
