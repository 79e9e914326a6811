// An unknown code is shown as a number.
#include "zopctl/text/words.h"

#include <fmt/format.h>

#include <algorithm>

#include "include/vurn.h"
#include "include/zop.h"
#include "records/state_words.h"

namespace zopctl {

// The rows are of any kind with a code and a word.
static std::string word(const auto& rows, int64_t code) {
  for (const auto& row : rows) {
    if (row.code == code) return std::string(row.word);
  }
  return fmt::format("unknown ({})", code);
}

// ---- results ----

namespace {
struct Result {
  int code;
  const char* word;
};
}  // namespace

std::string vurn_result(int result) {
  static const Result RESULTS[] = {
      {VURN_OK, "good"},
      {VURN_ERR_NOT_OPEN, "module not open"},
      {VURN_ERR_FAILED, "failed"},
      {VURN_ERR_REOPENED, "was already open, now closed"},
      {VURN_ERR_NULL_ARGUMENT, "null argument"},
      {VURN_ERR_TIME_NOT_PROVIDED, "not sent by the network"},
  };
  return fmt::format("result {} ({})", result, word(RESULTS, result));
}

std::string zop_result(unsigned result) {
  static const Result RESULTS[] = {
      {ZOP_SUCCESS, "good"},
      {ZOP_ERR_NOT_OPEN, "link not open"},
      {ZOP_ERR_NO_RESPONSE, "no response"},
      {ZOP_ERR_BUFFER_TOO_SMALL, "buffer too small"},
      {ZOP_ERR_NO_MEMORY, "out of memory"},
      {ZOP_ERR_BAD_RESPONSE, "bad response or time-out"},
      {ZOP_ERR_PIN_TOO_LONG, "PIN too long"},
      {ZOP_ERR_INVALID_ARGUMENT, "invalid argument or not supported"},
      {ZOP_ERR_MODEM_FAILURE, "the modem reported a failure"},
      {ZOP_ERR_HOME_NETWORK_REFUSED, "home network refused"},
  };
  return fmt::format("result {} ({})", result, word(RESULTS, result));
}

// ---- states ----

using namespace records;

std::string sim_status(uint32_t status) { return word(SIM_STATES, status); }
std::string lock_status(uint32_t lock) { return word(PIN_STATES, lock); }
std::string registration(uint32_t registration) { return word(REGISTRATIONS, registration); }
std::string service(int32_t service) { return word(SERVICES, service); }
std::string data_service(int32_t mode) { return word(DATA_SERVICES, mode); }
std::string band(int32_t band) { return word(BANDS, band); }
std::string ring_origin(int32_t origin) { return word(RING_ORIGINS, origin); }

// "None" is -1.
std::string system_mode(uint32_t mode) { return word(SYSTEM_MODES, static_cast<int32_t>(mode)); }

std::string reject_cause(int32_t cause) {
  return fmt::format("{} (cause {})", word(REJECT_CAUSES, cause), cause);
}

std::string pdp_cause(int32_t cause) {
  return fmt::format("{} (cause {})", word(PDP_CAUSES, cause), cause);
}

// ---- advice and pictures ----

std::string sim_advice(uint32_t status, uint32_t lock) {
  if (status == ZOP_SIM_READY) return "";
  if (lock == ZOP_PIN_BLOCKED)
    return "unblock it with zopctl sim unblock and the unblocking key of the card's letter";
  if (status == ZOP_SIM_NOT_INITIALISED && lock == ZOP_PIN_ENABLED)
    return "enter the PIN with zopctl sim verify";
  if (status == ZOP_SIM_NOT_READY || status == ZOP_SIM_REINITIALISING)
    return "wait, it may get ready";
  return "is a card in the slot, the right way round?";
}

std::string bars_picture(int bars) {
  size_t full = static_cast<size_t>(std::clamp(bars, 0, 5));
  std::string number = bars < 0 ? "none" : std::to_string(bars);
  return number + " [" + std::string(full, '#') + std::string(5 - full, '.') + "]";
}

}  // namespace zopctl
