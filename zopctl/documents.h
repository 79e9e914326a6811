// Help, the manual page and the shell completions, generated from the table of verbs.
#pragma once

#include <string>

namespace zopctl {

std::string help_footer();  // examples and exit codes
void print_man_page();
void print_completion(const std::string& shell);  // "bash", "zsh" or "fish"

}  // namespace zopctl
