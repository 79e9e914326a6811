// What an argument may be stands in its row: help, completion and this check read the same values.
#include "zopctl/host/verb.h"

#include <fmt/format.h>

#include <algorithm>

#include "zopctl/text/failure.h"

namespace zopctl {

static std::string in_words(const std::vector<std::string>& values) {
  std::string text;
  for (size_t i = 0; i < values.size(); ++i) {
    if (i > 0) text += i + 1 == values.size() ? " or " : ", ";
    text += values[i];
  }
  return text;
}

static std::vector<std::string> range_of(const Argument& argument) {
  if (!argument.range) return {};
  return {fmt::format("{} to {}", argument.range->first, argument.range->last)};
}

std::string values_of(const Argument& argument) {
  std::vector<std::string> values = range_of(argument);
  for (const Choice& choice : argument.choices) values.push_back(choice.word);
  return in_words(values);
}

std::string values_with_meanings(const Argument& argument) {
  std::vector<std::string> values = range_of(argument);
  for (const auto& [word, meaning] : argument.choices)
    values.push_back(meaning.empty() ? word : fmt::format("{} ({})", word, meaning));
  return in_words(values);
}

static bool may_be(const Argument& argument, const std::string& word) {
  if (argument.choices.empty() && !argument.range) return true;
  if (argument.range && number_of(word, argument.range->first, argument.range->last)) return true;
  return std::ranges::find(argument.choices, word, &Choice::word) != argument.choices.end();
}

void check_arguments(const Verb& verb, const Arguments& arguments) {
  for (const Argument& argument : verb.arguments) {
    if (!arguments.has(argument.name)) continue;
    const std::string& word = arguments.text(argument.name);
    if (may_be(argument, word)) continue;
    throw UsageError(
        fmt::format("{} must be {}, not \"{}\"", argument.name, values_of(argument), word));
  }
  if (verb.check != nullptr) verb.check(arguments);
}

}  // namespace zopctl
