// Markup is escaped; what else a text may not hold is the records' rule for all texts.
#include "page/html_writer.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "records/utf8_text.h"

namespace page {

std::string percent(double share) {
  if (!std::isfinite(share)) share = 0;
  std::string digits = fmt::format("{:.3f}", share * 100 + 0.0);  // no -0
  digits.erase(digits.find_last_not_of('0') + 1);
  if (digits.back() == '.') digits.pop_back();
  return digits + "%";
}

// The replacement of a character; empty for a character that needs none.
static std::string replaced(std::string_view character) {
  switch (character.size() == 1 ? character[0] : '\0') {
    case '\n':
      return "";
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
      return records::instead_of(character);
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
