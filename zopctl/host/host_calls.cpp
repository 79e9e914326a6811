// The definitions that the module binds to. The modem must not become zopctl's controlling
// terminal: when it hangs up the program would end.
#undef _FORTIFY_SOURCE
#undef _FILE_OFFSET_BITS  // with it open would be open64
#include "zopctl/host/host_calls.h"

#include <arpa/inet.h>
#include <dirent.h>
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <net/if.h>
#include <poll.h>
#include <stdarg.h>
#include <stdio.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <syslog.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <mutex>

#include "zopctl/host/device_sharing.h"
#include "zopctl/host/port_lock.h"
#include "zopctl/text/printable.h"

namespace zopctl {

namespace {
struct Settings {
  std::string device = MODULE_DEVICE;
  std::string simulated_root;  // empty: the device's own files
  std::string ppp0_addresses[2];
  std::function<void()> root_refresh;
  LogSink log_sink;
  LineWatch line_watch;  // set only while the module is idle
  LineSink captured;     // the same
  LineSink followed;
  std::function<void(unsigned)> sleep_watch;
};
}  // namespace

// Made by the first call and never destroyed: a library may open a file before main and after it.
static Settings& settings() {
  static Settings& made = *new Settings;
  return made;
}
static std::mutex wait_mutex;
static WaitState waiting = {};  // guarded by wait_mutex
static bool (*hurried)() = nullptr;
static std::mutex log_mutex;
static std::atomic<int> device_fd = -1;
static double sleep_speed = 1;

void map_device(const std::string& path) { settings().device = path; }
const std::string& mapped_device() { return settings().device; }
LogSink current_log() {
  std::lock_guard lock(log_mutex);
  return settings().log_sink;
}
void hurry_when(bool (*condition)()) { hurried = condition; }
void speed_up_sleeps(double factor) { sleep_speed = factor; }
void watch_sleeps(std::function<void(unsigned)> watch) {
  settings().sleep_watch = std::move(watch);
}
void watch_line(LineWatch watch) { settings().line_watch = std::move(watch); }
void capture_line(LineSink sink) { settings().captured = std::move(sink); }
void follow_line(LineSink sink) { settings().followed = std::move(sink); }
void catch_log(LogSink sink) {
  std::lock_guard lock(log_mutex);
  settings().log_sink = std::move(sink);
}

void map_root(const std::string& root, const std::string& local, const std::string& peer) {
  settings().simulated_root = root;
  settings().ppp0_addresses[0] = local;
  settings().ppp0_addresses[1] = peer;
}

bool is_simulated() { return !settings().simulated_root.empty(); }
const std::string& simulated_root() { return settings().simulated_root; }

void refresh_root(std::function<void()> refresh) { settings().root_refresh = std::move(refresh); }

WaitState wait_state() {
  std::lock_guard lock(wait_mutex);
  return waiting;
}

// The time counts from the first of several alike, as of attempts.
static void wait_for(WaitState::What what) {
  std::lock_guard lock(wait_mutex);
  if (waiting.what != what) waiting.since = std::chrono::steady_clock::now();
  waiting.what = what;
}

static void hear() {
  std::lock_guard lock(wait_mutex);
  if (waiting.what == WaitState::ANSWER) waiting.what = WaitState::NOTHING;
  waiting.has_heard = true;
}

static std::string mapped(const char* path) {
  for (const char* folder : {"/proc", "/etc/resolv.conf", "/var/local/wan"}) {
    if (!settings().simulated_root.empty() && strncmp(path, folder, strlen(folder)) == 0) {
      if (settings().root_refresh) settings().root_refresh();
      return settings().simulated_root + path;
    }
  }
  return path;
}

static int open_mapped(const char* path, int flags, mode_t mode) {
  std::string real = mapped(path);
  bool is_device = real == MODULE_DEVICE;
  if (is_device) {
    real = settings().device;
    flags |= O_NOCTTY | O_CLOEXEC;
    if (reservation_of(real)) {  // it may have come back as a node that is another program's
      errno = EBUSY;
      return -1;
    }
  }
  int fd = static_cast<int>(syscall(SYS_openat, AT_FDCWD, real.c_str(), flags, mode));
  if (!is_device || fd < 0) return fd;
  if (!lock_device(fd)) {
    syscall(SYS_close, fd);
    errno = EBUSY;
    return -1;
  }
  return device_fd = fd;
}

static bool line_is_cut(int fd, Direction direction, std::span<const uint8_t> bytes) {
  if (fd != device_fd || !settings().line_watch || settings().line_watch(direction, bytes))
    return false;
  errno = EIO;
  return true;
}

static bool is_hung_up(int fd) {
  pollfd line = {fd, 0, 0};
  return poll(&line, 1, 0) > 0 && (line.revents & POLLHUP) != 0;
}

// Tells what a read or write with the result n has carried. Keeps errno.
static void tell_sinks(int fd, Direction direction, const void* data, ssize_t n) {
  if (fd != device_fd) return;
  int error = errno;
  bool gone = (n < 0 && error == EIO) || (n == 0 && is_hung_up(fd));
  std::span<const uint8_t> bytes(static_cast<const uint8_t*>(data), n > 0 ? size_t(n) : 0);
  for (const LineSink* sink : {&settings().captured, &settings().followed}) {
    if (*sink && !bytes.empty()) (*sink)(direction, bytes);
    if (*sink && gone) (*sink)(direction, {});
  }
  errno = error;
}

static ssize_t write_watched(int fd, const void* data, size_t size) {
  if (line_is_cut(fd, Direction::TO_MODEM, {static_cast<const uint8_t*>(data), size})) return -1;
  ssize_t n = syscall(SYS_write, fd, data, size);
  if (fd == device_fd && n > 0) wait_for(WaitState::ANSWER);
  tell_sinks(fd, Direction::TO_MODEM, data, n);
  return n;
}

static ssize_t read_watched(int fd, void* data, size_t size) {
  ssize_t n = syscall(SYS_read, fd, data, size);
  if (fd == device_fd && n > 0) hear();
  tell_sinks(fd, Direction::FROM_MODEM, data, n);
  size_t held = n > 0 ? static_cast<size_t>(n) : 0;
  bool cut = line_is_cut(fd, Direction::FROM_MODEM, {static_cast<const uint8_t*>(data), held});
  return cut ? -1 : n;
}

static timespec as_timespec(double seconds) {
  auto whole = static_cast<time_t>(seconds);
  return {whole, static_cast<long>((seconds - static_cast<double>(whole)) * 1e9)};
}

// In slices, for the sleep watch. A signal does not shorten it unless the user wants to end.
static void sleep_watched(unsigned seconds) {
  constexpr double SLICE = 0.1;
  double left = seconds / sleep_speed;
  wait_for(WaitState::SLEEP);
  while (left > 0 && !(hurried != nullptr && hurried())) {
    if (settings().sleep_watch) settings().sleep_watch(static_cast<unsigned>(left) + 1);
    double slice = std::min(left, SLICE);
    timespec time = as_timespec(slice);
    while (nanosleep(&time, &time) != 0 && errno == EINTR && !(hurried != nullptr && hurried())) {
    }
    left -= slice;
  }
  wait_for(WaitState::NOTHING);
}

template <typename Function>
static Function* next_definition(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

static int interface_address(unsigned long request, void* argument) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  inet_aton(settings().ppp0_addresses[request == SIOCGIFDSTADDR].c_str(), &address.sin_addr);
  memcpy(&static_cast<ifreq*>(argument)->ifr_addr, &address, sizeof address);
  return 0;
}

static void log_line(int priority, const char* format, va_list arguments) {
  char line[2048];
  vsnprintf(line, sizeof line, format, arguments);
  std::string shown = printable(line);
  std::lock_guard lock(log_mutex);
  if (settings().log_sink) return settings().log_sink(priority, shown);
  using Syslog = void (*)(int, const char*, ...);
  static auto real = reinterpret_cast<Syslog>(dlsym(RTLD_NEXT, "syslog"));
  real(priority, "%s", shown.c_str());
}

}  // namespace zopctl

#define EXPORTED extern "C" __attribute__((visibility("default")))

#define DEFINE_OPEN(name)                               \
  EXPORTED int name(const char* path, int flags, ...) { \
    mode_t mode = 0;                                    \
    if ((flags & (O_CREAT | O_TMPFILE)) != 0) {         \
      va_list arguments;                                \
      va_start(arguments, flags);                       \
      mode = va_arg(arguments, mode_t);                 \
      va_end(arguments);                                \
    }                                                   \
    return zopctl::open_mapped(path, flags, mode);      \
  }
DEFINE_OPEN(open)
DEFINE_OPEN(open64)
EXPORTED int __open_2(const char* path, int flags) { return zopctl::open_mapped(path, flags, 0); }
EXPORTED int __open64_2(const char* path, int flags) { return zopctl::open_mapped(path, flags, 0); }

EXPORTED FILE* fopen(const char* path, const char* mode) {
  static auto real = zopctl::next_definition<FILE*(const char*, const char*)>("fopen");
  return real(zopctl::mapped(path).c_str(), mode);
}
EXPORTED FILE* fopen64(const char* path, const char* mode) { return fopen(path, mode); }

EXPORTED DIR* opendir(const char* path) {
  static auto real = zopctl::next_definition<DIR*(const char*)>("opendir");
  return real(zopctl::mapped(path).c_str());
}

EXPORTED int ioctl(int fd, unsigned long request, ...) noexcept {
  va_list arguments;
  va_start(arguments, request);
  void* argument = va_arg(arguments, void*);
  va_end(arguments);
  if (zopctl::is_simulated() && (request == SIOCGIFADDR || request == SIOCGIFDSTADDR)) {
    return zopctl::interface_address(request, argument);
  }
  return static_cast<int>(syscall(SYS_ioctl, fd, request, argument));
}

// The module sleeps between attempts to reach a modem or a SIM that is not ready.
EXPORTED unsigned sleep(unsigned seconds) {
  zopctl::sleep_watched(seconds);
  return 0;
}

EXPORTED ssize_t write(int fd, const void* data, size_t size) {
  return zopctl::write_watched(fd, data, size);
}
EXPORTED ssize_t read(int fd, void* data, size_t size) {
  return zopctl::read_watched(fd, data, size);
}
EXPORTED ssize_t __read_chk(int fd, void* data, size_t size, size_t) {
  return zopctl::read_watched(fd, data, size);
}
EXPORTED int close(int fd) {
  int device = fd;
  zopctl::device_fd.compare_exchange_strong(device, -1);
  return static_cast<int>(syscall(SYS_close, fd));
}

EXPORTED void syslog(int priority, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  zopctl::log_line(priority, format, arguments);
  va_end(arguments);
}
EXPORTED void __syslog_chk(int priority, int, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  zopctl::log_line(priority, format, arguments);
  va_end(arguments);
}
