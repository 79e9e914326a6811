// Word tables. An unknown value is shown as a number.
#include "zopctl/text/words.h"

#include <fmt/format.h>

#include <algorithm>
#include <span>

#include "include/vurn.h"
#include "include/zop.h"

namespace zopctl {

namespace {
struct Word {
  int64_t value;
  const char* text;
};
}  // namespace

static std::string word(std::span<const Word> words, int64_t value) {
  for (const Word& row : words) {
    if (row.value == value) return row.text;
  }
  return fmt::format("unknown ({})", value);
}

std::string vurn_result(int result) {
  static const Word words[] = {
      {VURN_OK, "good"},
      {VURN_ERR_NOT_OPEN, "module not open"},
      {VURN_ERR_FAILED, "failed"},
      {VURN_ERR_REOPENED, "was already open, now closed"},
      {VURN_ERR_NULL_ARGUMENT, "null argument"},
      {VURN_ERR_TIME_NOT_PROVIDED, "not sent by the network"},
  };
  return fmt::format("result {} ({})", result, word(words, result));
}

std::string zop_result(unsigned result) {
  static const Word words[] = {
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
  return fmt::format("result {} ({})", result, word(words, result));
}

std::string sim_status(uint32_t status) {
  static const Word words[] = {{ZOP_SIM_NO_CARD, "no card"},
                               {ZOP_SIM_INVALID_CARD, "invalid card"},
                               {ZOP_SIM_READY, "ready"},
                               {ZOP_SIM_NOT_INITIALISED, "not initialised"},
                               {ZOP_SIM_NOT_READY, "not ready"},
                               {ZOP_SIM_REINITIALISING, "reinitialising"},
                               {ZOP_SIM_AVAILABLE, "card available"},
                               {ZOP_SIM_ILLEGAL_CARD, "illegal card"}};
  return word(words, status);
}

std::string lock_status(uint32_t lock) {
  static const Word words[] = {
      {ZOP_PIN_UNKNOWN, "unknown"},      {ZOP_PIN_OKAY, "okay"},
      {ZOP_PIN_ENABLED, "PIN required"}, {ZOP_PIN_VERIFIED, "verified"},
      {ZOP_PIN_BLOCKED, "blocked"},      {ZOP_PIN_PERM_DISABLED, "PIN disabled"},
      {ZOP_PIN_NOT_VALID, "not valid"},  {ZOP_PIN_NOT_INITIALISED, "not initialised"}};
  return word(words, lock);
}

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

std::string registration(uint32_t registration) {
  static const Word words[] = {{ZOP_REGISTRATION_NONE, "not registered"},
                               {ZOP_REGISTRATION_SUCCESS, "registered"},
                               {ZOP_REGISTRATION_FAILED, "failed"},
                               {ZOP_REGISTRATION_NO_NETWORK, "no network"}};
  return word(words, registration);
}

std::string service(int32_t service) {
  static const Word words[] = {{ZOP_SERVICE_NONE, "none"},
                               {ZOP_SERVICE_NO_SERVICE, "no service"},
                               {ZOP_SERVICE_LIMITED, "limited"},
                               {ZOP_SERVICE_FULL, "full"},
                               {ZOP_SERVICE_LIMITED_REGIONAL, "limited regional"},
                               {ZOP_SERVICE_POWER_SAVE, "power save"}};
  return word(words, service);
}

std::string system_mode(uint32_t mode) {
  static const Word words[] = {{ZOP_SYSTEM_NO_SERVICE, "no service"},
                               {ZOP_SYSTEM_AMPS, "AMPS"},
                               {ZOP_SYSTEM_CDMA, "CDMA"},
                               {ZOP_SYSTEM_GSM, "GSM"},
                               {ZOP_SYSTEM_HDR, "HDR"},
                               {ZOP_SYSTEM_WCDMA, "WCDMA"},
                               {ZOP_SYSTEM_GPS, "GPS"},
                               {ZOP_SYSTEM_GW, "GSM/WCDMA"},
                               {ZOP_SYSTEM_WLAN, "WLAN"}};
  return word(words, mode);
}

std::string data_service_mode(int mode) {
  static const Word words[] = {{VURN_DATA_NONE, "none"},
                               {VURN_DATA_WCDMA, "WCDMA"},
                               {VURN_DATA_EDGE, "EDGE"},
                               {VURN_DATA_GPRS, "GPRS"}};
  return word(words, mode);
}

std::string band(int32_t band) {
  static const Word words[] = {{ZOP_BAND_GSM_850, "GSM 850"},
                               {ZOP_BAND_EGSM_900, "EGSM 900"},
                               {ZOP_BAND_PGSM_900, "PGSM 900"},
                               {ZOP_BAND_RGSM_900, "RGSM 900"},
                               {ZOP_BAND_GSM_1800, "DCS 1800"},
                               {ZOP_BAND_GSM_1900, "PCS 1900"},
                               {ZOP_BAND_WCDMA_2100, "WCDMA 2100"},
                               {ZOP_BAND_WCDMA_1900, "WCDMA 1900"},
                               {ZOP_BAND_WCDMA_1700_III, "WCDMA 1700 (III)"},
                               {ZOP_BAND_WCDMA_1700_IV, "WCDMA 1700 (IV)"},
                               {ZOP_BAND_WCDMA_850, "WCDMA 850"},
                               {ZOP_BAND_WCDMA_800, "WCDMA 800"},
                               {ZOP_BAND_WCDMA_2600, "WCDMA 2600"},
                               {ZOP_BAND_WCDMA_900, "WCDMA 900"},
                               {ZOP_BAND_WCDMA_1700_IX, "WCDMA 1700 (IX)"}};
  return word(words, band);
}

std::string reject_cause(int32_t cause) {
  static const Word words[] = {{0, "no error"},
                               {2, "IMSI unknown in HLR"},
                               {3, "illegal MS"},
                               {4, "IMSI unknown in VLR"},
                               {5, "IMEI not accepted"},
                               {6, "illegal ME"},
                               {7, "GPRS services not allowed"},
                               {8, "GPRS and non-GPRS services not allowed"},
                               {9, "MS identity not derived"},
                               {10, "implicitly detached"},
                               {11, "PLMN not allowed"},
                               {12, "location area not allowed"},
                               {13, "national roaming not allowed"},
                               {14, "GPRS services not allowed in this PLMN"},
                               {15, "no suitable cells in location area"},
                               {16, "MSC temporarily not reachable"},
                               {17, "network failure"},
                               {20, "MAC failure"},
                               {21, "synch failure"},
                               {22, "congestion"},
                               {23, "GSM authentication unacceptable"},
                               {40, "no PDP context activated"},
                               {111, "protocol error, unspecified"}};
  return fmt::format("{} (cause {})", word(words, cause), cause);
}

std::string pdp_cause(int32_t cause) {
  static const Word words[] = {{8, "operator determined barring"},
                               {25, "LLC or SNDCP failure"},
                               {26, "insufficient resources"},
                               {27, "missing or unknown APN"},
                               {28, "unknown PDP address or type"},
                               {29, "user authentication failed"},
                               {30, "activation rejected by GGSN"},
                               {31, "activation rejected, unspecified"},
                               {32, "service option not supported"},
                               {33, "service option not subscribed"},
                               {34, "service option out of order"},
                               {36, "regular deactivation"},
                               {37, "QoS not accepted"},
                               {38, "network failure"},
                               {39, "reactivation required"}};
  return fmt::format("{} (cause {})", word(words, cause), cause);
}

std::string bars_picture(int bars) {
  size_t full = static_cast<size_t>(std::clamp(bars, 0, 5));
  std::string number = bars < 0 ? "none" : std::to_string(bars);
  return number + " [" + std::string(full, '#') + std::string(5 - full, '.') + "]";
}

}  // namespace zopctl
