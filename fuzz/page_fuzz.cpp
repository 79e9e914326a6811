// Draws parts of the page of an arbitrary recording: its texts never become markup. The first byte
// selects the part; then each piece of the recording is a length and its bytes.
#include "fuzz/fuzz.h"
#include "page/chart.h"
#include "page/page.h"

using namespace records;

enum { MOST_PIECES = 5 };
constexpr int64_t START = 1'280'000'000'000;  // ms

// Every element that is opened is closed, in order, and none can run anything.
static void check_markup(std::string_view page) {
  std::vector<std::string_view> open;
  for (size_t at = page.find('<'); at != page.npos; at = page.find('<', at + 1)) {
    size_t end = page.find('>', at);
    require(end != page.npos);
    bool closes = page[at + 1] == '/';
    size_t start = at + (closes ? 2 : 1);
    std::string_view name = page.substr(start, page.find_first_of(" >", start) - start);
    if (page[end - 1] == '/') continue;
    require(name != "script" && name != "iframe" && name != "object");
    if (closes) require(!open.empty() && open.back() == name);
    closes ? open.pop_back() : open.push_back(name);
  }
  require(open.empty());
}

// Each piece is a moment, and has little, because a drawing of everything takes long. Its bytes are
// a number that selects, the time since the last moment, a value, and a text.
static void add(Recording& recording, std::span<const uint8_t> bytes) {
  if (bytes.size() < 3) return;
  uint8_t what = bytes[0] % 5, which = bytes[0] / 5, level = bytes[2] % 33;
  size_t series = which % SERIES_COUNT, track = which % TRACK_COUNT;
  auto set = static_cast<Cell::Set>(which % 4);
  std::string text = text_of(bytes.subspan(3));
  Moment moment;
  moment.time = recording.moments.empty() ? START : recording.moments.back().time;
  moment.time += int64_t{bytes[1]} * bytes[1] * bytes[1] * bytes[1];
  if (what == 0) moment.values[series] = static_cast<float>(series == BARS ? level % 6 : -level);
  if (what == 1) moment.states[track] = recording.words[track].number(text);
  if (what == 2) recording.events.push_back({moment.time, text});
  if (what == 3) recording.latest[which % 2 == 0 ? "errors" : text][text] = text;
  if (what == 4) {
    moment.cells.push_back({static_cast<uint32_t>(recording.cells.size()), set, -1.0F * level});
    recording.cells.push_back({set == Cell::GSM_NEIGHBOUR, which, level});
  }
  recording.moments.push_back(moment);
}

static void write_summary(page::HtmlWriter& html, const Recording& recording) {
  page::write_summary(html, recording, page::statistics_of(recording));
}
static void write_time_line(page::HtmlWriter& html, const Recording& recording) {
  if (recording.moments.empty()) return;
  page::Statistics statistics = page::statistics_of(recording);
  page::TimeLine(html, recording, statistics).draw();
}
static void (*const PARTS[])(page::HtmlWriter&, const Recording&) = {
    write_summary, page::write_cells, page::write_events, page::write_report, write_time_line};

void fuzz(std::span<const uint8_t> input) {
  if (input.empty()) return;
  uint8_t part = take(input, 1)[0];
  Recording recording;
  for (int piece = 0; piece < MOST_PIECES && !input.empty(); ++piece) {
    size_t size = take(input, 1)[0];
    add(recording, take(input, size));
  }
  recording.finish();
  page::HtmlWriter html;
  PARTS[part % std::size(PARTS)](html, recording);
  check_markup(html.written());
}
