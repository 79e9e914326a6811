// NV items, configuration, error log, messages, calls, backup, profiles and the clock.
#include "simulator/requests/device_requests.h"

#include <algorithm>
#include <ctime>

namespace sim {

constexpr size_t NV_DATA = 128;
constexpr int LAST_NV_ITEM = 20000;
constexpr int NV_NOT_WRITTEN = 5;
constexpr int NV_NO_SUCH_ITEM = 6;

static int nv_item(const Incoming& in) { return in.request[1] | in.request[2] << 8; }

static void nv_answer(const Incoming& in, Answer& a, View data, int status) {
  a.u8(in.request[1]).u8(in.request[2]).bytes(data, NV_DATA).u16(status);
}

void nv_read(const Incoming& in, Answer& a) {
  auto item = in.model.nv.find(nv_item(in));
  if (item == in.model.nv.end()) return nv_answer(in, a, {}, NV_NOT_WRITTEN);
  nv_answer(in, a, item->second, 0);
}

void nv_write(const Incoming& in, Answer& a) {
  View data = in.request.subspan(3, NV_DATA);
  if (nv_item(in) > LAST_NV_ITEM) return nv_answer(in, a, data, NV_NO_SUCH_ITEM);
  in.model.nv[nv_item(in)] = Bytes(data.begin(), data.end());
  nv_answer(in, a, data, 0);
}

static bool is_band(int value) {
  constexpr int BANDS[] = {ZOP_BAND_GSM_850,  ZOP_BAND_EGSM_900,   ZOP_BAND_GSM_1800,
                           ZOP_BAND_GSM_1900, ZOP_BAND_WCDMA_2100, ZOP_BAND_WCDMA_1900,
                           ZOP_BAND_WCDMA_850};
  return std::ranges::find(BANDS, value) != std::end(BANDS);
}

void set_band(const Incoming& in, Answer& a) {
  if (!is_band(in.request[3])) return a.status(1);
  in.model.radio.band = in.request[3];
}

// The answer only echoes the request.
void mode_control(const Incoming& in, Answer& a) {
  in.model.device.operating_mode = in.request[1];
  a.u8(in.request[1]).u8(in.request[2]);
}

// 264 bytes: how many records there are, and the text of the newest.
void error_log(const Incoming& in, Answer& a) {
  const auto& errors = in.model.device.errors;
  a.u8(static_cast<int>(errors.size())).text(errors.empty() ? "" : errors.back(), 263);
}

void clear_error(const Incoming& in, Answer& a) {
  auto& errors = in.model.device.errors;
  size_t index = in.request[1];
  if (index < errors.size()) errors.erase(errors.begin() + static_cast<ptrdiff_t>(index));
  if (index == 255) errors.clear();
  a.u8(in.request[1]);
}

void error_fatal(const Incoming& in, Answer& a) {
  in.model.device.errors.push_back("fatal error forced by the host");
  a.then = in.model.device.crash_dump != 0 ? Answer::ENTERS_BOOT_ROM : Answer::RESTARTS;
}

// The request's lengths must agree with its texts.
void send_sms(const Incoming& in, Answer& a) {
  std::string number = characters(in.request.subspan(7, 36));
  std::string text = characters(in.request.subspan(43, 255));
  a.zeros(2).u16(0);
  bool agrees = in.request[4] == number.size() &&
                (in.request[5] | in.request[6] << 8) == static_cast<int>(text.size());
  if (!agrees || number.empty()) return a.status(1);
  in.model.outbox.push_back({number, text});
}

// These answer non-zero for success.
void backup_step(const Incoming& in, Answer& a) {
  constexpr uint8_t BACKUP = 0xD6;
  constexpr uint8_t RESTORE = 0xD7;
  Device& device = in.model.device;
  if (in.request[0] == BACKUP) device.nv_backup = in.model.nv;
  if (in.request[0] == RESTORE) in.model.nv = device.nv_backup;
  if (in.request[0] == BACKUP) device.backup_value = 0;  // and asks for a restore
  if (in.request[0] == RESTORE) device.backup_value = 1;
  a.zeros(2).u16(1);
}

// The items get their defaults; written values are lost until they are restored.
void rebuild_nv(const Incoming& in, Answer& a) {
  in.model.nv = Model().nv;
  a.then = Answer::RESTARTS_WITHOUT_ANSWER;
}

constexpr size_t PROFILE_SIZE = 208;
constexpr int LAST_PROFILE = 15;

static bool is_profile(int number) { return number % 2 == 1 && number <= LAST_PROFILE; }

void read_profile(const Incoming& in, Answer& a) {
  int number = in.request[3];
  if (!is_profile(number)) return a.status(1);
  auto profile = in.model.device.profiles.find(number);
  bool written = profile != in.model.device.profiles.end();
  a.bytes(written ? View(profile->second) : View(), PROFILE_SIZE);
}

// A record begins with the number of its profile.
void write_profile(const Incoming& in, Answer& a) {
  View record = in.request.subspan(3);
  if (!is_profile(record[0])) return a.status(1);
  in.model.device.profiles[record[0]] = Bytes(record.begin(), record.end());
}

void originate_call(const Incoming& in, Answer& a) {
  std::string number = characters(in.request.subspan(4, 33));
  if (number.empty() || number.size() != in.request[3]) return a.status(1);
  in.model.device.called = number;
  in.model.state.call = ZOP_CALL_CONVERSATION;
  in.model.device.events |= EVENT_ORIGINATED;
}

void end_call(const Incoming& in, Answer&) {
  if (in.model.state.call != ZOP_CALL_IDLE) in.model.device.events |= EVENT_ENDED;
  in.model.state.call = ZOP_CALL_IDLE;
}

// Fetching a record clears its flag.
static void fetched(const Incoming& in, int event) { in.model.device.events &= ~event; }

void event_originated(const Incoming& in, Answer& a) {
  const std::string& number = in.model.device.called;
  fetched(in, EVENT_ORIGINATED);
  a.zeros(2).text(number, 81).u8(static_cast<int>(number.size())).zeros(5);
}

// Peak throughput in units of 1000, mean in units of 100 octets per second.
void event_activated(const Incoming& in, Answer& a) {
  fetched(in, EVENT_ACTIVATED);
  a.zeros(4).u8(9).zeros(1).u8(31).zeros(19);
  a.u8(4).bytes(Bytes{10, 64, 64, 64}, 20);
}

void event_deactivated(const Incoming& in, Answer& a) {
  fetched(in, EVENT_DEACTIVATED);
  a.u8(0);
}

void event_ended(const Incoming& in, Answer& a) {
  constexpr int VOICE = 0;
  fetched(in, EVENT_ENDED);
  a.u8(0).u8(VOICE).u8(in.model.device.end_status);
}

// 14 bytes: year, month, day, hour, minute, second, weekday, u16 each, local time.
void set_time(const Incoming& in, Answer& a) {
  auto word = [&](size_t i) { return in.request[3 + 2 * i] | in.request[4 + 2 * i] << 8; };
  std::tm t{};
  t.tm_year = word(0) - 1900;
  t.tm_mon = word(1) - 1;
  t.tm_mday = word(2);
  t.tm_hour = word(3);
  t.tm_min = word(4);
  t.tm_sec = word(5);
  if (t.tm_mon < 0 || t.tm_mon > 11 || t.tm_mday < 1 || t.tm_mday > 31) return a.status(1);
  auto up = static_cast<std::time_t>(in.now / std::chrono::seconds(1));
  in.model.clock.start = timegm(&t) - up - std::time_t{900} * in.model.clock.zone;
  in.model.clock.provided = 1;
}

}  // namespace sim
