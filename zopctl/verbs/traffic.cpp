// zopctl call, sms, time: what the modem is made to do.
#include <fmt/chrono.h>
#include <fmt/format.h>

#include <cstring>
#include <ctime>

#include "zopctl/text/bytes_text.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/words.h"
#include "zopctl/verbs/verbs.h"

namespace zopctl {

static Findings done(const char* key, const char* title, std::string what) {
  return one_section(key, title, {shown("done", "Done", true, std::move(what))});
}

static const std::string& bounded(const Arguments& arguments, const char* name, size_t most) {
  const std::string& text = arguments.text(name);
  if (text.empty() || text.size() > most) {
    throw UsageError(fmt::format("{} has 1 to {} characters", name, most));
  }
  return text;
}

Findings call_start(const ModuleLibrary& m, const Arguments& arguments) {
  const std::string& number = bounded(arguments, "NUMBER", 32);
  require(m.zop_originate_call_test(0, number.c_str()), "start the call");
  return done("call", "Call", "calling " + number + "; zopctl call end ends it");
}

Findings call_end(const ModuleLibrary& m, const Arguments&) {
  require(m.zop_end_call_test(), "end the call");
  return done("call", "Call", "ended");
}

Findings sms_send(const ModuleLibrary& m, const Arguments& arguments) {
  const std::string& number = bounded(arguments, "NUMBER", 35);
  const std::string& text = bounded(arguments, "TEXT", 254);
  require(m.zop_send_sms(number.c_str(), text.c_str()), "send the message");
  return done("sms", "Message", fmt::format("{} characters sent to {}", text.size(), number));
}

static tm time_of(const Arguments& arguments) {
  time_t now = time(nullptr);
  tm local{};
  localtime_r(&now, &local);
  if (!arguments.has("TIME")) return local;
  tm given{};
  const char* end = strptime(arguments.text("TIME").c_str(), "%Y-%m-%dT%H:%M:%S", &given);
  if (end == nullptr || *end != '\0') throw UsageError("TIME is written 2010-07-24T13:02:59");
  timegm(&given);  // fills the weekday in
  return given;
}

// 14 bytes: year, month, day, hour, minute, second, weekday, u16 each.
Findings time_set(const ModuleLibrary& m, const Arguments& arguments) {
  tm t = time_of(arguments);
  const int fields[] = {t.tm_year + 1900, t.tm_mon + 1, t.tm_mday, t.tm_hour,
                        t.tm_min,         t.tm_sec,     t.tm_wday};
  uint8_t bytes[ZOP_MODULE_TIME_SIZE];
  for (size_t i = 0; i < std::size(fields); ++i) {
    bytes[2 * i] = static_cast<uint8_t>(fields[i]);
    bytes[2 * i + 1] = static_cast<uint8_t>(fields[i] >> 8);
  }
  uint32_t size = sizeof bytes;
  require(m.zop_set_module_time(bytes, &size), "set the clock");
  return done("time", "Clock", fmt::format("{:%Y-%m-%d %H:%M:%S}", t));
}

}  // namespace zopctl
