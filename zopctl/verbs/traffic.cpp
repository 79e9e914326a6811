// zopctl call, sms, time: place a call, send a message, set the clock.
#include <fmt/chrono.h>
#include <fmt/format.h>

#include <cstring>
#include <ctime>

#include "zopctl/host/refusals.h"
#include "zopctl/text/bytes_text.h"
#include "zopctl/text/counted.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/message_text.h"
#include "zopctl/text/words.h"
#include "zopctl/verbs/verbs.h"

namespace zopctl {

// A call may also be a service code, as *100#.
static const std::string& number_to_call(const Arguments& arguments) {
  return phone_number(arguments.text("NUMBER"), "0123456789*#", 32);
}

static void check_call(const Arguments& arguments) { number_to_call(arguments); }

static Findings start_call(const ModuleLibrary& m, const Arguments& arguments) {
  const std::string& number = number_to_call(arguments);
  require(m.zop_originate_call_test(0, number.c_str()), "start the call");
  return confirmation("call", "Call", "calling " + number + "; zopctl call end ends it");
}

static Findings end_call(const ModuleLibrary& m, const Arguments&) {
  require(m.zop_end_call_test(), "end the call");
  return confirmation("call", "Call", "ended");
}

static const std::string& number_to_write_to(const Arguments& arguments) {
  return phone_number(arguments.text("NUMBER"), "0123456789", 35);
}

static void check_sms(const Arguments& arguments) {
  number_to_write_to(arguments);
  septets_of(arguments.text("TEXT"));
}

static Findings send_sms(const ModuleLibrary& m, const Arguments& arguments) {
  constexpr size_t ONE_MESSAGE = 160;  // septets
  const std::string& number = number_to_write_to(arguments);
  const std::string& text = arguments.text("TEXT");
  size_t septets = septets_of(text);
  require(m.zop_send_sms(number.c_str(), text.c_str()), "send the message");
  bool fits = septets <= ONE_MESSAGE;
  const char* more = "more than the 160 of one message: the modem decides what becomes of it";
  return one_section(
      "sms", "Message",
      {shown("done", "Done", true,
             fmt::format("{} sent to {}", counted(text.size(), "character"), number)),
       shown("septets", "Septets", septets, std::to_string(septets)),
       shown("one_message", "One message", fits, fits ? "yes" : more)});
}

static tm time_of(const Arguments& arguments) {
  time_t now = time(nullptr);
  tm local{};
  localtime_r(&now, &local);
  if (!arguments.has("TIME")) return local;
  tm given{};
  const char* end = strptime(arguments.text("TIME").c_str(), "%Y-%m-%dT%H:%M:%S", &given);
  if (end == nullptr || *end != '\0')
    throw UsageError("TIME must be as 2010-07-24T13:02:59, not \"" + arguments.text("TIME") + "\"");
  timegm(&given);  // fills in the weekday
  return given;
}

static void check_time(const Arguments& arguments) { time_of(arguments); }

// The modem expects year, month, day, hour, minute, second, weekday as 16-bit fields.
static Findings set_time(const ModuleLibrary& m, const Arguments& arguments) {
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
  return confirmation("time", "Clock", fmt::format("{:%Y-%m-%d %H:%M:%S}", t));
}

const Verbs CALL_VERBS = {
    {.noun = "call",
     .name = "start",
     .help = "place a test call",
     .arguments = {{.name = "NUMBER", .help = "digits, * and #, up to 32; + before them"}},
     .check = check_call,
     .run = start_call},
    {.noun = "call", .name = "end", .help = "end the test call", .run = end_call},
};
const Verbs SMS_VERBS = {
    {.noun = "sms",
     .name = "send",
     .help = "send a message",
     .arguments = {{.name = "NUMBER", .help = "digits, up to 35; + before them"},
                   {.name = "TEXT",
                    .help = "1 to 254 ASCII characters that the GSM alphabet has; 160 septets are "
                            "one message"}},
     .check = check_sms,
     .run = send_sms},
};
const Verbs TIME_VERBS = {
    {.noun = "time",
     .name = "set",
     .help = "set the modem's clock",
     .arguments = {{.name = "TIME",
                    .help = "local time, as 2010-07-24T13:02:59; default now",
                    .optional = true}},
     .check = check_time,
     .run = set_time},
};

}  // namespace zopctl
