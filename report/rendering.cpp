// Both forms of the report are made in one pass over the items. Callers hold gFtdMutex, so that no
// screen is stored meanwhile; the renderer's own lock guards the scratch buffer and the stamp.
#define LOG_SOURCE "logging"

#include "report/rendering.h"

#include <ctype.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <time.h>

#include "core/log.h"
#include "core/module_state.h"
#include "include/zop_diag_info.h"
#include "report/text.h"

// Bytes of a syslog line before its line count; bytes of a pair besides name and value.
enum { LINE_SIZE = 1200, COUNT_ROOM = 16, PAIR_EXTRA = 3 };

static constinit pthread_mutex_t gRendererMutex = PTHREAD_MUTEX_INITIALIZER;
static constinit uint32_t gLastStamp = 0;  // of the last report; under gRendererMutex

namespace {
struct Text {
  const char* at;
  size_t length;
};
}  // namespace

void prv_zop_init_logging() {
  ScopedLock lock(gRendererMutex);
  for (zop_log_item* item = gLogItems; item->type != ZOP_ITEM_END; ++item) {
    if (item->key != nullptr) item->keyLen = static_cast<uint16_t>(strlen(item->key));
    if (item->label != nullptr) item->labelLen = static_cast<uint16_t>(strlen(item->label));
  }
}

// ---- values ----

static Text prv_text_of(const BoundedWriter& out) { return {out.text(), out.length()}; }

static Text prv_integer(const zop_log_item& item, int index) {
  const uint8_t* p = prv_bytes(item.value);
  bool is_signed = item.type == ZOP_ITEM_SIGNED;
  BoundedWriter out = prv_scratch();
  if (item.size != 1 && item.size != 2 && item.size != 4) {
    out.append("item %d bad size %d", index, item.size);
  } else if (item.size == 4 && !is_signed) {
    out.append("%u", get_le32(p));
  } else if (item.size == 4) {
    out.append("%d", get_unaligned_int32_t(p));
  } else if (item.size == 2) {
    out.append("%d", is_signed ? get_le16_signed(p) : get_le16(p));
  } else {
    out.append("%d", is_signed ? static_cast<int8_t>(*p) : *p);
  }
  return prv_text_of(out);
}

static Text prv_float(const zop_log_item& item) {
  float value;
  memcpy(&value, item.value, sizeof value);
  BoundedWriter out = prv_scratch();
  out.append("%.3f", static_cast<double>(value));
  return prv_text_of(out);
}

namespace {
// Texts of the record. The modem may fill a field without a terminator, and the next field follows
// directly.
struct TextField {
  size_t offset;
  size_t size;
};
}  // namespace

// clang-format off
static constexpr TextField TEXT_FIELDS[] = {
    {offsetof(zop_diag_info, screen.network_name), sizeof gDiagInfo.screen.network_name},
    {offsetof(zop_diag_info, screen.imei),         sizeof gDiagInfo.screen.imei},
    {offsetof(zop_diag_info, screen.imsi),         sizeof gDiagInfo.screen.imsi},
    {offsetof(zop_diag_info, firmware),            sizeof gDiagInfo.firmware},
    {offsetof(zop_diag_info, hardware),            sizeof gDiagInfo.hardware},
    {offsetof(zop_diag_info, library),             sizeof gDiagInfo.library},
    {offsetof(zop_diag_info, phone_number),        sizeof gDiagInfo.phone_number},
    {offsetof(zop_diag_info, iccid),               sizeof gDiagInfo.iccid},
    {offsetof(zop_diag_info, local_address),       sizeof gDiagInfo.local_address},
    {offsetof(zop_diag_info, peer_address),        sizeof gDiagInfo.peer_address},
};
// clang-format on

// Bytes from text to the end of its field, or to the end of the record if it is in no field. A text
// outside the record is terminated.
static size_t prv_text_room(const char* text) {
  const char* record = static_cast<const char*>(static_cast<const void*>(&gDiagInfo));
  if (text < record || text >= record + sizeof gDiagInfo) return PTRDIFF_MAX;
  size_t at = static_cast<size_t>(text - record);
  for (const TextField& field : TEXT_FIELDS) {
    size_t end = field.offset + field.size;
    if (at >= field.offset && at < end) return end - at;
  }
  return sizeof gDiagInfo - at;
}

static Text prv_string(const zop_log_item& item) {
  const char* text = static_cast<const char*>(item.value);
  if (item.size > 0) return {text, static_cast<size_t>(item.size)};
  return {text, strnlen(text, prv_text_room(text))};
}

static Text prv_plain_value(const zop_log_item& item, int index) {
  switch (item.type) {
    case ZOP_ITEM_UNSIGNED:
    case ZOP_ITEM_SIGNED:
      return prv_integer(item, index);
    case ZOP_ITEM_FLOAT:
      return prv_float(item);
    case ZOP_ITEM_STRING:
      return prv_string(item);
    default: {
      BoundedWriter out = prv_scratch();
      out.append("item %d bad type %d", index, item.type);
      return prv_text_of(out);
    }
  }
}

namespace {
// An item as text.
struct Rendered {
  Text label;
  Text value;
};
}  // namespace

// Removes a newline, or a blank and a newline, from the start of the report's first header.
static void prv_trim_first_header(Text* label) {
  size_t leading = label->length > 1 && label->at[0] == ' ' && label->at[1] == '\n' ? 2 : 0;
  if (label->length > 0 && label->at[0] == '\n') leading = 1;
  label->at += leading;
  label->length -= leading;
}

// Headers, the exception, and malformed rows. False to omit the item.
static bool prv_special_value(const zop_log_item& item, int index, const char* excName,
                              Rendered* rendered) {
  rendered->value = {"", 0};
  if (item.type == ZOP_ITEM_EXCEPTION) {
    if (excName == nullptr) return false;
    rendered->value = {excName, strlen(excName)};
  } else if (item.type == ZOP_ITEM_HEADER) {
    if (index == 0) prv_trim_first_header(&rendered->label);
  } else {
    static constexpr char UNKNOWN[] = "UNKNOWN SPECIAL";
    BoundedWriter out = prv_scratch();
    out.append("item=%d", index);
    LOG_E("E zop:itemnolabel:%s:oops", out.text());
    *rendered = {{UNKNOWN, strlen(UNKNOWN)}, prv_text_of(out)};
  }
  return true;
}

static bool prv_value(const zop_log_item& item, int index, const char* excName,
                      Rendered* rendered) {
  if (item.format != nullptr) {
    const char* text = "";
    int length = 0;
    if (item.format(&item, &text, &length, 0) == 0) return false;
    rendered->value = {text, static_cast<size_t>(length)};
    return true;
  }
  if ((item.flags & ZOP_ITEM_SPECIAL) != 0)
    return prv_special_value(item, index, excName, rendered);
  rendered->value = prv_plain_value(item, index);
  return true;
}

// ---- the log string ----

namespace {
struct LogString {
  char* buf;    // null if not requested
  size_t room;  // without the terminator
  size_t used;
  bool whole;
};
}  // namespace

static void prv_put(LogString* out, const char* text, size_t length) {
  memcpy(out->buf + out->used, text, length);
  out->used += length;
}

// A control character in the modem's text does not start a new line. Another thread may be storing
// the text, so a zero in it ends the value, but not the report.
static void prv_put_value(LogString* out, const Text& value) {
  for (size_t i = 0; i < value.length; ++i) {
    char c = value.at[i];
    if (c == '\0') return;
    out->buf[out->used++] = log_character(c);
  }
}

// An item that does not fit is omitted; a later, shorter one may still fit.
static void prv_add_to_log_string(LogString* out, const zop_log_item& item,
                                  const Rendered& rendered) {
  if (out->used + rendered.label.length + rendered.value.length + PAIR_EXTRA > out->room) {
    out->whole = false;
    return;
  }
  prv_put(out, rendered.label.at, rendered.label.length);
  bool bare_header = item.type == ZOP_ITEM_HEADER && rendered.value.length == 0;
  if (!bare_header && rendered.label.length > 0) prv_put(out, ": ", 2);
  if (!bare_header) prv_put_value(out, rendered.value);
  prv_put(out, "\n", 1);
}

// ---- syslog ----

namespace {
struct SyslogLine {
  uint32_t stamp;
  int number;  // of this line, from 1
  size_t used;
  char text[LINE_SIZE + COUNT_ROOM];
};
}  // namespace

static void prv_write_line(SyslogLine* line) {
  line->text[line->used] = '\0';
  LOG_I("I zop:diag: t=%x%s:", line->stamp, line->text);
  line->used = 0;
}

static char prv_in_pair(char c, uint8_t flags) {
  if (c == ',') return ';';
  if (c == ':') return (flags & ZOP_ITEM_DOTS) != 0 ? '.' : '=';
  return c;
}

// How much of a value fits. A list, whose entries are separated by blanks, is cut between entries.
static size_t prv_fitting_length(const Text& value, size_t room) {
  if (value.length <= room) return value.length;
  for (size_t length = room; length > 0; --length) {
    if (value.at[length] == ' ') return length;
  }
  return room;
}

// A pair that does not fit starts the next line; one longer than a line is truncated.
static void prv_add_to_syslog(SyslogLine* line, const zop_log_item& item,
                              const Rendered& rendered) {
  Text name = rendered.label;
  if (item.key != nullptr) name = {item.key, item.keyLen};
  size_t needed = name.length + rendered.value.length + PAIR_EXTRA;
  if (line->used > 0 && line->used + needed > LINE_SIZE) {
    prv_write_line(line);
    ++line->number;
  }
  char* out = line->text + line->used;
  char* end = line->text + LINE_SIZE;
  auto put = [&](char c) {
    if (out < end && c != '\0') *out++ = c;
  };
  put(',');
  if (name.length > 0 && isalpha(static_cast<unsigned char>(name.at[0])) == 0) put('Z');
  for (size_t i = 0; i < name.length; ++i) put(name.at[i]);
  put('=');
  size_t length = prv_fitting_length(rendered.value, static_cast<size_t>(end - out));
  for (size_t i = 0; i < length; ++i) put(prv_in_pair(rendered.value.at[i], item.flags));
  line->used = static_cast<size_t>(out - line->text);
}

static void prv_end_syslog(SyslogLine* line) {
  line->used +=
      static_cast<size_t>(snprintf(line->text + line->used, COUNT_ROOM, ",n=%d", line->number));
  prv_write_line(line);
}

// ---- the report ----

// No two reports have the same stamp, so that their lines can be told apart.
static uint32_t prv_next_stamp() {
  uint32_t now = static_cast<uint32_t>(time(nullptr));
  gLastStamp = now > gLastStamp ? now : gLastStamp + 1;
  return gLastStamp;
}

int prv_output_somewhere(const char* excName, int toSyslog, int snapshotOnly, char* buf,
                         unsigned bufLen) {
  ScopedLock lock(gRendererMutex);
  SyslogLine line = {};
  line.stamp = prv_next_stamp();
  line.number = 1;
  LogString log = {buf, bufLen > 0 ? bufLen - 1 : 0, 0, true};
  for (int index = 0; gLogItems[index].type != ZOP_ITEM_END; ++index) {
    const zop_log_item& item = gLogItems[index];
    if (snapshotOnly != 0 && (item.flags & ZOP_ITEM_SNAPSHOT) == 0) continue;
    Rendered rendered = {{"", 0}, {"", 0}};
    if (item.label != nullptr) rendered.label = {item.label, item.labelLen};
    if (!prv_value(item, index, excName, &rendered)) continue;
    bool in_log = buf != nullptr && (item.flags & ZOP_ITEM_LOG_STRING) != 0;
    bool in_syslog = toSyslog != 0 && (item.flags & ZOP_ITEM_SYSLOG) != 0;
    if (in_log) prv_add_to_log_string(&log, item, rendered);
    if (in_syslog) prv_add_to_syslog(&line, item, rendered);
  }
  if (toSyslog != 0) prv_end_syslog(&line);
  if (buf != nullptr && bufLen > 0) {
    buf[log.used] = '\0';
    LOG_D(VURN_LOG_STUCK,
          "D zop:611len: 611 string len = %d of %u chars:", static_cast<int>(log.used), bufLen);
  }
  return log.whole ? 1 : 0;
}

// Every log string is written to syslog too.
int prv_zop_output_to_log_string(char* buf, int bufLen, int ignored) {
  (void)ignored;
  return prv_output_somewhere(nullptr, 1, 0, buf, static_cast<unsigned>(bufLen));
}

void prv_zop_output_to_syslog(unsigned code, const char* name, int snapshot) {
  (void)code;
  prv_output_somewhere(name, 1, snapshot != 0, nullptr, 0);
}
