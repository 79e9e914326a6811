// The arguments of a verb on the command line.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace zopctl {

// Decimal or 0x; nothing unless the whole word is a number from min to max.
std::optional<uint32_t> number_of(const std::string& word, uint32_t min, uint32_t max);

// Arguments by name, as the user gave them.
class Arguments {
 public:
  std::map<std::string, std::string> texts;
  std::map<std::string, std::vector<std::string>> lists;
  bool yes = false;   // --yes: a dangerous verb is confirmed
  bool json = false;  // for verbs that print their own output
  bool redact = false;

  bool has(const std::string& name) const { return texts.count(name) != 0; }
  const std::string& text(const std::string& name) const { return texts.at(name); }

  // Of an argument whose row has a range of numbers.
  uint32_t number(const std::string& name) const;
};

}  // namespace zopctl
