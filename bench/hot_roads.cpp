// Runs one hot road of the module a number of times, for a tool that counts instructions: the
// difference between two numbers of runs is what the road costs, without the start of the program.
//
// A modem in this program answers at once, and its clock stands still: every run is the same.
// Usage: hot_roads ROAD TIMES
#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <stdlib.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <span>
#include <string_view>

#include "bench/samples.h"
#include "core/bytes.h"
#include "core/module_state.h"
#include "download/dmss_download.h"
#include "download/image_set.h"
#include "download/streaming_download.h"
#include "include/modem_download.h"
#include "include/vurn.h"
#include "include/zop.h"
#include "link/event_listener.h"
#include "link/serial_port.h"
#include "link/upcalls.h"

using Bytes = std::vector<uint8_t>;

// ---- the modem ----

enum { VENDOR = 0xCF, PAYLOAD = 5, READ_SIZE = 1024, MOST_READS = 201 };
enum : uint32_t { BASE = 0x00800000 };

static std::vector<Bytes> answers(256);  // by the second byte of the request
static std::span<const Bytes> replies;   // one after another, if there are any
static std::span<const uint8_t> pending;

static void answer_vendor(uint8_t subcommand, const Bytes& payload) {
  Bytes packet = {VENDOR, subcommand, 0, 0, 0};
  packet.insert(packet.end(), payload.begin(), payload.end());
  answers[subcommand] = framed(packet, false);
}

// A registered modem with WCDMA service.
static void prepare_modem() {
  for (int subcommand = 0; subcommand < 256; ++subcommand)
    answer_vendor(static_cast<uint8_t>(subcommand), Bytes(8));
  answer_vendor(' ', {0xB5, 0xFF});
  answer_vendor('T', {ZOP_ATTACH_ACCEPTED, 0, 0, 0});
  answer_vendor(';', {ZOP_SERVICE_FULL});
  answer_vendor('<', {ZOP_REGISTRATION_SUCCESS});
  Bytes screen = sample_bytes(sizeof(zop_screen));
  screen[0] = ZOP_SCREEN_WCDMA;
  screen[1] = ZOP_SERVICE_FULL;
  answer_vendor('4', screen);
}

static bool is_port(int fd) { return fd == SER_SIG; }

static void take_request(const uint8_t* frame) {
  pending = replies.empty() ? answers[frame[1]] : replies.front();
  if (replies.size() > 1) replies = replies.subspan(1);
}

// ---- system calls of the module ----

static int ticks_left = 0;
static void* (*thread_start)(void*) = nullptr;
static void* thread_argument = nullptr;

extern "C" {
ssize_t __real_write(int fd, const void* bytes, size_t size);
ssize_t __real_read(int fd, void* bytes, size_t size);

ssize_t __wrap_write(int fd, const void* bytes, size_t size) {
  if (!is_port(fd)) return __real_write(fd, bytes, size);
  take_request(static_cast<const uint8_t*>(bytes));
  return static_cast<ssize_t>(size);
}
ssize_t __wrap_read(int fd, void* bytes, size_t size) {
  if (!is_port(fd)) return __real_read(fd, bytes, size);
  size = std::min(size, pending.size());
  memcpy(bytes, pending.data(), size);
  pending = pending.subspan(size);
  return static_cast<ssize_t>(size);
}
int __wrap_poll(pollfd* files, nfds_t, int) {
  files->revents = files->events;
  return 1;
}
int __wrap_usleep(useconds_t) { return 0; }
int __wrap_clock_gettime(clockid_t, timespec* now) {
  *now = {1'280'000'000, 0};
  return 0;
}
time_t __wrap_time(time_t*) { return 1'280'000'000; }
void __wrap_syslog(int, const char*, ...) {}
void __wrap___syslog_chk(int, int, const char*, ...) {}

// The listener's thread runs when this program calls it, and sleeps no time.
int __wrap_pthread_create(pthread_t*, const pthread_attr_t*, void* (*start)(void*),
                          void* argument) {
  thread_start = start;
  thread_argument = argument;
  return 0;
}
int __wrap_pthread_cond_timedwait(pthread_cond_t*, pthread_mutex_t*, const timespec*) {
  if (ticks_left-- == 0) THREAD_STATUS = LISTENER_STOPPED;
  return ETIMEDOUT;
}
}

// ---- roads ----

static void require(bool good) {
  if (!good) abort();
}

template <size_t SIZE>
static void encode(int times) {
  Bytes bytes = sample_bytes(SIZE);
  Bytes frame(2 * (SIZE + 2) + 2);
  for (; times > 0; --times) require(encode_frame(frame.data(), bytes.data(), SIZE, false) > SIZE);
}

template <size_t SIZE>
static void decode(int times) {
  Bytes frame = framed(sample_bytes(SIZE), false);
  Bytes payload(frame.size());
  uint32_t length = static_cast<uint32_t>(frame.size() - 1);
  int32_t decoded;
  for (; times > 0; --times)
    require(decode_frame(frame.data(), length, payload.data(), &decoded) == 0);
}

static void query(int times) {
  int32_t rssi;
  for (; times > 0; --times) require(zop_get_rssi(&rssi) == ZOP_SUCCESS);
}

// Of three ticks one fetches the screen.
static void listener_tick(int times) {
  require(zop_debug_start(1) == ZOP_SUCCESS);
  ticks_left = times;
  thread_start(thread_argument);
}

static void bars(int times) {
  gModuleOpen = true;
  int found;
  for (; times > 0; --times) require(vurn_get_bars(&found) == VURN_OK);
}

static void log_string(int times) {
  fill_record();
  char text[8192];
  for (; times > 0; --times) require(prv_zop_output_to_log_string(text, sizeof text, 1) == 1);
}

static void syslog_report(int times) {
  fill_record();
  for (; times > 0; --times) prv_zop_output_to_syslog(1, "exception", 0);
}

// The same 2048 bytes each time.
static void stream_write(int times) {
  FILE* file = tmpfile();
  Bytes image = sample_bytes(2048);
  fwrite(image.data(), 1, image.size(), file);
  fflush(file);
  take_protocol_buffers();
  gCurrentImage = IMAGE_AMSS;
  const Bytes reply[] = {framed({0x08, 0, 0, 0, 0}, true)};
  replies = reply;
  for (; times > 0; --times) {
    gImages[IMAGE_AMSS] = {fileno(file), 0, 4096, 5};
    require(hostdl_cmd_write(STREAM_WRITE) == 1);
  }
}

static int discard(const mem_dump_region*, uint32_t*, void*) { return open("/dev/null", O_WRONLY); }

static Bytes region_list() {
  Bytes packet = {0x11, 0, 17, 1, 0, 0, 0, 0, 0, 0, 0, 0, 'R', 'A', 'M', 0, 'r', 'a', 'm', 0};
  put_be32(packet.data() + 4, BASE);
  put_be32(packet.data() + 8, MOST_READS * READ_SIZE);
  return framed(packet, true);
}

static void memory_read(int times) {
  std::vector<Bytes> memory = {region_list()};
  for (uint32_t i = 0; i < MOST_READS; ++i) {
    Bytes packet = sample_bytes(7 + READ_SIZE);
    packet[0] = 0x13;
    put_be32(packet.data() + 1, BASE + i * READ_SIZE);
    put_be16(packet.data() + 5, READ_SIZE);
    memory.push_back(framed(packet, true));
  }
  replies = memory;
  take_protocol_buffers();
  mem_dump_set_files(discard, nullptr);
  require(dload_cmd_write(DMSS_MEMORY_DEBUG) == 1);
  for (; times > 0; --times) require(dload_cmd_write(DMSS_MEMORY_READ) == 1);
}

struct Road {
  std::string_view name;
  void (*run)(int times);
};

static constexpr Road ROADS[] = {
    {"encode_3", encode<3>},
    {"encode_133", encode<133>},
    {"encode_350", encode<350>},
    {"encode_2048", encode<2048>},
    {"decode_3", decode<3>},
    {"decode_133", decode<133>},
    {"decode_350", decode<350>},
    {"decode_2048", decode<2048>},
    {"query", query},
    {"listener_tick", listener_tick},
    {"bars", bars},
    {"log_string", log_string},
    {"syslog_report", syslog_report},
    {"stream_write", stream_write},
    {"memory_read", memory_read},
};

// Without arguments the names of the roads.
int main(int count, char** arguments) {
  if (count != 3) {
    for (const Road& road : ROADS) printf("%s\n", road.name.data());
    return count == 1 ? 0 : 2;
  }
  prepare_modem();
  vurn_set_log_mask(VURN_LOG_INFO | VURN_LOG_WARNING | VURN_LOG_ERROR);
  require(diag_open("/dev/null") == 1);
  for (const Road& road : ROADS) {
    if (road.name != arguments[1]) continue;
    road.run(atoi(arguments[2]));
    return 0;
  }
  return 2;
}
