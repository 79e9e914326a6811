// A function for each block, from the top: it takes its first line and returns the next free one.
#include "zopctl/live/live_layout.h"

#include <curses.h>
#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>

#include "zopctl/host/host_calls.h"
#include "zopctl/text/bytes_text.h"
#include "zopctl/text/printable.h"
#include "zopctl/text/words.h"

namespace zopctl {

using records::Cell;

constexpr int MIN_WIDTH = 30, MIN_HEIGHT = 8;
constexpr int SCALE_WIDTH = 5;             // "-113 " before a graph
constexpr Scale RSSI_SCALE = {-113, -51};  // dBm, the range that a modem can report
constexpr Scale ECIO_SCALE = {-24, 0};     // dB
constexpr int CELL_LABEL_WIDTH = 32;

namespace {
struct Thresholds {
  int good, fair;
};
}  // namespace
constexpr Thresholds RSSI_QUALITY = {-85, -100};
constexpr Thresholds ECIO_QUALITY = {-8, -14};

static attr_t colour_of(int level, Thresholds thresholds) {
  ColourPair pair = level >= thresholds.good ? GOOD : level >= thresholds.fair ? FAIR : BAD;
  return COLOR_PAIR(pair);
}

static void put(int y, int x, const std::string& text, attr_t attributes = A_NORMAL) {
  if (y < 0 || y >= LINES || x >= COLS) return;
  attrset(attributes);
  mvaddnstr(y, x, text.c_str(), COLS - x);
  attrset(A_NORMAL);
}

static void put_bar(int y, const std::string& text) {
  attrset(A_REVERSE);
  mvhline(y, 0, ' ', COLS);
  put(y, 0, text, A_REVERSE);
}

// ---- words and values ----

namespace {
struct Field {
  const char* label;
  std::string value;  // left out when empty
  attr_t attributes = A_BOLD;
};
}  // namespace

// Side by side, and on the next line when one is full.
static int fields(int y, const std::vector<Field>& row) {
  int x = 1;
  for (const Field& field : row) {
    if (field.value.empty()) continue;
    std::string label = field.label;
    if (!label.empty()) label += ' ';
    int width = static_cast<int>(label.size() + field.value.size());
    if (x > 1 && x + width > COLS) ++y, x = 1;
    put(y, x, label, A_DIM);
    put(y, x + static_cast<int>(label.size()), field.value, field.attributes);
    x += width + 2;
  }
  return y + 1;
}

static std::string with_unit(std::optional<int> level, const char* unit) {
  return level ? fmt::format("{} {}", *level, unit) : "";
}

static std::optional<int> newest(const Levels& levels) {
  return levels.empty() ? std::nullopt : levels.back();
}

static attr_t quality(std::optional<int> level, Thresholds thresholds) {
  return A_BOLD | (level ? colour_of(*level, thresholds) : A_NORMAL);
}

static int signal_fields(int y, const LiveView& view) {
  const Bars& bars = view.sample.bars;
  attr_t colour = COLOR_PAIR(bars.bars >= 3 ? GOOD : bars.bars > 0 ? FAIR : BAD);
  auto rssi = newest(view.rssi), ecio = newest(view.ecio);
  return fields(y, {{"Bars", bars_picture(bars.bars), A_BOLD | colour},
                    {"", printable_ascii(bars.reason), COLOR_PAIR(BAD)},
                    {"RSSI", with_unit(rssi, "dBm"), quality(rssi, RSSI_QUALITY)},
                    {"Ec/Io", with_unit(ecio, "dB"), quality(ecio, ECIO_QUALITY)},
                    {"RSCP", view.sample.text("wcdma", "rscp_dbm")},
                    {"Tx", view.sample.text("state", "tx_power_dbm")}});
}

static int network_fields(int y, const Sample& sample) {
  y = fields(y, {{"Registration", sample.text("status", "registration")},
                 {"Service", sample.text("status", "service")},
                 {"GMM", sample.text("status", "gmm_attach")},
                 {"Roaming", sample.text("state", "roaming")}});
  y = fields(y, {{"Mode", sample.text("state", "system_mode")},
                 {"Data", sample.text("state", "data_service")},
                 {"Band", sample.text("network", "band")},
                 {"Channel", sample.text("network", "channel")}});
  return fields(y, {{"Network", sample.text("network", "name")},
                    {"", printable_ascii(records::plmn_of(sample.report))},
                    {"Cell", sample.text("network", "cell_id")},
                    {"LAC", sample.text("network", "lac")},
                    {"RAC", sample.text("network", "rac")}});
}

// ---- graphs ----

namespace {
struct Plot {
  const char* title;
  const Levels& levels;
  Scale scale;
};
}  // namespace

static void draw_plot(const Plot& plot, int y, int x, int width, int height, bool utf8) {
  put(y, x, plot.title, A_DIM);
  auto lines = graph(plot.levels, plot.scale, width - SCALE_WIDTH, height, utf8);
  attrset(COLOR_PAIR(PLOT));
  for (size_t i = 0; i < lines.size(); ++i) {  // a column may be several bytes
    mvaddstr(y + 1 + static_cast<int>(i), x + SCALE_WIDTH, lines[i].c_str());
  }
  attrset(A_NORMAL);
  put(y + 1, x, fmt::format("{:4}", plot.scale.top), A_DIM);
  put(y + height, x, fmt::format("{:4}", plot.scale.bottom), A_DIM);
}

static int graphs(int y, const LiveView& view, bool utf8) {
  int room = LINES - 1 - y;
  int height = std::clamp(room / 3, 2, 12);
  if (room < height + 1) return y;
  bool both = COLS >= 2 * MIN_WIDTH;
  int width = both ? (COLS - 4) / 2 : COLS - 2;
  draw_plot({"RSSI, dBm", view.rssi, RSSI_SCALE}, y, 1, width, height, utf8);
  if (both) {
    draw_plot({"Ec/Io of the active cell, dB", view.ecio, ECIO_SCALE}, y, width + 3, width, height,
              utf8);
  }
  return y + height + 1;
}

// ---- cells ----

static std::string cell_label(const Cell& cell) {
  switch (cell.set) {
    case Cell::ACTIVE:
      return fmt::format("active     code {:4} {:5} dB", cell.code, cell.level);
    case Cell::MONITORED:
      return fmt::format("monitored  code {:4} {:5} dB", cell.code, cell.level);
    case Cell::DETECTED:
      return fmt::format("detected   code {:4} {:5} dB", cell.code, cell.level);
    case Cell::GSM_NEIGHBOUR:
      break;
  }
  return fmt::format("neighbour ARFCN {:4} {:4} dBm", cell.code, cell.level);
}

static void draw_cell(int y, const Cell& cell) {
  bool gsm = cell.is_gsm();
  Scale scale = gsm ? RSSI_SCALE : ECIO_SCALE;
  put(y, 1, cell_label(cell), cell.set == Cell::ACTIVE ? A_BOLD : A_NORMAL);
  int room = std::min(COLS - CELL_LABEL_WIDTH - 1, 48);
  if (room <= 0) return;
  int level = std::clamp(cell.level, scale.bottom, scale.top) - scale.bottom;
  int length = level * room / (scale.top - scale.bottom);
  put(y, CELL_LABEL_WIDTH, std::string(static_cast<size_t>(length), '='),
      colour_of(cell.level, gsm ? RSSI_QUALITY : ECIO_QUALITY));
}

static int cells(int y, const Sample& sample) {
  auto found = records::cells_of(sample.report);
  int room = std::clamp((LINES - 1 - y - 4) / 2, 1, 12);
  int count = std::min(static_cast<int>(found.size()), room);
  for (int i = 0; i < count; ++i) draw_cell(y + i, found[static_cast<size_t>(i)]);
  int left_out = static_cast<int>(found.size()) - count;
  if (count > 0 && left_out > 0 && COLS > CELL_LABEL_WIDTH) {
    std::string more = fmt::format(" +{} more", left_out);
    put(y + count - 1, COLS - static_cast<int>(more.size()), more, A_DIM);
  }
  return y + count;
}

// ---- the rest ----

static std::string traffic(const Sample& sample, const char* key) {
  auto bytes = sample.number("wan", key);
  return bytes ? size_text(static_cast<uint64_t>(*bytes)) : "";
}

// "1/2", received and sent.
static std::string errors(const Sample& sample) {
  std::string rx = sample.text("wan", "rx_errors"), tx = sample.text("wan", "tx_errors");
  return rx.empty() && tx.empty() ? "" : fmt::format("{}/{}", rx, tx);
}

// "2:00:13"
static std::string age(const Sample& sample, const char* key) {
  auto seconds = sample.number("wan", key);
  if (!seconds || *seconds < 0) return "";
  return fmt::format("{}:{:02}:{:02}", *seconds / 3600, *seconds / 60 % 60, *seconds % 60);
}

static int module_fields(int y, const Sample& sample) {
  std::string local = sample.text("wan", "ip_address");
  std::string peer = sample.text("wan", "dest_ip_address");
  y = fields(y, {{"PPP", local},
                 {"to", peer, A_NORMAL},
                 {"rx", traffic(sample, "rx_bytes")},
                 {"tx", traffic(sample, "tx_bytes")},
                 {"errors", errors(sample), A_NORMAL},
                 {"up", age(sample, "pppd_age_s"), A_NORMAL}});
  return fields(y, {{"PDP", sample.text("status", "pdp_state")},
                    {"Call", sample.text("status", "call")},
                    {"Deferred action", printable_ascii(sample.deferred)}});
}

static void events(int y, const LiveView& view) {
  int room = LINES - 1 - y - 1;
  if (room < 1) return;
  put(y, 1, "Events", A_DIM);
  if (view.events.empty()) put(y, 9, "none so far", A_DIM);
  int count = std::min(room, static_cast<int>(view.events.size()));
  for (int i = 0; i < count; ++i) {  // the newest first
    put(y + 1 + i, 1, view.events[view.events.size() - 1 - static_cast<size_t>(i)]);
  }
}

static void title(const LiveView& view) {
  std::string modem = is_simulated() ? "a simulated modem" : mapped_device();
  std::string text = fmt::format(" zopctl monitor  {}", modem);
  if (view.has_sample) {
    auto time = std::chrono::floor<std::chrono::seconds>(view.sample.time);
    text = fmt::format(" {:%H:%M:%S} UTC {}", time, text);
  }
  if (view.is_paused) text += "  PAUSED";
  if (view.has_sample && !view.sample.link_is_open) text += "  LINK LOST, waiting for the modem";
  put_bar(0, text);
}

static void footer(const LiveView& view) {
  std::string text = fmt::format(" q quit  p {}  + - every {} s",
                                 view.is_paused ? "go on" : "pause", view.interval_s);
  if (!view.recording.empty()) text += "  recording " + printable_ascii(view.recording);
  put_bar(LINES - 1, text);
}

static void body(const LiveView& view, bool utf8) {
  if (!view.has_sample) return put(2, 1, "opening the modem ...");
  int y = signal_fields(1, view);
  if (view.sample.report.is_null() && view.sample.link_is_open) {
    put(y++, 1, "waiting for the modem's field-test data ...", A_DIM);
  }
  if (!view.sample.report.is_null()) y = network_fields(y, view.sample);
  y = graphs(y, view, utf8);
  y = cells(y, view.sample);
  if (!view.sample.report.is_null()) y = module_fields(y, view.sample);
  events(y, view);
}

void draw_layout(const LiveView& view, bool utf8) {
  erase();
  if (LINES < MIN_HEIGHT || COLS < MIN_WIDTH) {
    put(0, 0, with_unit(newest(view.rssi), "dBm"));
    put(1, 0, fmt::format("{}x{} at least", MIN_WIDTH, MIN_HEIGHT));
    return;
  }
  body(view, utf8);
  title(view);
  footer(view);
}

}  // namespace zopctl
