#include "tests/support/words.h"

#include <algorithm>
#include <sstream>

namespace test {

enum { LONG_RUN = 8 };

static char escaped(std::istream& in) {
  int c = in.get();
  if (c == 'x') {
    std::string digits = {static_cast<char>(in.get()), static_cast<char>(in.get())};
    return static_cast<char>(std::stoi(digits, nullptr, 16));
  }
  return c == 'n' ? '\n' : c == '0' ? '\0' : static_cast<char>(c);
}

static std::string quoted_word(std::istream& in) {
  std::string word = {static_cast<char>(in.get())};
  for (char c; in.get(c) && c != '"';) word += c == '\\' ? escaped(in) : c;
  return word;
}

std::vector<Words> word_groups(const std::string& line, const std::string& end) {
  std::istringstream in(line);
  std::vector<Words> groups(1);
  while (in >> std::ws && in.peek() != EOF) {
    std::string word;
    bool is_text = in.peek() == '"';
    if (is_text)
      word = quoted_word(in);
    else
      in >> word;
    if (word == end)
      groups.emplace_back();
    else
      groups.back().push_back(word);
  }
  return groups;
}

std::string text_of(const std::string& word) {
  return word.starts_with('"') ? word.substr(1) : word;
}

uint32_t number_of(const std::string& word) {
  return static_cast<uint32_t>(std::stoull(word, nullptr, 0));
}

static uint8_t byte_of(const std::string& digits) {
  return static_cast<uint8_t>(std::stoi(digits, nullptr, 16));
}

static void append_number(Bytes& bytes, int bits, int64_t value) {
  for (; bits > 0; bits -= 8, value >>= 8) bytes.push_back(static_cast<uint8_t>(value));
}

static void append(Bytes& bytes, const std::string& word) {
  size_t colon = word.find(':');
  if (word[0] == '"') {
    bytes.insert(bytes.end(), word.begin() + 1, word.end());
  } else if (word[0] == '@') {
    bytes.resize(std::stoul(word.substr(1)));
  } else if (colon != word.npos) {
    append_number(bytes, std::stoi(word), std::stoll(word.substr(colon + 1)));
  } else if (word.find("..") == 2) {
    for (int byte = byte_of(word); byte <= byte_of(word.substr(4)); ++byte) {
      bytes.push_back(static_cast<uint8_t>(byte));
    }
  } else {
    size_t count = word.size() > 3 ? std::stoul(word.substr(3)) : 1;
    bytes.insert(bytes.end(), count, byte_of(word.substr(0, 2)));
  }
}

Bytes bytes_of(std::span<const std::string> words) {
  Bytes bytes;
  for (const std::string& word : words) append(bytes, word);
  return bytes;
}

Bytes hex(const std::string& line) { return bytes_of(word_groups(line, "")[0]); }

std::string to_hex(std::span<const uint8_t> bytes) {
  static const char digits[] = "0123456789abcdef";
  std::string text;
  for (uint8_t byte : bytes) {
    if (!text.empty()) text += ' ';
    text += digits[byte >> 4];
    text += digits[byte & 15];
  }
  return text;
}

std::string short_hex(std::span<const uint8_t> bytes) {
  std::ostringstream text;
  while (!bytes.empty()) {
    auto end = std::find_if(bytes.begin(), bytes.end(), [&](uint8_t b) { return b != bytes[0]; });
    auto run = static_cast<size_t>(end - bytes.begin());
    if (run < LONG_RUN) run = 1;
    text << to_hex(bytes.first(1));
    if (run > 1) text << '*' << run;
    bytes = bytes.subspan(run);
    if (!bytes.empty()) text << ' ';
  }
  return text.str();
}

std::string in_quotes(const std::string& text) {
  std::string shown = "\"";
  for (char c : text) shown += c == '\n' ? "\\n" : std::string(1, c);
  return shown + "\"";
}

std::string joined(const std::vector<std::string>& parts, const std::string& end) {
  std::string text;
  for (size_t i = 0, next = 0; i < parts.size(); i = next) {
    while (next < parts.size() && parts[next] == parts[i]) ++next;
    text += (next - i > 1 ? std::to_string(next - i) + " x " : "") + parts[i] + end;
  }
  return text;
}

}  // namespace test
