// A share is worth a word when it is more than that of the rest of the fleet.
#include "fleet/standouts.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

#include "fleet/answer_text.h"
#include "records/counted.h"

namespace fleet {

using records::counted;

constexpr double MUCH_MORE = 1.5, TWICE = 2;  // times the rest
constexpr double WEAK_DBM = -105;
constexpr double LEAST_PERCENT = 1;
constexpr int64_t ENOUGH_REPORTS = 20;
constexpr size_t ENOUGH_DEVICES = 5;
constexpr size_t FEW = 3;  // causes that are told

size_t devices_in(const Answer& answer) {
  std::set<std::string> hosts;
  for (size_t row = 0; row < answer.rows.size(); ++row) {
    hosts.insert(named(answer, row, "host").text);
  }
  return hosts.size();
}

// ---- what devices share ----

namespace {
struct Shared {
  std::string value;
  size_t devices = 0;
};
}  // namespace

static std::vector<Shared> counts_by(const Answer& answer, std::string_view column) {
  std::map<std::string, size_t> counts;
  for (size_t row = 0; row < answer.rows.size(); ++row) {
    const Cell& cell = named(answer, row, column);
    if (cell.type != Cell::NOTHING) ++counts[word(cell)];
  }
  std::vector<Shared> sorted;
  sorted.reserve(counts.size());
  for (const auto& [value, devices] : counts) sorted.push_back({value, devices});
  std::ranges::stable_sort(sorted, std::greater(), &Shared::devices);
  return sorted;
}

// The share of the fleet's devices that an answer tells of a version or an area.
static double usual_share(const Answers& answers, const char* question, const char* column,
                          const std::string& value) {
  const Answer& answer = answers.at(question);
  double same = 0;
  for (size_t row = 0; row < answer.rows.size(); ++row) {
    if (word(named(answer, row, column)) == value) same += number(named(answer, row, "devices"));
  }
  return same / std::max(1.0, number(named(answers.at("totals"), 0, "devices")));
}

// ", 31 of them on version X"
static std::string in_common(const Answers& answers, const Answer& answer) {
  static constexpr struct {
    const char *column, *question, *asked, *words;
  } KINDS[] = {{"version", "versions", "firmware", "on version"},
               {"area", "weak-areas", "lac", "in area"}};
  std::string text;
  for (const auto& kind : KINDS) {
    std::vector<Shared> shared = counts_by(answer, kind.column);
    if (shared.empty() || shared[0].devices < ENOUGH_DEVICES) continue;
    double share = static_cast<double>(shared[0].devices) / static_cast<double>(answer.rows.size());
    double usual = usual_share(answers, kind.question, kind.asked, shared[0].value);
    if (share < 0.5 || share < MUCH_MORE * usual) continue;
    text += fmt::format(", {} of them {} {}", shared[0].devices, kind.words, shared[0].value);
  }
  return text;
}

// "congestion (20), PLMN not allowed (3)"
static std::string kinds_of(const Answer& answer, std::string_view column) {
  std::vector<Shared> kinds = counts_by(answer, column);
  std::string text;
  for (size_t i = 0; i < std::min(kinds.size(), FEW); ++i) {
    text += fmt::format("{}{} ({})", i == 0 ? "" : ", ", kinds[i].value, kinds[i].devices);
  }
  if (kinds.size() > FEW) text += fmt::format(", {} more", kinds.size() - FEW);
  return text;
}

// ---- sentences ----

static void add_devices(std::vector<Standout>& all, const Answers& answers, const char* question,
                        const char* what, const char* kinds) {
  const Answer& answer = answers.at(question);
  size_t devices = answer.rows.size();
  if (devices == 0) return;
  std::string text = fmt::format(
      "{} of {} {} {}", devices,
      counted(static_cast<uint64_t>(number(named(answers.at("totals"), 0, "devices"))), "device"),
      devices == 1 ? "is" : "are", what);
  text += in_common(answers, answer);
  std::string details = *kinds != '\0' ? kinds_of(answer, kinds) : std::string();
  all.push_back({text, details, question, true});
}

// A column of percents in a version's row, and in those of all others together.
static std::string much_more(const Answer& versions, size_t row, const char* column,
                             const char* what) {
  double others = 0, reports = 0;
  for (size_t other = 0; other < versions.rows.size(); ++other) {
    if (other == row) continue;
    double count = number(named(versions, other, "reports"));
    others += count * number(named(versions, other, column));
    reports += count;
  }
  if (reports == 0) return "";
  others /= reports;
  double share = number(named(versions, row, column));
  if (share < LEAST_PERCENT || share < TWICE * others) return "";
  return fmt::format("{} in {:.1f} % of its reports, {:.1f} % in others", what, share, others);
}

static void add_versions(std::vector<Standout>& all, const Answer& versions) {
  for (size_t row = 0; row < versions.rows.size(); ++row) {
    if (named(versions, row, "reports").number < ENOUGH_REPORTS) continue;
    std::string found;
    for (auto [column, what] : {std::pair{"stuck_percent", "mark of a stuck modem"},
                                {"rejected_percent", "reject"},
                                {"refused_percent", "refused data connection"},
                                {"exception_percent", "exception"}}) {
      std::string more = much_more(versions, row, column, what);
      if (!more.empty()) found += (found.empty() ? "" : "; ") + more;
    }
    if (found.empty()) continue;
    all.push_back({"Version " + word(named(versions, row, "firmware")) + " stands out", found,
                   "versions", true});
  }
}

static std::string area_of(const Answer& answer, size_t row) {
  return fmt::format("{} {} / {}", word(named(answer, row, "mcc")), word(named(answer, row, "mnc")),
                     word(named(answer, row, "lac")));
}

static double devices_of_area(const Answer& areas, const std::string& area) {
  for (size_t row = 0; row < areas.rows.size(); ++row) {
    if (area_of(areas, row) == area) return number(named(areas, row, "devices"));
  }
  return 0;
}

// Causes that many devices of an area had.
static void add_areas(std::vector<Standout>& all, const Answers& answers) {
  const Answer& answer = answers.at("reject-areas");
  size_t told = 0;
  for (size_t row = 0; row < answer.rows.size() && told < FEW; ++row) {
    std::string area = area_of(answer, row);
    double devices = number(named(answer, row, "devices"));
    constexpr double SHARE = 0.2;
    if (devices <
        std::max<double>(ENOUGH_DEVICES, SHARE * devices_of_area(answers.at("weak-areas"), area)))
      continue;
    ++told;
    all.push_back({fmt::format("Area {} rejected {}", area,
                               counted(static_cast<uint64_t>(devices), "device")),
                   fmt::format("{}, {} to {}", named(answer, row, "cause").text,
                               short_time_text(named(answer, row, "first_time").number),
                               short_time_text(named(answer, row, "last_time").number)),
                   "reject-areas", true});
  }
}

static void add_weak_cells(std::vector<Standout>& all, const Answer& cells) {
  size_t weak = 0;
  while (weak < cells.rows.size() && number(named(cells, weak, "level_dbm")) < WEAK_DBM) ++weak;
  if (weak == 0) return;
  all.push_back(
      {fmt::format("{} below {:g} dBm on average", counted(weak, "cell is", "cells are"), WEAK_DBM),
       fmt::format("the worst {} / {} with {:g} dBm", area_of(cells, 0),
                   word(named(cells, 0, "cell_id")), number(named(cells, 0, "level_dbm"))),
       "weak-cells", true});
}

static void add_changes(std::vector<Standout>& all, const Answer& changed) {
  if (changed.rows.empty()) return;
  std::string details;
  for (const Shared& kind : counts_by(changed, "what")) {
    std::string what = kind.value == "device" ? "new device" : kind.value;
    details += fmt::format("{}{} ({})", details.empty() ? "" : ", ", what, kind.devices);
  }
  all.push_back(
      {counted(devices_in(changed), "device has", "devices have") + " changed since the day before",
       details, "changed", false});
}

std::vector<Standout> standouts(const Answers& answers) {
  std::vector<Standout> all;
  add_devices(all, answers, "stuck", "stuck", "mark");
  add_devices(all, answers, "rejected", "rejected by the network", "cause");
  add_devices(all, answers, "silent", "silent", "");
  add_versions(all, answers.at("versions"));
  add_areas(all, answers);
  add_weak_cells(all, answers.at("weak-cells"));
  if (all.empty()) all.push_back({"No device, version or cell stands out", "", "totals", false});
  add_changes(all, answers.at("changed"));
  return all;
}

}  // namespace fleet
