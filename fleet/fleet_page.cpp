// Each number links to the rows that it counts.
#include "fleet/fleet_page.h"

#include <fmt/format.h>

#include <algorithm>

#include "fleet/answer_text.h"
#include "fleet/questions.h"
#include "fleet/reject_strips.h"
#include "fleet/standouts.h"
#include "fleet/trouble_map.h"
#include "page/page.h"
#include "records/counted.h"

namespace fleet {

using records::counted;

constexpr int64_t MANY = 1'000'000;  // rows to count
constexpr size_t MAX_ROWS = 500;     // of a table on the page

namespace {
struct Part {
  const char *question, *title;
};
}  // namespace

static constexpr Part TABLES[] = {{"stuck", "Stuck"},
                                  {"rejected", "Rejected"},
                                  {"silent", "Silent"},
                                  {"changed", "Changed since the day before"},
                                  {"versions", "Firmware versions"},
                                  {"reject-areas", "Where devices are rejected"},
                                  {"weak-cells", "Cells with the worst level"},
                                  {"weak-areas", "Areas with the worst level"},
                                  {"exceptions", "Exceptions"}};

// ---- tables ----

// "level_dbm" is "level, dBm".
static std::string heading(std::string name) {
  static constexpr std::pair<std::string_view, std::string_view> ENDS[] = {
      {"_time", ""}, {"_percent", ", %"}, {"_dbm", ", dBm"}, {"_db", ", dB"}, {"_hours", ", h"}};
  for (auto [end, instead] : ENDS) {
    if (!name.ends_with(end)) continue;
    name.replace(name.size() - end.size(), end.size(), instead);
    break;
  }
  std::ranges::replace(name, '_', ' ');
  return name;
}

static void write_cell(page::HtmlWriter& html, const Answer& answer, size_t row, size_t column) {
  const Cell& cell = answer.rows[row][column];
  bool is_number = cell.type != Cell::TEXT && !is_time(answer, column);
  std::string text = cell.type == Cell::NUMBER && is_time(answer, column)
                         ? short_time_text(cell.number)
                         : cell_text(answer, row, column);
  html.element(
      "td",
      {{"class", is_number ? "number" : "text"}, {"data-name", heading(answer.names[column])}},
      text);
}

static void write_table(page::HtmlWriter& html, const Answer& answer) {
  html.open("div", {{"class", "rows"}}).open("table").open("thead").open("tr");
  for (const std::string& name : answer.names) html.element("th", {}, heading(name));
  html.close().close().open("tbody");
  for (size_t row = 0; row < std::min(answer.rows.size(), MAX_ROWS); ++row) {
    html.open("tr");
    for (size_t i = 0; i < answer.names.size(); ++i) write_cell(html, answer, row, i);
    html.close();
  }
  html.close().close().close();
}

static void open_part(page::HtmlWriter& html, const Part& part) {
  html.open("section", {{"class", "block"}, {"id", part.question}}).element("h3", {}, part.title);
  html.element("p", {{"class", "extent"}}, find_question(part.question)->meaning);
}

static void write_part(page::HtmlWriter& html, const Part& part, const Answer& answer) {
  open_part(html, part);
  if (answer.rows.empty()) {
    html.element("p", {}, "None.");
  } else {
    write_table(html, answer);
  }
  if (answer.rows.size() > MAX_ROWS) {
    html.element("p", {{"class", "extent"}},
                 fmt::format("{} more: zopctl fleet ask DB {}", answer.rows.size() - MAX_ROWS,
                             part.question));
  }
  html.close();
}

// ---- the top ----

static void write_standouts(page::HtmlWriter& html, const Answers& answers) {
  html.open("ul", {{"class", "notes sentences"}});
  for (const Standout& standout : standouts(answers)) {
    html.open("li", {{"class", standout.is_trouble ? "bad" : "plain"}});
    html.element("a", {{"href", "#" + standout.question}},
                 standout.text + (standout.details.empty() ? "" : ":"));
    html.text(standout.details).close();
  }
  html.close();
}

// What the totals count: "1 device".
static std::string count_of(const Answer& totals, const std::string& noun) {
  return counted(static_cast<uint64_t>(named(totals, 0, noun + 's').number), noun);
}

static void tile(page::HtmlWriter& html, const char* title, const std::string& value,
                 const std::string& question, const std::string& more) {
  html.open("div", {{"class", "tile"}}).element("span", {{"class", "what"}}, title);
  html.open("span", {{"class", "value"}});
  html.element("a", {{"href", "#" + question}}, value).close();
  html.element("span", {{"class", "more"}}, more).close();
}

static void write_tiles(page::HtmlWriter& html, const Answers& answers) {
  std::string of_all = "of " + count_of(answers.at("totals"), "device");
  html.open("div", {{"class", "tiles small"}});
  for (auto [question, title] : {Part{"stuck", "Stuck"},
                                 {"rejected", "Rejected"},
                                 {"silent", "Silent"},
                                 {"changed", "Changed in a day"}}) {
    tile(html, title, std::to_string(devices_in(answers.at(question))), question, of_all);
  }
  const Answer& exceptions = answers.at("exceptions");
  int64_t reports = 0;
  for (size_t row = 0; row < exceptions.rows.size(); ++row) {
    reports += named(exceptions, row, "reports").number;
  }
  tile(html, "Exceptions", std::to_string(reports), "exceptions",
       "of " + count_of(answers.at("totals"), "report"));
  if (const Answer& cells = answers.at("weak-cells"); !cells.rows.empty()) {
    tile(html, "Weakest cell", fmt::format("{:g} dBm", number(named(cells, 0, "level_dbm"))),
         "weak-cells",
         fmt::format("cell {}, area {}", word(named(cells, 0, "cell_id")),
                     word(named(cells, 0, "lac"))));
  }
  html.close();
}

// ---- the page ----

static Answers answers_of(Store& store, const Ask& values) {
  Answers answers;
  for (const char* question : {"totals", "trouble", "rejects"}) {
    answers[question] = answer_of(store, *find_question(question), values);
  }
  for (const Part& part : TABLES) {
    answers[part.question] = answer_of(store, *find_question(part.question), values);
  }
  return answers;
}

static void write_main(page::HtmlWriter& html, const Answers& answers, const Ask& values) {
  const Answer& totals = answers.at("totals");
  html.element("h2", {}, count_of(totals, "device"));
  html.element("p", {{"class", "extent"}, {"id", "totals"}},
               fmt::format("{}, {} to {}", count_of(totals, "report"),
                           short_time_text(values.since), short_time_text(values.until)));
  write_standouts(html, answers);
  write_tiles(html, answers);
  html.open("section", {{"class", "block"}, {"id", "map"}});
  html.element("h3", {}, "Trouble by cell and version");
  TroubleMap(answers.at("trouble")).write(html);
  html.close();
  open_part(html, {"rejects", "Reject causes over time"});
  write_reject_strips(html, answers.at("rejects"), values);
  html.close();
  for (const Part& part : TABLES) write_part(html, part, answers.at(part.question));
}

std::string page_of(Store& store, Ask values) {
  values.rows = MANY;
  Answers answers = answers_of(store, values);
  page::HtmlWriter html;
  page::write_head(html, "Fleet report");
  html.open("body").open("header").element("h1", {}, "Fleet report").close();
  html.open("main");
  write_main(html, answers, values);
  html.close();
  html.element("footer", {}, "Made by zopctl " ZOP_VERSION ". Times are UTC.");
  html.close().close();
  return html.written();
}

}  // namespace fleet
