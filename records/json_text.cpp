// Runs of plain characters are copied at once.
#include "records/json_text.h"

#include <array>

#include "records/utf8_text.h"

namespace records {

static constexpr std::array<bool, 256> PLAIN = [] {
  std::array<bool, 256> plain{};
  for (size_t c = 0x20; c < 0x7F; ++c) plain[c] = c != '"' && c != '\\';
  return plain;
}();

// Appends the first character, which is not plain; returns its length.
static size_t append_special(std::string& out, std::string_view text) {
  char c = text.front();
  std::string_view character = text.substr(0, utf8_length(text));
  std::string instead = instead_of(character);
  if (c == '"' || c == '\\') out += '\\';
  out += instead.empty() ? character : instead;
  return character.empty() ? 1 : character.size();
}

void append_json(std::string& out, std::string_view text) {
  out += '"';
  while (!text.empty()) {
    size_t run = 0;
    while (run < text.size() && PLAIN[static_cast<unsigned char>(text[run])]) ++run;
    out += text.substr(0, run);
    text.remove_prefix(run);
    if (!text.empty()) text.remove_prefix(append_special(out, text));
  }
  out += '"';
}

}  // namespace records
