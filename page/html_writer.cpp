// Control characters are shown as their Unicode pictures: a browser would drop or reinterpret them.
// Characters that change the direction of writing are replaced: they can disguise a text.
#include "page/html_writer.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "records/utf8_text.h"

namespace page {

constexpr char UNREADABLE[] = "\uFFFD";

std::string percent(double share) {
  if (!std::isfinite(share)) share = 0;
  std::string digits = fmt::format("{:.3f}", share * 100);
  digits.erase(digits.find_last_not_of('0') + 1);
  if (digits.back() == '.') digits.pop_back();
  return digits + "%";
}

static std::string control_picture(char c) {
  if (c == 0x7F) return "\u2421";
  std::string picture = "\u2400";
  picture.back() = static_cast<char>(picture.back() + c);
  return picture;
}

// U+0080 to U+009F, U+202A to U+202E, U+2066 to U+2069.
static bool misleads(std::string_view character) {
  if (character.size() == 2) return character[0] == '\xC2' && (character[1] & 0xE0) == 0x80;
  if (character.size() != 3) return false;
  return (character >= "\u202A" && character <= "\u202E") ||
         (character >= "\u2066" && character <= "\u2069");
}

// The replacement of a character; empty for a character that needs none.
static std::string replaced(std::string_view character) {
  if (character.empty() || misleads(character)) return UNREADABLE;
  if (character.size() > 1) return "";
  switch (char c = character[0]) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    case '\'':
      return "&#39;";
    default:
      return (c < 0x20 && c != '\n') || c == 0x7F ? control_picture(c) : "";
  }
}

static bool is_plain(char c) {
  return c >= 0x20 && c < 0x7F && c != '&' && c != '<' && c != '>' && c != '"' && c != '\'';
}

// Runs of plain characters are copied at once.
void HtmlWriter::append(std::string_view text) {
  while (!text.empty()) {
    auto run = std::find_if_not(text.begin(), text.end(), is_plain) - text.begin();
    out_ += text.substr(0, static_cast<size_t>(run));
    text.remove_prefix(static_cast<size_t>(run));
    if (text.empty()) return;
    std::string_view character = text.substr(0, records::utf8_length(text));
    std::string instead = replaced(character);
    out_ += instead.empty() ? character : instead;
    text.remove_prefix(std::max<size_t>(1, character.size()));
  }
}

void HtmlWriter::start(const char* tag, Attributes attributes) {
  out_ += '<';
  out_ += tag;
  for (const Attribute& attribute : attributes) {
    out_ += ' ';
    out_ += attribute.name;
    out_ += "=\"";
    append(attribute.value);
    out_ += '"';
  }
}

HtmlWriter& HtmlWriter::open(const char* tag, Attributes attributes) {
  start(tag, attributes);
  out_ += '>';
  open_.push_back(tag);
  return *this;
}

HtmlWriter& HtmlWriter::close() {
  out_ += "</";
  out_ += open_.back();
  out_ += ">\n";
  open_.pop_back();
  return *this;
}

HtmlWriter& HtmlWriter::text(std::string_view text) {
  append(text);
  return *this;
}

HtmlWriter& HtmlWriter::style(const char* sheet) {
  open("style");
  out_ += sheet;
  return close();
}

HtmlWriter& HtmlWriter::element(const char* tag, Attributes attributes, std::string_view text) {
  return open(tag, attributes).text(text).close();
}

HtmlWriter& HtmlWriter::empty(const char* tag, Attributes attributes) {
  start(tag, attributes);
  out_ += "/>";
  return *this;
}

}  // namespace page
