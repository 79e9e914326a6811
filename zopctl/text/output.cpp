// Tables for people, JSON for programs.
#include "zopctl/text/output.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "zopctl/text/folding.h"
#include "zopctl/text/printable.h"

namespace zopctl {

namespace {
struct Colours {
  const char* title;
  const char* label;
  const char* bad;
  const char* off;
};
}  // namespace

static Colours colours() {
  bool wanted = isatty(STDOUT_FILENO) != 0 && std::getenv("NO_COLOR") == nullptr;
  if (!wanted) return {"", "", "", ""};
  return {"\033[1m", "\033[2m", "\033[31m", "\033[0m"};
}

static size_t widest_label(const Findings& findings) {
  size_t width = 0;
  for (const Section& section : findings) {
    for (const Item& item : section.items) width = std::max(width, item.label.size());
  }
  return width;
}

// Two blanks, the label, two blanks and the value, which in a narrow terminal goes on below.
void print_table(const Findings& findings) {
  Colours c = colours();
  size_t columns = terminal_columns();
  size_t width = widest_label(findings);
  size_t indent = 2 + width + 2;
  if (2 * indent > columns) indent = 4;
  const char* separator = "";
  for (const Section& section : findings) {
    fmt::print("{}{}{}{}\n", separator, c.title, folded(section.title, 0, 2, columns), c.off);
    separator = "\n";
    for (const Item& item : section.items) {
      if (says_nothing(item)) continue;
      std::string shown = item.value.is_null() ? "-  (" + item.shown + ")" : item.shown;
      fmt::print("  {}{:{}}{}  {}{}{}\n", c.label, item.label, width, c.off,
                 item.failed ? c.bad : "",
                 folded(printable(shown, "\n"), 2 + width + 2, indent, columns), c.off);
    }
  }
}

nlohmann::ordered_json json_of(const Findings& findings) {
  nlohmann::ordered_json root;
  auto problems = nlohmann::ordered_json::array();
  for (const Section& section : findings) {
    for (const Item& item : section.items) {
      root[section.key][item.key] = item.value;
      if (item.value.is_null() && !says_nothing(item)) {
        problems.push_back({{"item", section.key + "." + item.key},
                            {"reason", item.shown},
                            {"failure", item.failed}});
      }
    }
  }
  root["problems"] = problems;
  return root;
}

void print_json(const Findings& findings) {
  fmt::print("{}\n", printable_json(json_of(findings), 2));
}

bool any_failed(const Findings& findings) {
  auto failed = [](const Section& section) {
    return std::ranges::any_of(section.items, &Item::failed);
  };
  return std::ranges::any_of(findings, failed);
}

Findings one_section(const char* key, const char* title, std::vector<Item> items) {
  return {{key, title, std::move(items)}};
}

Findings confirmation(const char* key, const char* title, std::string what) {
  return one_section(key, title, {shown("done", "Done", true, std::move(what))});
}

Item shown(std::string key, std::string label, nlohmann::ordered_json value, std::string text) {
  return {std::move(key), std::move(label), std::move(value), std::move(text), false};
}

Item unknown(std::string key, std::string label, std::string reason) {
  return shown(std::move(key), std::move(label), nullptr, std::move(reason));
}

Item failed(std::string key, std::string label, std::string reason) {
  Item item = unknown(std::move(key), std::move(label), std::move(reason));
  item.failed = true;
  return item;
}

Item coded(std::string key, std::string label, int64_t code, const std::string& word) {
  return shown(std::move(key), std::move(label), {{"code", code}, {"text", word}}, word);
}

Item yes_or_no(std::string key, std::string label, bool value) {
  return shown(std::move(key), std::move(label), value, value ? "yes" : "no");
}

Item measured(std::string key, std::string label, int64_t value, const std::string& unit) {
  return shown(std::move(key), std::move(label), value, fmt::format("{} {}", value, unit));
}

}  // namespace zopctl
