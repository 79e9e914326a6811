// The packets by name, and the modes they lead to.
#include "simulator/download/download_mode.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <string_view>

namespace sim {

namespace {
struct PacketRow {
  Mode mode;
  uint8_t code;
  const char* name;
};
}  // namespace
static const PacketRow PACKETS[] = {
    {Mode::BOOT_ROM, 0x05, "dmss_go"},           {Mode::BOOT_ROM, 0x06, "dmss_nop"},
    {Mode::BOOT_ROM, 0x07, "dmss_parameters"},   {Mode::BOOT_ROM, 0x0F, "dmss_write"},
    {Mode::BOOT_ROM, 0x10, "dmss_regions"},      {Mode::BOOT_ROM, 0x12, "dmss_read"},
    {Mode::PROGRAMMER, 0x01, "stream_hello"},    {Mode::PROGRAMMER, 0x07, "stream_write"},
    {Mode::PROGRAMMER, 0x0B, "stream_reset"},    {Mode::PROGRAMMER, 0x15, "stream_close"},
    {Mode::PROGRAMMER, 0x17, "stream_security"}, {Mode::PROGRAMMER, 0x19, "stream_partition"},
    {Mode::PROGRAMMER, 0x1B, "stream_open"},
};

std::string packet_name(Mode mode, View packet) {
  for (const PacketRow& row : PACKETS) {
    if (row.mode == mode && !packet.empty() && row.code == packet[0]) return row.name;
  }
  return "unknown";
}

std::vector<std::string> describe_packets() {
  std::vector<std::string> lines;
  for (const PacketRow& row : PACKETS) {
    char text[64];
    snprintf(text, sizeof text, "%s %02x -- %s",
             row.mode == Mode::BOOT_ROM ? "boot-rom" : "programmer", row.code, row.name);
    lines.emplace_back(text);
  }
  return lines;
}

bool is_packet_name(const std::string& name) {
  return std::ranges::any_of(PACKETS, [&](const PacketRow& row) { return name == row.name; });
}

Bytes DownloadMode::answer(Mode mode, View packet) {
  last_answer_ = mode == Mode::BOOT_ROM ? rom.answer(packet) : programmer.answer(packet);
  return last_answer_;
}

Bytes DownloadMode::refuse(Mode mode, int reason) {
  auto code = static_cast<uint8_t>(reason);
  last_answer_ = mode == Mode::BOOT_ROM ? BootRom::refusal(code) : Programmer::refusal(code);
  return last_answer_;
}

std::optional<Mode> DownloadMode::leads_to(Mode mode) const {
  if (mode == Mode::BOOT_ROM && rom.started) return Mode::PROGRAMMER;
  if (mode == Mode::PROGRAMMER && programmer.reset) return Mode::DIAGNOSTIC;
  return std::nullopt;
}

std::string version_in(View image) {
  constexpr std::string_view FAMILY = "Q71XEB";
  constexpr ptrdiff_t LENGTH = 12;  // of "Q71XEB22.001"
  auto at = std::search(image.begin(), image.end(), FAMILY.begin(), FAMILY.end());
  if (image.end() - at < LENGTH) return "";
  std::string version(at, at + LENGTH);
  bool printable = std::ranges::all_of(version, [](unsigned char c) { return isprint(c) != 0; });
  return printable ? version : "";
}

}  // namespace sim
