// The items of the report: what the module calls each, and how programs get it. The one place that
// knows both.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace records {

enum class SectionId : uint8_t {
  MODEM,
  SIM,
  NETWORK,
  STATE,
  STATUS,
  ERRORS,
  WCDMA,
  GSM,
  WAN,
  PLMN,
  OTHER,  // items that are not in the table, by their labels
};
constexpr size_t SECTION_COUNT = static_cast<size_t>(SectionId::OTHER) + 1;
extern const char* const SECTIONS[SECTION_COUNT];

// When an item is known at all. A screen's items hold zeros before the modem's first screen.
enum class Source : uint8_t { MODULE, SCREEN, SCREEN_AGE };

// Text without storage: there is no value.
constexpr std::string_view NO_VALUE;

// Kept as JSON, between a comma and a colon.
class ItemKey {
 public:
  consteval ItemKey(const char* name) {
    append(",\"");
    append(name);
    append("\":");
  }
  constexpr std::string_view json() const { return {text_.data(), size_}; }
  constexpr std::string_view name() const { return json().substr(2, size_ - 4); }

 private:
  constexpr void append(const char* text) {
    while (*text != '\0') text_[size_++] = *text++;
  }

  std::array<char, 31> text_{};
  uint8_t size_ = 0;
};

struct ReportItem {
  std::string_view label;  // the module's
  ItemKey key;
  // Appends the value as JSON; more keys and values behind it where a label has several.
  void (*append)(std::string& out, std::string_view value);
  SectionId section;
  Source source = Source::MODULE;
};

// Null when the label is none of the module's.
const ReportItem* find_item(std::string_view label);

// The same for the items of many reports, which mostly follow one another as in the last one.
class ItemFinder {
 public:
  ItemFinder();
  const ReportItem* find(std::string_view label);

 private:
  std::vector<const ReportItem*> next_;  // behind each item, and behind one that has no row
  size_t last_;
};

// The value of an item that is not in the table.
void append_text(std::string& out, std::string_view value);

}  // namespace records
