// Formatters of numbers, times and addresses.
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include "report/formatters.h"
#include "report/text.h"

enum : uint32_t { NOT_KNOWN = 0xFFFFFFFF, NOT_LOOKED_AT = 0xFFFFFFFE };
enum { HOUR = 3600, DAY = 86400 };

// Length of a text that need not be terminated.
static int prv_width(const char* text, int most) {
  return static_cast<int>(strnlen(text, static_cast<size_t>(most)));
}

int prv_format_mcc_mnc(const zop_log_item*, const char** text, int* length, int) {
  const zop_screen& screen = gDiagInfo.screen;
  BoundedWriter out = prv_scratch();
  out.append("%.*s %.*s", prv_width(screen.mcc, 3), screen.mcc, prv_width(screen.mnc, 3),
             screen.mnc);
  return prv_finish(out, text, length);
}

int prv_format_hex_to_decimal(const zop_log_item* item, const char** text, int* length, int) {
  char digits[5] = "";
  memcpy(digits, item->value, 4);
  BoundedWriter out = prv_scratch();
  out.append("%u", static_cast<unsigned>(strtoul(digits, nullptr, 16)));
  return prv_finish(out, text, length);
}

int prv_format_date_time(const zop_log_item*, const char** text, int* length, int) {
  const uint8_t* t = gDiagInfo.network_time;
  BoundedWriter out = prv_scratch();
  out.append("%04d/%02d/%02d %02d.%02d.%02d", get_le16(t), get_le16(t + 2), get_le16(t + 4),
             get_le16(t + 6), get_le16(t + 8), get_le16(t + 10));
  return prv_finish(out, text, length);
}

int prv_format_hour_offset(const zop_log_item* item, const char** text, int* length, int) {
  BoundedWriter out = prv_scratch();
  if (get_unaligned_uint32_t(item->value) == NOT_KNOWN) {
    out.append("Not provided");
  } else {
    out.append("%+dh", get_unaligned_int32_t(item->value) / HOUR);
  }
  return prv_finish(out, text, length);
}

int prv_format_counter(const zop_log_item* item, const char** text, int* length, int) {
  uint32_t value = get_unaligned_uint32_t(item->value);
  BoundedWriter out = prv_scratch();
  if (value == NOT_KNOWN) {
    out.append("---");
  } else if (value == NOT_LOOKED_AT) {
    out.append("----");
  } else {
    out.append("%u", value);
  }
  return prv_finish(out, text, length);
}

// The address words as decimal numbers.
int prv_format_name_servers(const zop_log_item*, const char** text, int* length, int) {
  BoundedWriter out = prv_scratch();
  out.append("%u, %u", gDiagInfo.name_servers[0], gDiagInfo.name_servers[1]);
  return prv_finish(out, text, length);
}

// Syslog gets only the lower half of an address.
int prv_format_masked_address(const zop_log_item* item, const char** text, int* length, int) {
  char address[sizeof gDiagInfo.local_address + 1] = "";
  memcpy(address, item->value, sizeof gDiagInfo.local_address);
  const char* dot = strchr(address, '.');
  if (dot != nullptr) dot = strchr(dot + 1, '.');
  BoundedWriter out = prv_scratch();
  out.append("xxx.xxx%s", dot != nullptr ? dot : "");
  return prv_finish(out, text, length);
}

// ---- times ----

static void prv_append_time(BoundedWriter& out, uint32_t when) {
  time_t seconds = when;
  tm local;
  char text[32] = "";
  if (localtime_r(&seconds, &local) != nullptr) strftime(text, sizeof text, "%b %e %T", &local);
  out.append("%s", text);
}

// "1/02:03:04 (Jul 24 19:11:28)": days, hours, minutes, seconds, and the start. An age is negative
// if the clock was set back.
static void prv_append_age(BoundedWriter& out, uint32_t age, uint32_t when) {
  int s = static_cast<int>(age);
  int days = s / DAY;
  int hours = s % DAY / HOUR;
  int minutes = s % HOUR / 60;
  int seconds = s % 60;
  if (days > 0) {
    out.append("%d/%d:%02d:%02d (", days, hours, minutes, seconds);
  } else if (hours > 0) {
    out.append("%d:%02d:%02d (", hours, minutes, seconds);
  } else {
    out.append("%d:%02d (", minutes, seconds);
  }
  prv_append_time(out, when);
  out.append(")");
}

static uint32_t prv_now() { return static_cast<uint32_t>(time(nullptr)); }

// Rings by origin, then the last one as a letter and its time.
int prv_format_event_history(const zop_log_item*, const char** text, int* length, int) {
  static constexpr char LETTERS[] = "STRsWU";  // the terminator is the letter of origin 6
  const uint32_t* counts = gDiagInfo.ring_counts;
  BoundedWriter out = prv_scratch();
  out.append("%d, %d, %d, %d, %d, %d", static_cast<int>(counts[0]), static_cast<int>(counts[1]),
             static_cast<int>(counts[2]), static_cast<int>(counts[3]), static_cast<int>(counts[4]),
             static_cast<int>(counts[5]));
  if (gDiagInfo.last_ring_time != 0) {
    unsigned kind = gDiagInfo.last_ring_origin;
    out.append(" (%c) ", kind < sizeof LETTERS ? LETTERS[kind] : '?');
    prv_append_time(out, gDiagInfo.last_ring_time);
  }
  return prv_finish(out, text, length);
}

int prv_format_awake(const zop_log_item*, const char** text, int* length, int) {
  uint32_t up = gDiagInfo.awake_seconds + gDiagInfo.asleep_seconds;
  BoundedWriter out = prv_scratch();
  prv_append_age(out, gDiagInfo.awake_seconds, prv_now() - up);
  return prv_finish(out, text, length);
}

int prv_format_pppd_age(const zop_log_item*, const char** text, int* length, int) {
  BoundedWriter out = prv_scratch();
  if (gDiagInfo.pppd_start == 0) {
    out.append("---");
  } else {
    uint32_t age = gDiagInfo.awake_seconds - gDiagInfo.pppd_start;
    prv_append_age(out, age, prv_now() - age);
  }
  return prv_finish(out, text, length);
}

int prv_format_ftd_age(const zop_log_item*, const char** text, int* length, int) {
  BoundedWriter out = prv_scratch();
  if (gDiagInfo.screen_time == 0) {
    out.append("None yet");
  } else {
    prv_append_age(out, prv_now() - gDiagInfo.screen_time, gDiagInfo.screen_time);
  }
  return prv_finish(out, text, length);
}

int prv_format_ftd_age_seconds(const zop_log_item*, const char** text, int* length, int) {
  BoundedWriter out = prv_scratch();
  if (gDiagInfo.screen_time == 0) {
    out.append("None yet");
  } else {
    out.append("%ds", static_cast<int>(prv_now() - gDiagInfo.screen_time));
  }
  return prv_finish(out, text, length);
}
