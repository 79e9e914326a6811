// Word tables. A value without a word is shown as its number.
#include "zopctl/words.h"

#include <fmt/format.h>

#include <algorithm>
#include <span>

#include "include/vurn.h"
#include "include/zop.h"

namespace zopctl {

struct Word {
  int64_t value;
  const char* text;
};

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
      {VURN_ERR_REOPENED, "was open, closed now"},
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
  static const Word words[] = {{0, "no card"},         {1, "invalid card"}, {2, "ready"},
                               {3, "not initialised"}, {4, "not ready"},    {5, "reinitialising"},
                               {6, "card available"},  {7, "illegal card"}};
  return word(words, status);
}

std::string lock_status(uint32_t lock) {
  static const Word words[] = {{0, "unknown"},   {1, "okay"},           {2, "PIN wanted"},
                               {3, "verified"},  {4, "blocked"},        {5, "PIN switched off"},
                               {6, "not valid"}, {7, "not initialised"}};
  return word(words, lock);
}

std::string registration(uint32_t registration) {
  static const Word words[] = {
      {0, "not registered"}, {1, "registered"}, {2, "failed"}, {3, "no network"}};
  return word(words, registration);
}

std::string service(int32_t service) {
  static const Word words[] = {{-1, "none"}, {0, "no service"},       {1, "limited"},
                               {2, "full"},  {3, "limited regional"}, {4, "power save"}};
  return word(words, service);
}

std::string system_mode(uint32_t mode) {
  static const Word words[] = {{0, "no service"}, {1, "AMPS"},      {2, "CDMA"},
                               {3, "GSM"},        {4, "HDR"},       {5, "WCDMA"},
                               {6, "GPS"},        {7, "GSM/WCDMA"}, {8, "WLAN"}};
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
  static const Word words[] = {
      {43, "GSM 850"},          {44, "EGSM 900"},        {45, "PGSM 900"},       {46, "RGSM 900"},
      {47, "DCS 1800"},         {48, "PCS 1900"},        {80, "WCDMA 2100"},     {81, "WCDMA 1900"},
      {82, "WCDMA 1700 (III)"}, {83, "WCDMA 1700 (IV)"}, {84, "WCDMA 850"},      {85, "WCDMA 800"},
      {86, "WCDMA 2600"},       {87, "WCDMA 900"},       {88, "WCDMA 1700 (IX)"}};
  return word(words, band);
}

std::string bars_picture(int bars) {
  size_t full = static_cast<size_t>(std::clamp(bars, 0, 5));
  std::string number = bars < 0 ? "none" : std::to_string(bars);
  return number + " [" + std::string(full, '#') + std::string(5 - full, '.') + "]";
}

}  // namespace zopctl
