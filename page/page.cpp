// Head, contents, and a part for each recording.
#include "page/page.h"

#include <fmt/format.h>

#include "page/chart.h"
#include "page/page_style.h"
#include "records/counted.h"

namespace page {

void write_head(HtmlWriter& html, const std::string& title) {
  html.reset("<!DOCTYPE html>\n");
  html.open("html", {{"lang", "en"}}).open("head");
  html.empty("meta", {{"charset", "utf-8"}});
  html.empty("meta", {{"http-equiv", "Content-Security-Policy"},
                      {"content", "default-src 'none'; style-src 'unsafe-inline'"}});
  html.empty("meta", {{"name", "viewport"}, {"content", "width=device-width, initial-scale=1"}});
  html.empty("meta", {{"name", "color-scheme"}, {"content", "light dark"}});
  html.element("title", {}, title);
  html.style(PAGE_STYLE).close();
}

static std::string part_id(size_t part, const char* what = "") {
  return fmt::format("part{}{}", part + 1, what);
}

static void write_link(HtmlWriter& html, const std::string& id, std::string_view text) {
  html.open("li").element("a", {{"href", fmt::format("#{}", id)}}, text).close();
}

static void write_contents_of(HtmlWriter& html, const Recording& recording, size_t part) {
  if (!recording.moments.empty()) write_link(html, part_id(part, "-time"), "Over time");
  if (!recording.latest_cells().cells.empty()) write_link(html, part_id(part, "-cells"), "Cells");
  if (!recording.events.empty()) write_link(html, part_id(part, "-events"), "Events");
  write_link(html, part_id(part, "-report"), "Report");
}

static void write_contents(HtmlWriter& html, const std::vector<Recording>& recordings) {
  html.open("nav", {{"aria-label", "Contents"}}).open("ul");
  for (size_t part = 0; part < recordings.size(); ++part) {
    html.open("li");
    html.element("a", {{"href", fmt::format("#{}", part_id(part))}}, recordings[part].title);
    if (recordings.size() <= 12) {
      html.open("ul");
      write_contents_of(html, recordings[part], part);
      html.close();
    }
    html.close();
  }
  html.close().close();
}

static std::string extent_of(const Recording& recording, const Statistics& statistics) {
  std::string text = "from " + recording.source;
  if (recording.moments.empty()) return text;
  int64_t first = recording.moments.front().time;
  int64_t last = recording.moments.back().time;
  text +=
      fmt::format(", {} in {}, {} to {} UTC", records::counted(recording.moments.size(), "sample"),
                  duration_text(last - first), time_text(first),
                  first / 86'400'000 == last / 86'400'000 ? clock_text(last) : time_text(last));
  if (statistics.gaps != 0) {
    text += fmt::format("; nothing is known of {} without samples, which shares leave out",
                        duration_text(statistics.gaps));
  }
  if (recording.without_time != 0) {
    text += fmt::format("; {} without a time left out",
                        records::counted(recording.without_time, "sample"));
  }
  if (recording.left_out != 0) {
    text += fmt::format("; {} left out, cut or without the line that comes before",
                        records::counted(recording.left_out, "line"));
  }
  return text;
}

static void open_block(HtmlWriter& html, const std::string& id, const char* title) {
  html.open("section", {{"class", "block"}, {"id", id}}).element("h3", {}, title);
}

static void write_part(HtmlWriter& html, const Recording& recording, size_t part) {
  Statistics statistics = statistics_of(recording);
  html.open("article", {{"id", part_id(part)}}).element("h2", {}, recording.title);
  html.element("p", {{"class", "extent"}}, extent_of(recording, statistics));
  write_summary(html, recording, statistics);
  if (!recording.moments.empty()) {
    open_block(html, part_id(part, "-time"), "Over time");
    TimeLine(html, recording, statistics).draw();
    html.close();
  }
  if (!recording.latest_cells().cells.empty()) {
    open_block(html, part_id(part, "-cells"), "Cells heard last");
    write_cells(html, recording);
    html.close();
  }
  if (!recording.events.empty()) {
    open_block(html, part_id(part, "-events"), "Events");
    write_events(html, recording);
    html.close();
  }
  open_block(html, part_id(part, "-report"), "Latest report");
  write_report(html, recording);
  html.close().close();
}

std::string page_of(const std::vector<Recording>& recordings) {
  HtmlWriter html;
  std::string title = "Modem: " + recordings[0].title;
  if (recordings.size() > 1) title += fmt::format(" and {} more", recordings.size() - 1);
  write_head(html, title);
  html.open("body").open("header").element("h1", {}, "Modem report");
  write_contents(html, recordings);
  html.close().open("main");
  for (size_t part = 0; part < recordings.size(); ++part) write_part(html, recordings[part], part);
  html.close();
  html.element("footer", {}, "Made by zopctl " ZOP_VERSION ". Times are UTC.");
  html.close().close();
  return html.written();
}

}  // namespace page
