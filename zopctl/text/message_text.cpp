// The alphabet and its extension table are those of 3GPP TS 23.038.
#include "zopctl/text/message_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "records/utf8_text.h"
#include "zopctl/text/failure.h"

namespace zopctl {

const std::string& phone_number(const std::string& number, const char* characters, size_t most) {
  size_t first = number.starts_with('+') ? 1 : 0;
  bool good = number.find_first_not_of(characters, first) == std::string::npos;
  if (good && number.size() > first && number.size() <= most) return number;
  const char* others = std::string_view(characters).find('*') == std::string_view::npos
                           ? "digits"
                           : "digits, * and #";
  throw UsageError(
      fmt::format("NUMBER must be 1 to {} {}, with or without a + before them, not "
                  "\"{}\"",
                  most, others, number));
}

static bool is_in_default_alphabet(char c) {
  if (c == '\n' || c == '\r') return true;
  return c >= ' ' && c <= 'z' && std::string_view("[\\]^`").find(c) == std::string_view::npos;
}

static bool is_in_extension(char c) {
  return std::string_view("^{}\\[~]|").find(c) != std::string_view::npos;
}

[[noreturn]] static void refuse(std::string_view rest) {
  size_t length = std::max<size_t>(records::utf8_length(rest), 1);
  throw UsageError(
      fmt::format("TEXT has \"{}\"; the modem takes only ASCII characters that the GSM "
                  "alphabet has",
                  rest.substr(0, length)));
}

size_t septets_of(const std::string& text) {
  constexpr size_t MOST = 254;  // the room in the request
  if (text.empty() || text.size() > MOST)
    throw UsageError(fmt::format("TEXT must have 1 to {} characters, not {}", MOST, text.size()));
  size_t septets = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    bool extended = is_in_extension(text[i]);
    if (!extended && !is_in_default_alphabet(text[i])) refuse(std::string_view(text).substr(i));
    septets += extended ? 2 : 1;
  }
  return septets;
}

}  // namespace zopctl
