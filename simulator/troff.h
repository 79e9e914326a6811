// Text for a manual page, made literal.
#pragma once

#include <string>

namespace sim {

// A dash is an option's, and a dot or a quote at the start of a line is text, not a command.
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
