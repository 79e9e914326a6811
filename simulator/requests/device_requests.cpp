// NV items, configuration, error log, messages, calls, backup, profiles and the clock.
#include "simulator/requests/device_requests.h"

#include <algorithm>
#include <ctime>

namespace sim {

constexpr size_t NV_DATA = 128;
constexpr int LAST_NV_ITEM = 20000;
constexpr int NV_NOT_WRITTEN = 5;
constexpr int NV_NO_SUCH_ITEM = 6;

static std::string characters(View bytes) {
  return {bytes.begin(), std::find(bytes.begin(), bytes.end(), 0)};
}

static int nv_item(const Context& c) { return c.request[1] | c.request[2] << 8; }

static void nv_answer(const Context& c, Answer& a, View data, int status) {
  a.u8(c.request[1]).u8(c.request[2]).bytes(data, NV_DATA).u16(status);
}

void nv_read(const Context& c, Answer& a) {
  auto item = c.model.nv.find(nv_item(c));
  if (item == c.model.nv.end()) return nv_answer(c, a, {}, NV_NOT_WRITTEN);
  nv_answer(c, a, item->second, 0);
}

void nv_write(const Context& c, Answer& a) {
  View data = c.request.subspan(3, NV_DATA);
  if (nv_item(c) > LAST_NV_ITEM) return nv_answer(c, a, data, NV_NO_SUCH_ITEM);
  c.model.nv[nv_item(c)] = Bytes(data.begin(), data.end());
  nv_answer(c, a, data, 0);
}

static bool is_band(int value) {
  constexpr int BANDS[] = {ZOP_BAND_GSM_850,  ZOP_BAND_EGSM_900,   ZOP_BAND_GSM_1800,
                           ZOP_BAND_GSM_1900, ZOP_BAND_WCDMA_2100, ZOP_BAND_WCDMA_1900,
                           ZOP_BAND_WCDMA_850};
  return std::ranges::find(BANDS, value) != std::end(BANDS);
}

void set_band(const Context& c, Answer& a) {
  if (!is_band(c.request[3])) return a.status(1);
  c.model.radio.band = c.request[3];
}

// The answer only echoes the request.
void mode_control(const Context& c, Answer& a) {
  c.model.device.operating_mode = c.request[1];
  a.u8(c.request[1]).u8(c.request[2]);
}

// 264 bytes: how many records there are, and the text of the newest.
void error_log(const Context& c, Answer& a) {
  const auto& errors = c.model.device.errors;
  a.u8(static_cast<int>(errors.size())).text(errors.empty() ? "" : errors.back(), 263);
}

void clear_error(const Context& c, Answer& a) {
  auto& errors = c.model.device.errors;
  size_t index = c.request[1];
  if (index < errors.size()) errors.erase(errors.begin() + static_cast<ptrdiff_t>(index));
  if (index == 255) errors.clear();
  a.u8(c.request[1]);
}

void error_fatal(const Context& c, Answer& a) {
  c.model.device.errors.push_back("fatal error forced by the host");
  a.then = c.model.device.crash_dump != 0 ? Answer::ENTERS_BOOT_ROM : Answer::RESTARTS;
}

// The request's lengths must agree with its texts.
void send_sms(const Context& c, Answer& a) {
  std::string number = characters(c.request.subspan(7, 36));
  std::string text = characters(c.request.subspan(43, 255));
  a.zeros(2).u16(0);
  bool agrees = c.request[4] == number.size() &&
                (c.request[5] | c.request[6] << 8) == static_cast<int>(text.size());
  if (!agrees || number.empty()) return a.status(1);
  c.model.outbox.push_back({number, text});
}

// These answer non-zero for success.
void backup_step(const Context& c, Answer& a) {
  constexpr uint8_t BACKUP = 0xD6;
  constexpr uint8_t RESTORE = 0xD7;
  Device& device = c.model.device;
  if (c.request[0] == BACKUP) device.nv_backup = c.model.nv;
  if (c.request[0] == RESTORE) c.model.nv = device.nv_backup;
  if (c.request[0] == BACKUP) device.backup_value = 0;  // and wants to have it back
  if (c.request[0] == RESTORE) device.backup_value = 1;
  a.zeros(2).u16(1);
}

// The items are made anew; what was written is gone until it is restored.
void rebuild_nv(const Context& c, Answer& a) {
  c.model.nv = Model().nv;
  a.then = Answer::RESTARTS_WITHOUT_ANSWER;
}

constexpr size_t PROFILE_SIZE = 208;
constexpr int LAST_PROFILE = 15;

static bool is_profile(int number) { return number % 2 == 1 && number <= LAST_PROFILE; }

void read_profile(const Context& c, Answer& a) {
  int number = c.request[3];
  if (!is_profile(number)) return a.status(1);
  auto profile = c.model.device.profiles.find(number);
  bool written = profile != c.model.device.profiles.end();
  a.bytes(written ? View(profile->second) : View(), PROFILE_SIZE);
}

// A record begins with the number of its profile.
void write_profile(const Context& c, Answer& a) {
  View record = c.request.subspan(3);
  if (!is_profile(record[0])) return a.status(1);
  c.model.device.profiles[record[0]] = Bytes(record.begin(), record.end());
}

void originate_call(const Context& c, Answer& a) {
  std::string number = characters(c.request.subspan(4, 33));
  if (number.empty() || number.size() != c.request[3]) return a.status(1);
  c.model.device.called = number;
  c.model.state.call = ZOP_CALL_CONVERSATION;
  c.model.device.events |= EVENT_ORIGINATED;
}

void end_call(const Context& c, Answer&) {
  if (c.model.state.call != ZOP_CALL_IDLE) c.model.device.events |= EVENT_ENDED;
  c.model.state.call = ZOP_CALL_IDLE;
}

// A record that is fetched clears its flag.
static void fetched(const Context& c, int event) { c.model.device.events &= ~event; }

void event_originated(const Context& c, Answer& a) {
  const std::string& number = c.model.device.called;
  fetched(c, EVENT_ORIGINATED);
  a.zeros(2).text(number, 81).u8(static_cast<int>(number.size())).zeros(5);
}

// Peak throughput in units of 1000, mean in units of 100 octets per second.
void event_activated(const Context& c, Answer& a) {
  fetched(c, EVENT_ACTIVATED);
  a.zeros(4).u8(9).zeros(1).u8(31).zeros(19);
  a.u8(4).bytes(Bytes{10, 64, 64, 64}, 20);
}

void event_deactivated(const Context& c, Answer& a) {
  fetched(c, EVENT_DEACTIVATED);
  a.u8(0);
}

void event_ended(const Context& c, Answer& a) {
  constexpr int VOICE = 0;
  fetched(c, EVENT_ENDED);
  a.u8(0).u8(VOICE).u8(c.model.device.end_status);
}

// 14 bytes: year, month, day, hour, minute, second, weekday, u16 each, local time.
void set_time(const Context& c, Answer& a) {
  auto word = [&](size_t i) { return c.request[3 + 2 * i] | c.request[4 + 2 * i] << 8; };
  std::tm t{};
  t.tm_year = word(0) - 1900;
  t.tm_mon = word(1) - 1;
  t.tm_mday = word(2);
  t.tm_hour = word(3);
  t.tm_min = word(4);
  t.tm_sec = word(5);
  if (t.tm_mon < 0 || t.tm_mon > 11 || t.tm_mday < 1 || t.tm_mday > 31) return a.status(1);
  auto up = static_cast<std::time_t>(c.now / std::chrono::seconds(1));
  c.model.clock.start = timegm(&t) - up - std::time_t{900} * c.model.clock.zone;
  c.model.clock.provided = 1;
}

}  // namespace sim
