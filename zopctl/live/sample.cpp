// Samples as JSON and as text.
#include "zopctl/live/sample.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include "zopctl/text/printable.h"
#include "zopctl/text/words.h"

namespace zopctl {

using records::Json;

std::string Sample::text(const char* section, const char* key) const {
  return printable_ascii(records::text_of(records::item_of(report, section, key)));
}

std::optional<int64_t> Sample::number(const char* section, const char* key) const {
  const Json& found = records::item_of(report, section, key);
  if (!found.is_number_integer()) return std::nullopt;
  return found.get<int64_t>();
}

static Json text_or_null(const std::string& text) { return text.empty() ? Json() : Json(text); }

Json as_json(const Sample& sample) {
  auto second = std::chrono::floor<std::chrono::seconds>(sample.time);
  auto ms = std::chrono::floor<std::chrono::milliseconds>(sample.time - second).count();
  Json line = {{"time", fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:03}Z", second, ms)},
               {"link", sample.link_is_open ? "open" : "lost"},
               {"bars", nullptr},
               {"reason", text_or_null(sample.bars.reason)},
               {"deferred", text_or_null(sample.deferred)},
               {"events", sample.events}};
  if (sample.bars.is_known() && sample.bars.bars >= 0) line["bars"] = sample.bars.bars;
  line["report"] = sample.report;
  return line;
}

std::string as_line(const Sample& sample) {
  auto time = std::chrono::floor<std::chrono::seconds>(sample.time);
  std::string line = fmt::format("{:%H:%M:%S}  ", time);
  line += sample.link_is_open ? bars_picture(sample.bars.bars) : "link lost";
  auto add = [&](const char* before, const std::string& value, const char* behind) {
    if (!value.empty()) line += fmt::format("  {}{}{}", before, value, behind);
  };
  auto ecio = records::active_ecio(records::cells_of(sample.report));
  add("RSSI ", sample.text("state", "rssi_dbm"), " dBm");
  add("Ec/Io ", ecio ? fmt::to_string(*ecio) : "", " dB");
  add("", sample.text("network", "band"), "");
  add("cell ", sample.text("network", "cell_id"), "");
  add("", sample.text("status", "registration"), "");
  add("rx ", sample.text("wan", "rx_bytes"), "");
  add("tx ", sample.text("wan", "tx_bytes"), "");
  add("", sample.bars.reason, "");
  for (const std::string& event : sample.events) add("* ", event, "");
  return line;
}

}  // namespace zopctl
