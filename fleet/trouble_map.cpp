// A field is coloured by the share of its reports that have a trouble. Its devices are shown when
// it is chosen.
#include "fleet/trouble_map.h"

#include <fmt/format.h>

#include <algorithm>

#include "fleet/answer_text.h"
#include "records/counted.h"

namespace fleet {

using records::counted;

constexpr size_t MAX_CELLS = 30, MAX_VERSIONS = 8, MAX_DEVICES = 20;
constexpr int64_t DOUBT = 10;  // reports without trouble, so that one bad report is not the worst

static double share(int64_t part, int64_t whole) {
  return whole == 0 ? 0 : static_cast<double>(part) / static_cast<double>(whole);
}

static std::string cell_name(const Answer& answer, size_t row) {
  auto text = [&](const char* column) { return word(named(answer, row, column)); };
  return fmt::format("{} {} / {} / {}", text("mcc"), text("mnc"), text("lac"), text("cell_id"));
}

TroubleMap::TroubleMap(const Answer& answer) {
  std::map<std::string, CellRow> cells;
  std::map<std::string, int64_t> troubled_of;  // by version
  for (size_t row = 0; row < answer.rows.size(); ++row) {
    int64_t reports = named(answer, row, "reports").number;
    int64_t troubled = named(answer, row, "troubled").number;
    CellRow& cell = cells[cell_name(answer, row)];
    std::string version = word(named(answer, row, "firmware"));
    Field& field = cell.fields[version];
    if (troubled > 0) {
      field.devices.push_back({named(answer, row, "host").text, reports, troubled});
    }
    field.reports += reports;
    field.troubled += troubled;
    cell.reports += reports;
    cell.troubled += troubled;
    troubled_of[version] += troubled;
  }
  for (auto& [name, cell] : cells) {
    cell.name = name;
    if (cell.troubled > 0) rows_.push_back(std::move(cell));
  }
  std::ranges::stable_sort(rows_, std::greater(), [](const CellRow& cell) {
    return share(cell.troubled, cell.reports + DOUBT);
  });
  more_cells_ = rows_.size() - std::min(rows_.size(), MAX_CELLS);
  rows_.resize(rows_.size() - more_cells_);
  choose_versions(troubled_of);
}

// Those with the most trouble, by name.
void TroubleMap::choose_versions(const std::map<std::string, int64_t>& troubled) {
  for (const auto& [version, reports] : troubled) versions_.push_back(version);
  std::ranges::stable_sort(versions_, std::greater(),
                           [&](const std::string& version) { return troubled.at(version); });
  more_versions_ = versions_.size() - std::min(versions_.size(), MAX_VERSIONS);
  versions_.resize(versions_.size() - more_versions_);
  std::ranges::sort(versions_);
}

static std::string field_id(size_t row, size_t column) {
  return fmt::format("field-{}-{}", row, column);
}

void TroubleMap::write_field(page::HtmlWriter& html, size_t row, size_t column,
                             const Field& field) const {
  double part = share(field.troubled, field.reports);
  int level = field.troubled == 0 ? 0 : std::clamp(static_cast<int>(part * 10) + 1, 1, 5);
  html.open("td",
            {{"class", fmt::format("number heat{}", level)}, {"data-name", versions_[column]}});
  std::string text = fmt::format("{:.1f} %", 100 * part);
  if (field.troubled == 0) {
    html.text(text);
  } else {
    html.element("a", {{"href", "#" + field_id(row, column)}}, text);
  }
  html.close();
}

void TroubleMap::write_row(page::HtmlWriter& html, size_t row) const {
  html.open("tr").element("th", {}, rows_[row].name);
  for (size_t column = 0; column < versions_.size(); ++column) {
    auto found = rows_[row].fields.find(versions_[column]);
    if (found == rows_[row].fields.end()) {
      html.element("td", {{"class", "number none-here"}}, "");
    } else {
      write_field(html, row, column, found->second);
    }
  }
  html.close();
}

void TroubleMap::write_devices(page::HtmlWriter& html, size_t row, size_t column,
                               const Field& field) const {
  html.open("div", {{"class", "chosen"}, {"id", field_id(row, column)}});
  html.element("h4", {}, rows_[row].name + ", version " + versions_[column]);
  html.element("p", {{"class", "extent"}},
               fmt::format("{} of {} with a trouble, from {}", field.troubled,
                           counted(static_cast<uint64_t>(field.reports), "report"),
                           counted(field.devices.size(), "device")));
  html.open("table", {{"class", "cells"}}).open("tbody");
  for (size_t i = 0; i < std::min(field.devices.size(), MAX_DEVICES); ++i) {
    const Device& device = field.devices[i];
    html.open("tr").element("td", {}, device.host);
    html.element("td", {{"class", "number"}},
                 fmt::format("{} of {}", device.troubled, device.reports));
    html.close();
  }
  html.close().close();
  if (field.devices.size() > MAX_DEVICES) {
    html.element(
        "p", {{"class", "extent"}},
        fmt::format("{} more: zopctl fleet ask DB trouble", field.devices.size() - MAX_DEVICES));
  }
  html.close();
}

void TroubleMap::write(page::HtmlWriter& html) const {
  if (rows_.empty()) {
    html.element("p", {}, "None.");
    return;
  }
  html.element("p", {{"class", "extent"}},
               "Share of the reports with a trouble, by network / area / cell, the worst first. A "
               "number shows its devices below.");
  html.open("table", {{"class", "map"}}).open("thead").open("tr").element("th", {}, "Cell");
  for (const std::string& version : versions_) html.element("th", {}, version);
  html.close().close().open("tbody");
  for (size_t row = 0; row < rows_.size(); ++row) write_row(html, row);
  html.close().close();
  std::string more;
  if (more_cells_ > 0) more = counted(more_cells_, "more cell has", "more cells have") + " trouble";
  if (more_versions_ > 0) {
    more += (more.empty() ? "" : "; ") + counted(more_versions_, "version") + " with less left out";
  }
  if (!more.empty()) {
    html.element("p", {{"class", "extent"}}, more + ": zopctl fleet ask DB trouble");
  }
  for (size_t row = 0; row < rows_.size(); ++row) {
    for (size_t column = 0; column < versions_.size(); ++column) {
      auto found = rows_[row].fields.find(versions_[column]);
      if (found == rows_[row].fields.end() || found->second.troubled == 0) continue;
      write_devices(html, row, column, found->second);
    }
  }
}

}  // namespace fleet
