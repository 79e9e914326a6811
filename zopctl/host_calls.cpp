// Definitions that the module binds to. The modem must not become zopctl's controlling terminal: a
// hang-up of the device would end the program.
#undef _FORTIFY_SOURCE
#include "zopctl/host_calls.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdio.h>
#include <sys/syscall.h>
#include <syslog.h>
#include <time.h>
#include <unistd.h>

#include <mutex>

namespace zopctl {

static std::string device = MODULE_DEVICE;
static LogSink log_sink;
static bool (*hurried)() = nullptr;
static std::mutex log_mutex;

void map_device(const std::string& path) { device = path; }
const std::string& mapped_device() { return device; }
const LogSink& current_log() { return log_sink; }
void hurry_when(bool (*condition)()) { hurried = condition; }
void catch_log(LogSink sink) { log_sink = std::move(sink); }

static int open_mapped(const char* path, int flags, mode_t mode) {
  if (path != nullptr && std::string(path) == MODULE_DEVICE) {
    path = device.c_str();
    flags |= O_NOCTTY | O_CLOEXEC;
  }
  return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

static void log_line(int priority, const char* format, va_list arguments) {
  char line[2048];
  vsnprintf(line, sizeof line, format, arguments);
  for (char* c = line; *c != '\0'; ++c) {  // texts of a modem: nothing that moves a terminal
    if (static_cast<unsigned char>(*c) < 0x20 || *c == 0x7F) *c = '?';
  }
  std::lock_guard lock(log_mutex);
  if (log_sink) return log_sink(priority, line);
  using Syslog = void (*)(int, const char*, ...);
  static auto real = reinterpret_cast<Syslog>(dlsym(RTLD_NEXT, "syslog"));
  real(priority, "%s", line);
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

// The module sleeps between its attempts to reach a modem or a card that is not ready.
EXPORTED unsigned sleep(unsigned seconds) {
  if (zopctl::hurried != nullptr && zopctl::hurried()) return 0;
  timespec time = {static_cast<time_t>(seconds), 0};
  nanosleep(&time, nullptr);
  return 0;
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
