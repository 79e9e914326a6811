// What a verb found out, and the two ways to show it.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace zopctl {

// One value: for programs under its key, for people under its label.
struct Item {
  std::string key;
  std::string label;
  nlohmann::ordered_json value;  // null when the modem did not give it
  std::string shown;             // for people; with a null value, the reason
  bool failed = false;           // the reason is a failure
};

struct Section {
  std::string key;
  std::string title;
  std::vector<Item> items;
};

using Findings = std::vector<Section>;

// A table for people; colour on a terminal unless NO_COLOR is set.
void print_table(const Findings& findings);

// One object: {"section": {"key": value}, "problems": [{"item": "section.key", "reason": ...}]}.
void print_json(const Findings& findings);

bool any_failed(const Findings& findings);

// Findings of one section.
Findings one_section(const char* key, const char* title, std::vector<Item> items);
Findings confirmation(const char* key, const char* title, std::string what);  // that it was done
Item shown(const char* key, const char* label, nlohmann::ordered_json value, std::string text);

}  // namespace zopctl
