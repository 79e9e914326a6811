// Definitions that the module binds to. The modem must not become zopctl's controlling terminal: a
// hang-up of the device would end the program.
#undef _FORTIFY_SOURCE
#include "zopctl/host_calls.h"

#include <arpa/inet.h>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <net/if.h>
#include <stdarg.h>
#include <stdio.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <syslog.h>
#include <time.h>
#include <unistd.h>

#include <mutex>

namespace zopctl {

static std::string device = MODULE_DEVICE;
static std::string simulated_root;  // empty: the device's own files
static std::string ppp0_addresses[2];
static LogSink log_sink;
static bool (*hurried)() = nullptr;
static std::mutex log_mutex;

void map_device(const std::string& path) { device = path; }
const std::string& mapped_device() { return device; }
LogSink current_log() {
  std::lock_guard lock(log_mutex);
  return log_sink;
}
void hurry_when(bool (*condition)()) { hurried = condition; }
void catch_log(LogSink sink) {
  std::lock_guard lock(log_mutex);
  log_sink = std::move(sink);
}

void map_root(const std::string& root, const std::string& local, const std::string& peer) {
  simulated_root = root;
  ppp0_addresses[0] = local;
  ppp0_addresses[1] = peer;
}

static std::string mapped(const char* path) {
  for (const char* folder : {"/proc", "/etc/resolv.conf", "/var/local/wan"}) {
    if (!simulated_root.empty() && strncmp(path, folder, strlen(folder)) == 0) {
      return simulated_root + path;
    }
  }
  return path;
}

static int open_mapped(const char* path, int flags, mode_t mode) {
  std::string real = mapped(path);
  if (real == MODULE_DEVICE) {
    real = device;
    flags |= O_NOCTTY | O_CLOEXEC;
  }
  return static_cast<int>(syscall(SYS_openat, AT_FDCWD, real.c_str(), flags, mode));
}

template <typename Function>
static Function* next_definition(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

static int interface_address(unsigned long request, void* argument) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  inet_aton(ppp0_addresses[request == SIOCGIFDSTADDR].c_str(), &address.sin_addr);
  memcpy(&static_cast<ifreq*>(argument)->ifr_addr, &address, sizeof address);
  return 0;
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
  bool simulated = !zopctl::simulated_root.empty();
  if (simulated && (request == SIOCGIFADDR || request == SIOCGIFDSTADDR)) {
    return zopctl::interface_address(request, argument);
  }
  return static_cast<int>(syscall(SYS_ioctl, fd, request, argument));
}

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
