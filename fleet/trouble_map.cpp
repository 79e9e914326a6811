// A field is coloured by the share of its reports that have a trouble.
#include "fleet/trouble_map.h"

#include <fmt/format.h>

#include <algorithm>

namespace fleet {

constexpr size_t MAX_CELLS = 40, MAX_DEVICES = 20;

static std::string word(const Cell& cell) {
  if (cell.type == Cell::NUMBER) return std::to_string(cell.number);
  return cell.type == Cell::TEXT ? cell.text : "unknown";
}

static double share(int64_t part, int64_t whole) {
  return whole == 0 ? 0 : static_cast<double>(part) / static_cast<double>(whole);
}

TroubleMap::TroubleMap(const Answer& answer) {
  std::map<std::string, std::pair<int64_t, int64_t>> totals;
  for (const std::vector<Cell>& row : answer.rows) {
    std::string cell =
        fmt::format("{} {} / {} / {}", word(row[0]), word(row[1]), word(row[2]), word(row[3]));
    std::string version = word(row[4]);
    Field& field = cells_[cell][version];
    field.devices.push_back({row[5].text, row[6].number, row[7].number});
    field.reports += row[6].number;
    field.troubled += row[7].number;
    versions_[version] += row[7].number;
    totals[cell].first += row[7].number;
    totals[cell].second += row[6].number;
  }
  for (const auto& [cell, total] : totals) worst_.push_back(cell);
  std::ranges::stable_sort(worst_, std::greater(), [&](const std::string& cell) {
    return share(totals[cell].first, totals[cell].second);
  });
  if (worst_.size() > MAX_CELLS) worst_.resize(MAX_CELLS);
}

static std::string field_id(size_t row, const std::string& version, const auto& versions) {
  auto column = std::distance(versions.begin(), versions.find(version));
  return fmt::format("field-{}-{}", row, column);
}

void TroubleMap::write_row(page::HtmlWriter& html, const std::string& cell, size_t row) const {
  html.open("tr").element("th", {}, cell);
  const Fields& fields = cells_.at(cell);
  for (const auto& [version, troubled] : versions_) {
    auto found = fields.find(version);
    if (found == fields.end()) {
      html.element("td", {{"class", "number"}}, "");
      continue;
    }
    double part = share(found->second.troubled, found->second.reports);
    int level = std::min(5, static_cast<int>(part * 12));
    html.open("td", {{"class", fmt::format("number heat{}", level)}});
    html.element("a", {{"href", "#" + field_id(row, version, versions_)}},
                 fmt::format("{:.1f} %", 100 * part));
    html.close();
  }
  html.close();
}

void TroubleMap::write_devices(page::HtmlWriter& html) const {
  for (size_t row = 0; row < worst_.size(); ++row) {
    for (const auto& [version, field] : cells_.at(worst_[row])) {
      html.open("details", {{"id", field_id(row, version, versions_)}, {"open", ""}});
      html.element("summary", {},
                   fmt::format("{}, {}: {} of {} reports, {} devices", worst_[row], version,
                               field.troubled, field.reports, field.devices.size()));
      html.open("table");
      for (size_t i = 0; i < std::min(field.devices.size(), MAX_DEVICES); ++i) {
        const Device& device = field.devices[i];
        html.open("tr").element("td", {}, device.host);
        html.element("td", {{"class", "number"}},
                     fmt::format("{} of {}", device.troubled, device.reports));
        html.close();
      }
      html.close().close();
    }
  }
}

void TroubleMap::write(page::HtmlWriter& html) const {
  html.open("table", {{"class", "map"}});
  html.element("caption", {},
               "Share of reports with a trouble; network / area / cell, worst first");
  html.open("thead").open("tr").element("th", {}, "Cell");
  for (const auto& [version, troubled] : versions_) html.element("th", {}, version);
  html.close().close().open("tbody");
  for (size_t row = 0; row < worst_.size(); ++row) write_row(html, worst_[row], row);
  html.close().close();
  write_devices(html);
}

}  // namespace fleet
