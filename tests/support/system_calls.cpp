// The system calls of the module under test, defined by the test program. They go to the calling
// thread's World if it has one, otherwise to the system; by system call number where they may be
// needed before any library is initialised.
#undef _FORTIFY_SOURCE
#undef _FILE_OFFSET_BITS  // otherwise open is an alias of open64
#include <arpa/inet.h>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <net/if.h>
#include <poll.h>
#include <stdarg.h>
#include <stdio.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <syslog.h>
#include <termios.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <mutex>

#include "tests/support/world.h"

using test::Time;
using test::World;
using namespace std::chrono_literals;

static const char MODEM_DEVICE[] = "/dev/tts/USB1";

#define EXPORTED extern "C" __attribute__((visibility("default")))
#define IN_WORLD(world)                              \
  World* world = World::current();                   \
  std::unique_lock<std::recursive_mutex> world_lock; \
  if (world != nullptr && world->runs_free) world_lock = std::unique_lock(world->mutex)

template <typename Function>
static Function* next_definition(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

// The file to use for a path; null with errno set if opening it should fail.
static const char* real_path(World* world, const char* path) {
  if (world == nullptr) return path;
  if (auto it = world->missing.find(path); it != world->missing.end()) {
    errno = it->second;
    return nullptr;
  }
  if (auto it = world->files.find(path); it != world->files.end()) return it->second.c_str();
  return path;
}

static int open_in_world(const char* path, int flags, mode_t mode) {
  IN_WORLD(world);
  const char* real = real_path(world, path);
  if (real == nullptr) return -1;
  if (world != nullptr && real == path && strcmp(path, MODEM_DEVICE) == 0) {
    return world->open_port();
  }
  return static_cast<int>(syscall(SYS_openat, AT_FDCWD, real, flags, mode));
}

static mode_t mode_of(int flags, va_list arguments) {
  return (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
}

#define DEFINE_OPEN(name)                               \
  EXPORTED int name(const char* path, int flags, ...) { \
    va_list arguments;                                  \
    va_start(arguments, flags);                         \
    mode_t mode = mode_of(flags, arguments);            \
    va_end(arguments);                                  \
    return open_in_world(path, flags, mode);            \
  }
DEFINE_OPEN(open)
DEFINE_OPEN(open64)

static FILE* fopen_in_world(const char* name, const char* path, const char* mode) {
  IN_WORLD(world);
  const char* real = real_path(world, path);
  if (real == nullptr) return nullptr;
  return next_definition<FILE*(const char*, const char*)>(name)(real, mode);
}
EXPORTED FILE* fopen(const char* path, const char* mode) {
  return fopen_in_world("fopen", path, mode);
}
EXPORTED FILE* fopen64(const char* path, const char* mode) {
  return fopen_in_world("fopen64", path, mode);
}

EXPORTED int unlink(const char* path) noexcept {
  IN_WORLD(world);
  const char* real = real_path(world, path);
  return real != nullptr ? static_cast<int>(syscall(SYS_unlinkat, AT_FDCWD, real, 0)) : -1;
}

EXPORTED DIR* opendir(const char* path) {
  IN_WORLD(world);
  const char* real = real_path(world, path);
  if (real == nullptr) return nullptr;
  return next_definition<DIR*(const char*)>("opendir")(real);
}

// A planned error, or fewer bytes.
static bool misbehaves(size_t& size) {
  World* world = World::current();
  if (world == nullptr || world->file_calls.empty()) return false;
  test::PortCall call = world->file_calls.front();
  world->file_calls.pop_front();
  errno = call.error;
  size = std::min(size, call.at_most.value_or(size));
  return call.error != 0;
}
#define DEFINE_TRANSFER(name, Bytes, Offset)                                                 \
  EXPORTED ssize_t name(int fd, Bytes bytes, size_t size, Offset at) {                       \
    if (misbehaves(size)) return -1;                                                         \
    return next_definition<ssize_t(int, Bytes, size_t, Offset)>(#name)(fd, bytes, size, at); \
  }
DEFINE_TRANSFER(pread, void*, off_t)
DEFINE_TRANSFER(pread64, void*, off64_t)
DEFINE_TRANSFER(pwrite, const void*, off_t)
DEFINE_TRANSFER(pwrite64, const void*, off64_t)

EXPORTED int socket(int domain, int type, int protocol) noexcept {
  World* world = World::current();
  if (world != nullptr && world->socket_error != 0) return errno = world->socket_error, -1;
  return static_cast<int>(syscall(SYS_socket, domain, type, protocol));
}

EXPORTED int ioctl(int fd, unsigned long request, ...) noexcept {
  va_list arguments;
  va_start(arguments, request);
  void* argument = va_arg(arguments, void*);
  va_end(arguments);
  World* world = World::current();
  if (world == nullptr || (request != SIOCGIFADDR && request != SIOCGIFDSTADDR)) {
    return static_cast<int>(syscall(SYS_ioctl, fd, request, argument));
  }
  if (world->ppp0_error != 0) return errno = world->ppp0_error, -1;
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  inet_aton(world->ppp0_addresses[request == SIOCGIFDSTADDR].c_str(), &address.sin_addr);
  memcpy(&static_cast<ifreq*>(argument)->ifr_addr, &address, sizeof address);
  return 0;
}

EXPORTED int close(int fd) {
  IN_WORLD(world);
  if (world != nullptr && world->is_port(fd)) return world->close_port(fd), 0;
  return static_cast<int>(syscall(SYS_close, fd));
}

EXPORTED ssize_t write(int fd, const void* bytes, size_t size) {
  {
    IN_WORLD(world);
    if (world != nullptr && world->is_port(fd)) {
      return world->write_port(static_cast<const uint8_t*>(bytes), size);
    }
  }
  return syscall(SYS_write, fd, bytes, size);
}

EXPORTED ssize_t read(int fd, void* bytes, size_t size) {
  {
    IN_WORLD(world);
    if (world != nullptr && world->is_port(fd)) {
      return world->read_port(static_cast<uint8_t*>(bytes), size);
    }
  }
  return syscall(SYS_read, fd, bytes, size);
}

EXPORTED int poll(pollfd* files, nfds_t count, int ms) {
  {
    IN_WORLD(world);
    if (world != nullptr && count == 1 && world->is_port(files->fd)) {
      int ready = world->wait_for_port(files->events, std::chrono::milliseconds(ms));
      files->revents = ready > 0 ? files->events : 0;
      return ready;
    }
  }
  timespec limit = {ms / 1000, ms % 1000 * 1'000'000L};
  return static_cast<int>(syscall(SYS_ppoll, files, count, ms < 0 ? nullptr : &limit, nullptr, 0));
}

EXPORTED int tcgetattr(int fd, termios* settings) noexcept {
  IN_WORLD(world);
  if (world == nullptr || !world->is_port(fd)) {
    return next_definition<int(int, termios*)>("tcgetattr")(fd, settings);
  }
  *settings = world->line_settings;
  return 0;
}
EXPORTED int tcsetattr(int fd, int when, const termios* settings) noexcept {
  IN_WORLD(world);
  if (world == nullptr || !world->is_port(fd)) {
    return next_definition<int(int, int, const termios*)>("tcsetattr")(fd, when, settings);
  }
  world->line_settings = *settings;
  return 0;
}
EXPORTED int tcflush(int fd, int queue) noexcept {
  IN_WORLD(world);
  if (world == nullptr || !world->is_port(fd)) {
    return next_definition<int(int, int)>("tcflush")(fd, queue);
  }
  if (queue == TCIFLUSH) world->flush_port();
  return 0;
}

static void sleep_in_world(Time time) {
  if (World* world = World::current()) {
    if (world->runs_free) {
      world->sleep_free(time);
    } else {
      world->pass(time);
    }
    return;
  }
  timespec real = {static_cast<time_t>(time / 1s), static_cast<long>((time % 1s).count())};
  syscall(SYS_nanosleep, &real, nullptr);
}
EXPORTED unsigned sleep(unsigned seconds) {
  return sleep_in_world(std::chrono::seconds(seconds)), 0;
}
EXPORTED int usleep(useconds_t us) { return sleep_in_world(std::chrono::microseconds(us)), 0; }

// In a World no alarm goes off; tests raise the signal or call the handler.
EXPORTED unsigned alarm(unsigned seconds) noexcept {
  IN_WORLD(world);
  if (world == nullptr) return next_definition<unsigned(unsigned)>("alarm")(seconds);
  world->alarm = seconds;
  return 0;
}

EXPORTED int clock_gettime(clockid_t clock, timespec* now) noexcept {
  IN_WORLD(world);
  if (world == nullptr) return static_cast<int>(syscall(SYS_clock_gettime, clock, now));
  if (world->clock_error != 0) return errno = world->clock_error, -1;
  auto since_start = world->now();
  time_t start = clock == CLOCK_REALTIME ? world->wall_clock_start : World::MONOTONIC_START / 1s;
  *now = {start + static_cast<time_t>(since_start / 1s),
          static_cast<long>((since_start % 1s).count())};
  return 0;
}
EXPORTED time_t time(time_t* result) noexcept {
  timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  if (result != nullptr) *result = now.tv_sec;
  return now.tv_sec;
}

static void log_in_world(int priority, const char* format, va_list arguments) {
  char text[4096];
  vsnprintf(text, sizeof text, format, arguments);
  IN_WORLD(world);
  if (world != nullptr && world->keeps_log) world->log.push_back({priority, text});
}
EXPORTED void syslog(int priority, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  log_in_world(priority, format, arguments);
  va_end(arguments);
}
EXPORTED void __syslog_chk(int priority, int, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  log_in_world(priority, format, arguments);
  va_end(arguments);
}
