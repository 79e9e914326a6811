// Samples as JSON and as text.
#include "zopctl/live/sample.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include "zopctl/text/printable.h"
#include "zopctl/text/words.h"

namespace zopctl {

using records::Json;

std::string Sample::text(const char* section, const char* label) const {
  return printable_ascii(records::text_of(records::item_of(report, section, label)));
}

std::optional<int64_t> Sample::number(const char* section, const char* label) const {
  const Json& found = records::item_of(report, section, label);
  if (!found.is_number_integer()) return std::nullopt;
  return found.get<int64_t>();
}

Json as_json(const Sample& sample) {
  auto second = std::chrono::floor<std::chrono::seconds>(sample.time);
  auto ms = std::chrono::floor<std::chrono::milliseconds>(sample.time - second).count();
  Json line = {{"time", fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:03}Z", second, ms)},
               {"link", sample.link_is_open ? "open" : "lost"},
               {"bars", nullptr}};
  if (sample.bars.is_known()) line["bars"] = sample.bars.bars;
  if (!sample.bars.reason.empty()) line["reason"] = sample.bars.reason;
  line["deferred"] = sample.deferred;
  line["events"] = sample.events;
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
  add("RSSI ", sample.text("state", "RSSI"), " dBm");
  add("Ec/Io ", ecio ? fmt::to_string(*ecio) : "", " dB");
  add("", sample.text("network", "Band"), "");
  add("cell ", sample.text("network", "C1"), "");
  add("", sample.text("status", "Reg Status"), "");
  add("rx ", sample.text("wan", "Rx Bytes"), "");
  add("tx ", sample.text("wan", "Tx Bytes"), "");
  add("", sample.bars.reason, "");
  for (const std::string& event : sample.events) add("* ", event, "");
  return line;
}

}  // namespace zopctl
