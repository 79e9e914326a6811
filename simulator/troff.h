// Escapes text for a manual page.
#pragma once

#include <string>

namespace sim {

// Options need the dash as it is; a dot or quote at the start of a line would be a command.
inline std::string troff(const std::string& text) {
  std::string out;
  bool line_start = true;
  for (char c : text) {
    if (line_start && (c == '.' || c == '\'')) out += "\\&";
    if (c == '-' || c == '\\') out += '\\';
    out += c;
    line_start = c == '\n';
  }
  return out;
}

}  // namespace sim
