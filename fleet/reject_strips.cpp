// A bar is as high as the share of its strip's largest number of devices in an hour.
#include "fleet/reject_strips.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>

#include "fleet/answer_text.h"
#include "records/counted.h"

namespace fleet {

constexpr int64_t HOUR_S = 3600, MAX_BARS = 168;
constexpr size_t MAX_STRIPS = 12;
constexpr double HEIGHT = 40;

namespace {
struct Strip {
  std::string what, cause;
  std::map<int64_t, int64_t> devices;  // at most in an hour, by bar
  int64_t most = 0, reports = 0;
};

struct Span {
  explicit Span(const Ask& values) : first(values.since / HOUR_S), last(values.until / HOUR_S) {
    hours_a_bar = (last - first) / MAX_BARS + 1;
    bars = (last - first) / hours_a_bar + 1;
  }
  int64_t first, last, hours_a_bar, bars;
};
}  // namespace

static std::vector<Strip> strips_of(const Answer& rejects, const Span& span) {
  std::map<std::pair<std::string, std::string>, Strip> found;
  for (size_t row = 0; row < rejects.rows.size(); ++row) {
    std::string what = named(rejects, row, "what").text, cause = named(rejects, row, "cause").text;
    Strip& strip = found[{what, cause}];
    strip.what = what;
    strip.cause = cause;
    int64_t hour = named(rejects, row, "hour_time").number / HOUR_S;
    int64_t& devices = strip.devices[(hour - span.first) / span.hours_a_bar];
    devices = std::max(devices, named(rejects, row, "devices").number);
    strip.most = std::max(strip.most, devices);
    strip.reports += named(rejects, row, "reports").number;
  }
  std::vector<Strip> strips;
  strips.reserve(found.size());
  for (auto& [name, strip] : found) strips.push_back(std::move(strip));
  std::ranges::stable_sort(strips, std::greater(), &Strip::reports);
  return strips;
}

static void write_bar(page::HtmlWriter& html, const Strip& strip, int64_t bar, int64_t devices,
                      const Span& span) {
  double height = HEIGHT * static_cast<double>(devices) / static_cast<double>(strip.most);
  int64_t time = (span.first + bar * span.hours_a_bar) * HOUR_S;
  html.open("rect", {{"x", std::to_string(bar)},
                     {"y", fmt::format("{:.1f}", HEIGHT - height)},
                     {"width", "1"},
                     {"height", fmt::format("{:.1f}", height)}});
  std::string when = short_time_text(time);
  html.element("title", {},
               when + ": " + records::counted(static_cast<uint64_t>(devices), "device"));
  html.close();
}

static void write_strip(page::HtmlWriter& html, const Strip& strip, const Span& span) {
  html.open("div", {{"class", "row wide"}}).open("div", {{"class", "label"}});
  html.element("span", {{"class", "name"}}, strip.cause);
  html.element("span", {{"class", "more"}},
               fmt::format("{}; at most {} an hour, {}", strip.what,
                           records::counted(static_cast<uint64_t>(strip.most), "device"),
                           records::counted(static_cast<uint64_t>(strip.reports), "report")));
  html.close().open("div", {{"class", "plot"}});
  html.open("svg", {{"class", "bars"},
                    {"viewBox", fmt::format("0 0 {} {:g}", span.bars, HEIGHT)},
                    {"preserveAspectRatio", "none"},
                    {"role", "img"},
                    {"aria-label", strip.cause}});
  for (auto [bar, devices] : strip.devices) write_bar(html, strip, bar, devices, span);
  html.close().close().close();
}

void write_reject_strips(page::HtmlWriter& html, const Answer& rejects, const Ask& values) {
  if (rejects.rows.empty()) {
    html.element("p", {}, "None.");
    return;
  }
  Span span(values);
  std::vector<Strip> strips = strips_of(rejects, span);
  size_t shown = std::min(strips.size(), MAX_STRIPS);
  for (size_t i = 0; i < shown; ++i) write_strip(html, strips[i], span);
  html.open("div", {{"class", "row wide"}}).element("div", {}, "");
  html.open("div", {{"class", "plot ends"}});
  html.element("span", {}, short_time_text(values.since));
  html.element("span", {}, short_time_text(values.until)).close().close();
  if (shown < strips.size()) {
    html.element("p", {{"class", "extent"}},
                 fmt::format("{} more causes: zopctl fleet ask DB rejects", strips.size() - shown));
  }
}

}  // namespace fleet
