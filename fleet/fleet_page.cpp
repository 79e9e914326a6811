// Each number links to the rows that it counts.
#include "fleet/fleet_page.h"

#include <fmt/format.h>

#include "fleet/answer_text.h"
#include "fleet/questions.h"
#include "fleet/trouble_map.h"
#include "page/page.h"

namespace fleet {

constexpr int64_t MANY = 1'000'000;  // rows to count
constexpr size_t MAX_ROWS = 200;     // of a table on the page

namespace {
struct Part {
  const char* question;
  const char* title;
  Answer answer;
};
}  // namespace

static void tile(page::HtmlWriter& html, const char* title, const std::string& value,
                 const std::string& id, const std::string& more) {
  html.open("div", {{"class", "tile"}}).element("span", {{"class", "what"}}, title);
  html.open("span", {{"class", "value"}});
  html.element("a", {{"href", "#" + id}}, value).close();
  html.element("span", {{"class", "more"}}, more).close();
}

static void write_table(page::HtmlWriter& html, const Answer& answer) {
  html.open("table").open("thead").open("tr");
  for (const std::string& name : answer.names) html.element("th", {}, name);
  html.close().close().open("tbody");
  size_t rows = std::min(answer.rows.size(), MAX_ROWS);
  for (size_t row = 0; row < rows; ++row) {
    html.open("tr");
    for (size_t column = 0; column < answer.names.size(); ++column) {
      bool number = answer.rows[row][column].type != Cell::TEXT;
      html.element("td", {{"class", number ? "number" : "text"}}, cell_text(answer, row, column));
    }
    html.close();
  }
  html.close().close();
}

static void write_part(page::HtmlWriter& html, const Part& part) {
  html.open("section", {{"class", "block"}, {"id", part.question}}).element("h3", {}, part.title);
  html.element("p", {{"class", "extent"}}, find_question(part.question)->meaning);
  if (part.answer.rows.empty()) {
    html.element("p", {}, "None.");
  } else {
    write_table(html, part.answer);
  }
  if (part.answer.rows.size() > MAX_ROWS) {
    html.element("p", {{"class", "extent"}},
                 fmt::format("{} more: zopctl fleet ask DB {}", part.answer.rows.size() - MAX_ROWS,
                             part.question));
  }
  html.close();
}

static std::vector<Part> parts_of(Store& store, const Ask& values) {
  std::vector<Part> parts = {{"stuck", "Stuck", {}},
                             {"rejected", "Rejected", {}},
                             {"silent", "Silent", {}},
                             {"changed", "Changed since the day before", {}},
                             {"versions", "Firmware versions", {}},
                             {"weak-cells", "Cells with the worst level", {}},
                             {"weak-areas", "Areas with the worst level", {}},
                             {"rejects", "Reject causes over time", {}},
                             {"exceptions", "Exceptions", {}}};
  for (Part& part : parts) part.answer = answer_of(store, *find_question(part.question), values);
  return parts;
}

std::string page_of(Store& store, Ask values) {
  values.rows = MANY;
  Answer totals = answer_of(store, *find_question("totals"), values);
  TroubleMap map(answer_of(store, *find_question("trouble"), values));
  std::vector<Part> parts = parts_of(store, values);
  page::HtmlWriter html;
  page::write_head(html, "Fleet report");
  html.open("body").open("header").element("h1", {}, "Fleet report").close();
  html.open("main");
  html.element("h2", {}, cell_text(totals, 0, 0) + " devices");
  html.element("p", {{"class", "extent"}},
               fmt::format("{} reports, {} to {}", cell_text(totals, 0, 1), time_text(values.since),
                           time_text(values.until)));
  html.open("div", {{"class", "tiles"}});
  for (const Part& part : parts) {
    tile(html, part.title, std::to_string(part.answer.rows.size()), part.question, "");
  }
  html.close();
  html.open("section", {{"class", "block"}, {"id", "map"}});
  html.element("h3", {}, "Trouble by cell and version");
  map.write(html);
  html.close();
  for (const Part& part : parts) write_part(html, part);
  html.close();
  html.element("footer", {}, "Made by zopctl. Times are UTC.");
  html.close().close();
  return html.written();
}

}  // namespace fleet
