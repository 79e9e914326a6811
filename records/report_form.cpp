// The age of the screen comes behind the items that it holds, so these are collected first.
#include "records/report_form.h"

#include <algorithm>
#include <deque>

#include "records/json_text.h"

namespace records {

constexpr std::string_view HEADING = "      *********";

// ---- making one ----

void ReportText::add(std::string_view label, std::string_view value) {
  const ReportItem* item = finder_.find(label);
  pairs_.push_back({item, label, value});
  if (item != nullptr && item->source == Source::SCREEN_AGE) no_screen_ = value == "None yet";
}

void ReportText::append_item(std::string& out, const Pair& pair, Made& last) const {
  if (pair.item == nullptr) {
    out += ',';
    append_json(out, pair.label);
    out += ':';
    return append_text(out, pair.value);
  }
  const ReportItem& item = *pair.item;
  bool is_known = item.source != Source::SCREEN || !no_screen_;
  if (is_known && last.item == &item && last.value == pair.value) {
    out += last.text;
    return;
  }
  size_t start = out.size();
  out += item.key.json();
  item.append(out, is_known ? pair.value : NO_VALUE);
  if (!is_known) return;
  last.item = &item;
  last.value = pair.value;
  last.text.assign(out, start);
}

void ReportText::append_to(std::string& out) {
  size_t place = 0;
  for (const Pair& pair : pairs_) {
    SectionId section = pair.item == nullptr ? SectionId::OTHER : pair.item->section;
    append_item(sections_[static_cast<size_t>(section)], pair, made_[place++ % made_.size()]);
  }
  const char* comma = "{";
  for (size_t id = 0; id < SECTION_COUNT; ++id) {
    if (sections_[id].empty()) continue;
    out += comma;
    comma = ",";
    out += '"';
    out += SECTIONS[id];
    out += "\":{";
    out += std::string_view(sections_[id]).substr(1);
    out += '}';
    sections_[id].clear();
  }
  out += *comma == '{' ? "{}" : "}";
  pairs_.clear();
  no_screen_ = false;
}

static Json as_json(ReportText& report) {
  std::string text;
  report.append_to(text);
  return Json::parse(text);
}

// ---- the two forms ----

Json report_of_text(std::string_view text) {
  ReportText report;
  while (!text.empty()) {
    std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    size_t colon = line.find(": ");
    if (line.starts_with(HEADING) || colon == line.npos) continue;
    report.add(line.substr(0, colon), line.substr(colon + 2));
  }
  return as_json(report);
}

// ---- older reports ----

// Keys begin with a small letter, labels do not.
static bool is_label(const std::string& name) {
  return !name.empty() && name[0] >= 'A' && name[0] <= 'Z' && find_item(name) != nullptr;
}

bool has_labels(const Json& report) {
  for (const Json& section : report) {
    if (!section.is_object()) continue;
    for (const auto& [name, value] : section.items()) {
      if (is_label(name)) return true;
    }
  }
  return false;
}

Json without_labels(const Json& report) {
  ReportText made;
  std::deque<std::string> texts;  // stay where they are
  for (const Json& section : report) {
    if (!section.is_object()) continue;
    for (const auto& [name, value] : section.items()) {
      texts.push_back(name);
      const std::string& label = texts.back();
      texts.push_back(value.is_structured() ? "" : text_of(value));
      made.add(label, texts.back());
    }
  }
  return as_json(made);
}

}  // namespace records
