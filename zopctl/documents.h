// The manual page and the shell completions, generated from the table of verbs.
#pragma once

#include <string>

namespace zopctl {

void print_man_page();
void print_completion(const std::string& shell);  // "bash", "zsh" or "fish"

}  // namespace zopctl
