// Trace lines: time, direction, name, bytes. PINs and unblocking keys are never shown.
#include "simulator/trace.h"

#include <fmt/format.h>

#include <algorithm>

namespace sim {

constexpr uint8_t SIM_COMMAND = 0xD2;
constexpr size_t SIM_CODES = 11;  // where the codes of a SIM request begin
constexpr uint8_t NV_READ = 0x26;
constexpr uint8_t NV_WRITE = 0x27;
constexpr int NV_PIN = 16685;

static bool is_error_answer(uint8_t code) {
  constexpr uint8_t CODES[] = {BAD_COMMAND, BAD_PARAMETER, BAD_LENGTH, BAD_MODE, LOCKED, SECURITY};
  return std::ranges::find(CODES, code) != std::end(CODES);
}

// The range of a payload that holds secrets. An error answer has the request after its code.
static std::pair<size_t, size_t> secret_part(View payload) {
  if (!payload.empty() && is_error_answer(payload[0])) {
    auto [first, last] = secret_part(payload.subspan(1));
    return {first + 1, last + 1};
  }
  if (payload.size() > SIM_CODES && payload[0] == SIM_COMMAND) return {SIM_CODES, payload.size()};
  bool nv = payload.size() > 3 && (payload[0] == NV_READ || payload[0] == NV_WRITE);
  if (!nv || (payload[1] | payload[2] << 8) != NV_PIN) return {0, 0};
  return {3, payload.size()};
}

std::string trace_line(Time now, char direction, const std::string& name, View payload) {
  auto [first, last] = secret_part(payload);
  std::string line =
      fmt::format("{:11.6f} {} {:18}", static_cast<double>(now.count()) / 1e6, direction, name);
  for (size_t i = 0; i < payload.size(); ++i) {
    line += i >= first && i < last ? " **" : fmt::format(" {:02x}", payload[i]);
  }
  return line;
}

std::string trace_note(Time now, const std::string& note) {
  return fmt::format("{:11.6f} ! {}", static_cast<double>(now.count()) / 1e6, note);
}

std::string name_of(View request) {
  const Request* row = find_request(request);
  return row == nullptr ? "unknown" : row->name;
}

}  // namespace sim
