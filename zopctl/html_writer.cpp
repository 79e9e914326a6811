// Control characters are shown by their pictures: a browser would drop them or see other ones.
#include "zopctl/html_writer.h"

#include <fmt/format.h>

#include <cmath>

#include "zopctl/json_text.h"

namespace zopctl {

constexpr char UNREADABLE[] = "\uFFFD";

std::string as_utf8(std::string_view text) {
  std::string clean;
  clean.reserve(text.size());
  while (!text.empty()) {
    size_t length = utf8_length(text);
    clean += length == 0 ? std::string_view(UNREADABLE) : text.substr(0, length);
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return clean;
}

std::string shortened(std::string_view text, size_t most) {
  if (text.size() <= most) return std::string(text);
  while (most > 0 && (text[most] & 0xC0) == 0x80) --most;
  return std::string(text.substr(0, most)) + "\u2026";
}

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

void HtmlWriter::append(std::string_view text) {
  while (!text.empty()) {
    size_t length = utf8_length(text);
    char c = text[0];
    if (c == '&') {
      out_ += "&amp;";
    } else if (c == '<') {
      out_ += "&lt;";
    } else if (c == '>') {
      out_ += "&gt;";
    } else if (c == '"') {
      out_ += "&quot;";
    } else if (c == '\'') {
      out_ += "&#39;";
    } else if (c == '\n') {
      out_ += c;
    } else if (length == 1 && (c < 0x20 || c == 0x7F)) {
      out_ += control_picture(c);
    } else {
      out_ += length == 0 ? std::string_view(UNREADABLE) : text.substr(0, length);
    }
    text.remove_prefix(length == 0 ? 1 : length);
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

}  // namespace zopctl
