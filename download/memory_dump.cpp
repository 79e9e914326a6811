// The region list comes from a modem that has just crashed: its lengths and counts are checked
// against the bytes received, and no name can lead out of the dump's directory. Other users may be
// able to write next to that directory: it is opened once, and only new files are created in it.
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

enum { MAX_REGIONS = 20, TEXT_SIZE = 128, MAX_READ = 1024 };
enum { LIST_LENGTH = 1, LIST = 3 };                          // in the reply with the list
enum { ENTRY_BASE = 1, ENTRY_LENGTH = 5, ENTRY_TEXTS = 9 };  // in an entry
enum { DATA_ADDRESS = 1, DATA_LENGTH = 5, DATA = 7 };        // in the reply to a read
enum { DIRECTORY_MODE = 0666, FILE_MODE = 0666, SEARCHABLE = 0755 };

namespace {
struct Region {
  int32_t descriptor;  // -1 when the file is closed
  uint32_t done;       // bytes saved
  uint32_t base;
  uint32_t length;
  char path[TEXT_SIZE];
};
}  // namespace

static constinit Region gRegions[MAX_REGIONS] = {};
static constinit uint32_t gRegionCount = 0;
static constinit uint32_t gCurrentRegion = 0;
static constinit char gDirectory[TEXT_SIZE] = "";  // its name, without a slash
static constinit int32_t gDirectoryDescriptor = -1;
static constinit bool gBadList = false;         // the last list of regions was incomplete
static constinit bool gRegionSkipped = false;   // the reason has been printed
static constinit bool gDumpEnded = false;       // the reason has been printed
static constinit int32_t gPrintedPercent = -1;  // in any dump

// The host's files, if it has its own.
using OpenFile = int (*)(const mem_dump_region*, uint32_t*, void*);
static constinit OpenFile gOpenFile = nullptr;
static constinit void* gOpenContext = nullptr;

static void modem_status_dump(int32_t percent) {
  FW_DL_STATUS = percent;
  if (percent == gPrintedPercent) return;
  gPrintedPercent = percent;
  printf("DUMP_MODE: PERCENT=%d\n", percent);
  fflush(stdout);
}

// ---- files ----

// The modem's text, with unprintable bytes as \xNN.
static void print_escaped(const char* text) {
  for (const char* c = text; *c != '\0'; ++c) {
    unsigned char byte = static_cast<unsigned char>(*c);
    bool plain = byte >= 0x20 && byte < 0x7F && byte != '\\';
    if (plain) putchar(byte);
    if (!plain) printf("\\x%02X", byte);
  }
}

static bool skip_region(const char* reason, const char* text) {
  gRegionSkipped = true;
  printf("DUMP_MODE: left out, %s: \"", reason);
  print_escaped(text);
  print_line("\"");
  return false;
}

static bool refuse_directory(const char* reason) {
  printf("DUMP_MODE: can't use %s: %s\n", gDirectory, reason);
  fflush(stdout);
  return false;
}

// A directory that exists must be our own, from a dump in the same minute. The mode has no search
// bit, without which only the superuser can create files in the directory.
static bool open_directory() {
  if (mkdir(gDirectory, DIRECTORY_MODE) != 0 && errno != EEXIST) {
    print_line("DUMP_MODE: can't create direcory");
    return false;
  }
  gDirectoryDescriptor = open(gDirectory, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  struct stat found;
  if (gDirectoryDescriptor < 0 || fstat(gDirectoryDescriptor, &found) != 0)
    return refuse_directory(strerror(errno));
  if (found.st_uid != geteuid()) return refuse_directory("it belongs to another user");
  if (faccessat(gDirectoryDescriptor, ".", X_OK, 0) != 0) fchmod(gDirectoryDescriptor, SEARCHABLE);
  return true;
}

static bool is_file_name(const char* name) {
  return name[0] != '\0' && strchr(name, '/') == nullptr && strcmp(name, ".") != 0 &&
         strcmp(name, "..") != 0;
}

static bool is_our_file(const char* name) {
  struct stat found;
  return fstatat(gDirectoryDescriptor, name, &found, AT_SYMLINK_NOFOLLOW) == 0 &&
         S_ISREG(found.st_mode) && found.st_uid == geteuid();
}

// If an earlier region, or a dump in the same minute, has used the name, a number is added: no file
// is overwritten.
static bool make_file(Region* region, const char* name) {
  constexpr int FLAGS = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  if (!is_file_name(name)) return skip_region("no file name", name);
  int length = snprintf(region->path, sizeof region->path, "%s/%s", gDirectory, name);
  for (int number = 2; length < TEXT_SIZE; ++number) {
    const char* in_directory = region->path + strlen(gDirectory) + 1;
    region->descriptor = openat(gDirectoryDescriptor, in_directory, FLAGS, FILE_MODE);
    if (region->descriptor >= 0) return true;
    if (errno != EEXIST) return skip_region(strerror(errno), region->path);
    if (!is_our_file(in_directory))
      return skip_region("something else is in its way", region->path);
    length = snprintf(region->path, sizeof region->path, "%s/%s.%d", gDirectory, name, number);
  }
  return skip_region("file name too long", name);
}

static void close_file(int32_t* descriptor) {
  if (*descriptor >= 0) close(*descriptor);
  *descriptor = -1;
}

// ---- the list of regions ----

// The text at *at, which moves past it; null when nothing before the end terminates it.
static const char* take_text(const uint8_t** at, const uint8_t* end) {
  const void* text = *at;
  const void* terminator = memchr(text, 0, static_cast<size_t>(end - *at));
  if (terminator == nullptr) return nullptr;
  *at = static_cast<const uint8_t*>(terminator) + 1;
  return static_cast<const char*>(text);
}

// The region of the entry at *at, which moves past it, and its file name; null when the entry is
// cut short. The first of its two texts is a description, which nobody reads.
static const char* take_entry(const uint8_t** at, const uint8_t* end, Region* region) {
  if (end - *at < ENTRY_TEXTS) return nullptr;
  *region = {};
  region->base = get_be32(*at + ENTRY_BASE);
  region->length = get_be32(*at + ENTRY_LENGTH);
  *at += ENTRY_TEXTS;
  return take_text(at, end) != nullptr ? take_text(at, end) : nullptr;
}

static void add_region(Region* region, const char* name) {
  if (!make_file(region, name)) return;
  printf("DUMP_MODE: FILE=");
  print_escaped(region->path);
  print_line("");
  gRegions[gRegionCount++] = *region;
}

// The host's file. Its descriptors beyond the table are closed.
static void add_host_region(Region* region, const char* name) {
  const mem_dump_region offered = {region->base, region->length, name};
  region->descriptor = gOpenFile(&offered, &region->done, gOpenContext);
  if (region->done > region->length) region->done = region->length;
  if (region->descriptor < 0) return;
  snprintf(region->path, sizeof region->path, "%s", name);
  if (gRegionCount == MAX_REGIONS) {
    gRegionSkipped = true;
    close(region->descriptor);
    return;
  }
  gRegions[gRegionCount++] = *region;
}

static void skip_the_rest() {
  gRegionSkipped = true;
  print_line("DUMP_MODE: left out, all regions after the 20th");
}

static void take_list(const uint8_t* at, const uint8_t* end) {
  Region region;
  while (at < end) {
    if (gOpenFile == nullptr && gRegionCount == MAX_REGIONS) return skip_the_rest();
    const char* name = take_entry(&at, end, &region);
    if (name == nullptr) return;  // the list has been checked
    if (gOpenFile != nullptr) {
      add_host_region(&region, name);
    } else {
      add_region(&region, name);
    }
  }
}

// An incomplete list is a bad reply and is requested again. A complete list that can't be used ends
// the dump.
bool accept_region_list(const Reply& reply) {
  gBadList = true;
  if (reply.length < LIST) return false;
  uint32_t length = get_be16(reply.bytes + LIST_LENGTH);
  if (length > reply.length - LIST) return false;
  const uint8_t* end = reply.bytes + LIST + length;
  Region checked;
  for (const uint8_t* at = reply.bytes + LIST; at < end;) {
    if (take_entry(&at, end, &checked) == nullptr) return false;
  }
  gBadList = false;
  gDumpEnded = gOpenFile == nullptr && !open_directory();
  if (!gDumpEnded) take_list(reply.bytes + LIST, end);
  return true;
}

// ---- reading a region ----

static uint32_t asked_length(const Region& region) {
  uint32_t left = region.length - region.done;
  return left < MAX_READ ? left : uint32_t{MAX_READ};
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

// Saves the bytes of the reply, if they are from the requested address, and no more than requested.
bool save_memory(const Reply& reply) {
  Region& region = gRegions[gCurrentRegion];
  if (reply.length <= DATA) return false;
  if (get_be32(reply.bytes + DATA_ADDRESS) != region.base + region.done) return false;
  uint32_t length = get_be16(reply.bytes + DATA_LENGTH);
  if (length > reply.length - DATA) length = reply.length - DATA;
  if (length > asked_length(region)) length = asked_length(region);
  if (length == 0) return false;
  if (!write_all(region.descriptor, reply.bytes + DATA, length, region.done)) {
    gDumpEnded = true;
    const char* reason = strerror(errno);
    printf("DUMP_MODE: can't write ");
    print_escaped(region.path);
    printf(": %s\n", reason);
    fflush(stdout);
    return true;  // reading again would not help
  }
  region.done += length;
  return true;
}

static int dump_is_translating() {
  const Region& region = gRegions[gCurrentRegion];
  return region.done < region.length ? 1 : 0;
}

// A failed read is repeated until the modem is gone. The percentage is that of the first region,
// the modem's RAM.
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
    if (gDumpEnded || (!good && diag_status() == 0)) return false;
  }
  return true;
}

// ---- the dump ----

static void name_directory() {
  time_t now = time(nullptr);
  tm t = {};
  localtime_r(&now, &t);
  snprintf(gDirectory, sizeof gDirectory, "dump_%02d%02d%04d_%02d%02d", t.tm_mon + 1, t.tm_mday,
           t.tm_year + 1900, t.tm_hour, t.tm_min);
}

static bool dump() {
  if (!take_protocol_buffers()) return false;
  if (diag_status() == 0 && diag_open(MODEM_DEVICE) != 1) {
    diag_close();
    print_line("DUMP_MODE: can't open the port");
    return false;
  }
  if (dload_wrapper_write(DMSS_MEMORY_DEBUG) == 0) {
    if (gBadList) print_line("DUMP_MODE: the list of regions is damaged, refused");
    return false;
  }
  if (gDumpEnded) return false;
  for (gCurrentRegion = 0; gCurrentRegion < gRegionCount; ++gCurrentRegion) {
    if (!read_region()) return false;
    close_file(&gRegions[gCurrentRegion].descriptor);
  }
  return !gRegionSkipped;
}

// An empty file is removed, so that a repeated dump can use its name.
static void close_files() {
  for (uint32_t i = 0; i < gRegionCount; ++i) {
    Region& region = gRegions[i];
    close_file(&region.descriptor);
    bool is_empty = region.done == 0 && region.length > 0;
    if (is_empty && gDirectoryDescriptor >= 0)
      unlinkat(gDirectoryDescriptor, region.path + strlen(gDirectory) + 1, 0);
  }
  close_file(&gDirectoryDescriptor);
}

static void release_buffers() {
  free(dload_tbuf);
  free(dload_rbuf);
  dload_tbuf = dload_rbuf = nullptr;
}

void mem_dump_set_files(int (*open)(const mem_dump_region* region, uint32_t* done, void* context),
                        void* context) {
  gOpenFile = open;
  gOpenContext = context;
}

int mem_dump_process() {
  modem_status_dump(0);
  for (Region& region : gRegions) region = {};
  gRegionCount = gCurrentRegion = 0;
  gDumpEnded = gRegionSkipped = gBadList = false;
  name_directory();
  bool saved = dump();
  close_files();
  release_buffers();
  if (saved) modem_status_dump(100);
  return 1;
}
