// HTML and inline SVG as text. Content and attributes are escaped here and nowhere else: no text of
// a modem or a file can become markup.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace page {

// A share of a whole for SVG and CSS: 0.25 is "25%". NaN is 0.
std::string percent(double share);

struct Attribute {
  const char* name;
  std::string value;
};
using Attributes = std::initializer_list<Attribute>;

class HtmlWriter {
 public:
  HtmlWriter& open(const char* tag, Attributes attributes = {});
  HtmlWriter& close();
  HtmlWriter& text(std::string_view text);
  // An element that holds only text.
  HtmlWriter& element(const char* tag, Attributes attributes, std::string_view text);
  // An element without content.
  HtmlWriter& empty(const char* tag, Attributes attributes);

  // The program's own style sheet, unescaped.
  HtmlWriter& style(const char* sheet);

  void reset(const char* first_line) { out_ = first_line; }
  const std::string& written() const { return out_; }

 private:
  void start(const char* tag, Attributes attributes);
  void append(std::string_view text);

  std::string out_;
  std::vector<const char*> open_;
};

}  // namespace page
