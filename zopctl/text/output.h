// The findings of a verb, printed as a table or as JSON.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace zopctl {

// One value: programs see its key, people its label.
struct Item {
  std::string key;
  std::string label;
  nlohmann::ordered_json value;  // null if the modem did not provide it
  // For people; the reason if value is null. With neither there is nothing to say, and no problem.
  std::string shown;
  bool failed = false;  // whether the reason is a failure
};

inline bool says_nothing(const Item& item) { return item.value.is_null() && item.shown.empty(); }

struct Section {
  std::string key;
  std::string title;
  std::vector<Item> items;
};

using Findings = std::vector<Section>;

// A table for people; colour on a terminal unless NO_COLOR is set.
void print_table(const Findings& findings);

// One object: {"section": {"key": value}, "problems": [{"item": "section.key", "reason": ...}]}.
nlohmann::ordered_json json_of(const Findings& findings);
void print_json(const Findings& findings);

bool any_failed(const Findings& findings);

// Findings of one section.
Findings one_section(const char* key, const char* title, std::vector<Item> items);
Findings confirmation(const char* key, const char* title, std::string what);
Item shown(std::string key, std::string label, nlohmann::ordered_json value, std::string text);
Item unknown(std::string key, std::string label, std::string reason);  // and that is no failure
Item failed(std::string key, std::string label, std::string reason);

// A state: {"code": 2, "text": "ready"} for programs, the word for people.
Item coded(std::string key, std::string label, int64_t code, const std::string& word);
Item yes_or_no(std::string key, std::string label, bool value);

// A number with its unit for people.
Item measured(std::string key, std::string label, int64_t value, const std::string& unit);

}  // namespace zopctl
