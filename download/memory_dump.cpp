// Everything in the list comes from a modem that has just crashed: names, lengths and counts are
// held against what really came, and no name leads out of the dump's directory.
#include "download/memory_dump.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include "core/bytes.h"
#include "download/dmss_download.h"
#include "download/image_set.h"
#include "include/modem_download.h"
#include "link/serial_port.h"

static constexpr char DEVICE[] = "/dev/tts/USB1";
enum { MOST_REGIONS = 20, TEXT_SIZE = 128, MOST_READ = 1024 };
enum { LIST_LENGTH = 1, LIST = 3 };                          // in the list's reply
enum { ENTRY_BASE = 1, ENTRY_LENGTH = 5, ENTRY_TEXTS = 9 };  // in an entry
enum { DATA_ADDRESS = 1, DATA_LENGTH = 5, DATA = 7 };        // in the reply of a read
enum { DIRECTORY_MODE = 0666, FILE_MODE = 0666, SEARCHABLE = 0755 };

struct Region {
  int32_t descriptor;
  uint32_t done;       // bytes saved
  uint8_t preference;  // the modem's; not used
  uint32_t base;
  uint32_t length;
  char description[TEXT_SIZE];
  char path[TEXT_SIZE];
};
static constinit Region gRegions[MOST_REGIONS] = {};
static constinit uint32_t gRegionCount = 0;
static constinit uint32_t gCurrentRegion = 0;
static constinit char gDirectory[TEXT_SIZE] = "";
static constinit bool gBadList = false;  // the last list of regions was not whole
static constinit bool gRefused = false;  // the dump ends; why has been said
static constinit int32_t gPrintedPercent = -1;

static void modem_status_dump(int32_t percent) {
  FW_DL_STATUS = percent;
  if (percent == gPrintedPercent) return;
  gPrintedPercent = percent;
  printf("DUMP_MODE: PERCENT=%d\n", percent);
  fflush(stdout);
}

// ---- the list of regions ----

// A text of the modem with what is not printable as \xNN.
static void print_escaped(const char* text) {
  for (const char* c = text; *c != '\0'; ++c) {
    unsigned char byte = static_cast<unsigned char>(*c);
    bool plain = byte >= 0x20 && byte < 0x7F && byte != '\\';
    if (plain) putchar(byte);
    if (!plain) printf("\\x%02X", byte);
  }
}

static bool refuse(const char* reason, const char* text) {
  gRefused = true;
  printf("DUMP_MODE: %s: \"", reason);
  print_escaped(text);
  say("\"");
  return false;
}

static bool is_file_name(const char* name) {
  return name[0] != '\0' && strchr(name, '/') == nullptr && strcmp(name, ".") != 0 &&
         strcmp(name, "..") != 0;
}

static bool is_taken(const char* path) {
  for (uint32_t i = 0; i < gRegionCount; ++i) {
    if (strcmp(gRegions[i].path, path) == 0) return true;
  }
  return false;
}

// Two regions of one name are both kept: the later one gets a number.
static bool set_path(Region* region, const char* name) {
  if (!is_file_name(name)) return refuse("no file name", name);
  int length = snprintf(region->path, sizeof region->path, "%s%s", gDirectory, name);
  for (int number = 2; length < TEXT_SIZE && is_taken(region->path); ++number) {
    length = snprintf(region->path, sizeof region->path, "%s%s.%d", gDirectory, name, number);
  }
  if (length >= TEXT_SIZE) return refuse("file name too long", name);
  printf("DUMP_MODE: FILE=");
  print_escaped(region->path);
  say("");
  return true;
}

// Moves *at behind the text that it stands at. False when nothing before the end terminates it.
static bool skip_text(const uint8_t** at, const uint8_t* end) {
  const void* terminator = memchr(*at, 0, static_cast<size_t>(end - *at));
  if (terminator == nullptr) return false;
  *at = static_cast<const uint8_t*>(terminator) + 1;
  return true;
}

// Moves *at behind an entry with both of its texts. False when it is not whole.
static bool skip_entry(const uint8_t** at, const uint8_t* end) {
  if (end - *at < ENTRY_TEXTS) return false;
  *at += ENTRY_TEXTS;
  for (int text = 0; text < 2; ++text) {
    if (!skip_text(at, end)) return false;
  }
  return true;
}

// The text at *at, which moves behind it; none when nothing terminates it.
static const char* take_text(const uint8_t** at, const uint8_t* end) {
  const void* text = *at;
  return skip_text(at, end) ? static_cast<const char*>(text) : "";
}

// An entry that is whole: both of its texts are there.
static void take_entry(const uint8_t** at, const uint8_t* end) {
  Region& region = gRegions[gRegionCount];
  region = {};
  region.descriptor = -1;
  region.preference = (*at)[0];
  region.base = get_be32(*at + ENTRY_BASE);
  region.length = get_be32(*at + ENTRY_LENGTH);
  *at += ENTRY_TEXTS;
  snprintf(region.description, sizeof region.description, "%s", take_text(at, end));
  if (set_path(&region, take_text(at, end))) ++gRegionCount;
}

// A list that is not whole is a bad reply, and asked for again; a list that is whole and can't be
// accepted ends the dump.
bool accept_region_list(const Reply& reply) {
  gBadList = true;
  if (reply.length < LIST) return false;
  uint32_t length = get_be16(reply.bytes + LIST_LENGTH);
  if (length > reply.length - LIST) return false;
  const uint8_t* end = reply.bytes + LIST + length;
  for (const uint8_t* at = reply.bytes + LIST; at < end;) {
    if (!skip_entry(&at, end)) return false;
  }
  gBadList = false;
  gRegionCount = 0;
  for (const uint8_t* at = reply.bytes + LIST; at < end && !gRefused;) {
    if (gRegionCount == MOST_REGIONS) {
      say("DUMP_MODE: more than 20 regions, the others are left out");
      break;
    }
    take_entry(&at, end);
  }
  return true;
}

// ---- reading a region ----

static uint32_t asked_length(const Region& region) {
  uint32_t left = region.length - region.done;
  return left < MOST_READ ? left : uint32_t{MOST_READ};
}

uint32_t build_memory_read(uint8_t* packet) {
  const Region& region = gRegions[gCurrentRegion];
  packet[0] = DMSS_MEMORY_READ;
  put_be32(packet + 1, region.base + region.done);
  put_be16(packet + 5, asked_length(region));
  return 7;
}

static bool write_all(int fd, const uint8_t* data, uint32_t length, uint32_t offset) {
  for (uint32_t done = 0; done < length;) {
    ssize_t n = pwrite(fd, data + done, length - done, static_cast<off_t>(offset) + done);
    if (n < 0 && errno == EINTR) continue;
    if (n == 0) errno = ENOSPC;
    if (n <= 0) return false;
    done += static_cast<uint32_t>(n);
  }
  return true;
}

// What the reply really brought, for the address that was asked, and never more than was asked.
bool save_memory(const Reply& reply) {
  Region& region = gRegions[gCurrentRegion];
  if (reply.length <= DATA) return false;
  if (get_be32(reply.bytes + DATA_ADDRESS) != region.base + region.done) return false;
  uint32_t length = get_be16(reply.bytes + DATA_LENGTH);
  if (length > reply.length - DATA) length = reply.length - DATA;
  if (length > asked_length(region)) length = asked_length(region);
  if (length == 0) return false;
  if (!write_all(region.descriptor, reply.bytes + DATA, length, region.done)) {
    gRefused = true;
    printf("DUMP_MODE: can't write %s: %s\n", region.path, strerror(errno));
    fflush(stdout);
    return true;  // the modem has done its part: asking it again does not help
  }
  region.done += length;
  return true;
}

static int dump_is_translating() {
  const Region& region = gRegions[gCurrentRegion];
  return region.done < region.length ? 1 : 0;
}

// A read that fails is asked again without a limit, until the modem is gone. The percentage is that
// of the first region, which is the modem's RAM.
static bool read_region() {
  Region& region = gRegions[gCurrentRegion];
  int32_t percent_at_start = FW_DL_STATUS;
  while (dump_is_translating() == 1) {
    if (gCurrentRegion == 0) {
      int64_t left = 100 - percent_at_start;
      modem_status_dump(percent_at_start +
                        static_cast<int32_t>(region.done * left / region.length));
    }
    bool good = dload_wrapper_write(DMSS_MEMORY_READ) == 1;
    if (gRefused || (!good && diag_status() == 0)) return false;
  }
  return true;
}

static bool save_region() {
  Region& region = gRegions[gCurrentRegion];
  region.descriptor =
      open(region.path, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, FILE_MODE);
  if (region.descriptor < 0) {
    printf("DUMP_MODE: can't open %s: %s\n", region.path, strerror(errno));
    fflush(stdout);
    return false;
  }
  bool good = read_region();
  close(region.descriptor);
  region.descriptor = -1;
  return good;
}

// ---- the dump ----

static void name_directory() {
  time_t now = time(nullptr);
  tm t = {};
  localtime_r(&now, &t);
  snprintf(gDirectory, sizeof gDirectory, "dump_%02d%02d%04d_%02d%02d/", t.tm_mon + 1, t.tm_mday,
           t.tm_year + 1900, t.tm_hour, t.tm_min);
}

// The mode has no search bit: only the superuser could write into such a directory.
static bool make_directory() {
  if (mkdir(gDirectory, DIRECTORY_MODE) != 0 && errno != EEXIST) {
    say("DUMP_MODE: can't create direcory");
    return false;
  }
  if (access(gDirectory, X_OK) != 0) chmod(gDirectory, SEARCHABLE);
  return true;
}

static bool dump() {
  if (!take_protocol_buffers()) return false;
  if (diag_status() == 0 && diag_open(DEVICE) != 1) {
    diag_close();
    say("DUMP_MODE: can't open the port");
    return false;
  }
  if (dload_wrapper_write(DMSS_MEMORY_DEBUG) == 0) {
    if (gBadList) say("DUMP_MODE: the list of regions is damaged, refused");
    return false;
  }
  if (gRefused) return false;
  if (!make_directory()) return false;
  for (gCurrentRegion = 0; gCurrentRegion < gRegionCount; ++gCurrentRegion) {
    if (!save_region()) return false;
  }
  return true;
}

static void give_buffers_back() {
  free(dload_tbuf);
  free(dload_rbuf);
  dload_tbuf = dload_rbuf = nullptr;
}

int mem_dump_process() {
  gPrintedPercent = -1;
  modem_status_dump(0);
  for (Region& region : gRegions) region = {};
  gRegionCount = gCurrentRegion = 0;
  gRefused = gBadList = false;
  name_directory();
  bool saved = dump();
  give_buffers_back();
  if (saved) modem_status_dump(100);
  return 1;
}
