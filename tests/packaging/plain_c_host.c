/* A host in plain C: all headers compile as C99, and the library loads without a C++ runtime. With
   a modem's device it unloads the library in the middle of things: an alarm, a thread that is left.
 */
#undef _FORTIFY_SOURCE
#define _GNU_SOURCE
#include <dirent.h>
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdarg.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

#include "nubi.h"
#include "vurn.h"
#include "zop.h"
#include "zop_diag_info.h"

static const char* modem;  /* behind the one device that vurn_open knows; null: there is none */
static int unbound_events; /* lines that tell of them */

/* The library's calls bind to these. */
int open(const char* path, int flags, ...) {
  if (strcmp(path, "/dev/tts/USB1") == 0) path = modem;
  if (path != NULL) return (int)syscall(SYS_openat, AT_FDCWD, path, flags, 0);
  errno = ENOENT;
  return -1;
}
unsigned sleep(unsigned seconds) {
  (void)seconds;
  return 0;
}
static void note_line(int priority, const char* format, va_list arguments) {
  char line[2048];
  vsnprintf(line, sizeof line, format, arguments);
  if (priority == LOG_ERR && strncmp(line, "E zop:nubi:", 11) == 0) ++unbound_events;
}
void syslog(int priority, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  note_line(priority, format, arguments);
  va_end(arguments);
}
void __syslog_chk(int priority, int flag, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  (void)flag;
  note_line(priority, format, arguments);
  va_end(arguments);
}

static int failed(const char* what) {
  fprintf(stderr, "plain_c_host: %s\n", what);
  return 1;
}

static int loads_and_is_closed(void* library) {
  unsigned int (*version)(uint8_t*, uint32_t*);
  *(void**)&version = dlsym(library, "zop_get_tq2_version");
  uint8_t text[ZOP_LIBRARY_VERSION_SIZE];
  uint32_t size = sizeof text;
  if (version == NULL || version(text, &size) != ZOP_SUCCESS) return failed("no version");
  if (strcmp((const char*)text, "REV_3.0 20100419") != 0) return failed("another version");
  int (*update)(void);
  *(void**)&update = dlsym(library, "vurn_update_prl");
  if (update == NULL || update() != VURN_ERR_NOT_OPEN) return failed("open before vurn_open");
  return 0;
}

/* This host has no platform library: events are ignored, and that is told once. */
static int tells_that_events_are_unbound(void* library) {
  int (*report)(const NubiEvent*);
  void (*set_mask)(unsigned);
  *(void**)&report = dlsym(library, "vurn_report_event");
  *(void**)&set_mask = dlsym(library, "vurn_set_log_mask");
  if (report(NULL) != VURN_OK || unbound_events != 0) return failed("an event without a mask");
  set_mask(VURN_LOG_ERROR);
  if (report(NULL) != VURN_OK || report(NULL) != VURN_OK) return failed("an event");
  return unbound_events == 1 ? 0 : failed("unbound calls are not told of once");
}

static int leave_an_alarm(void* library) {
  unsigned int (*open_link)(const char*);
  unsigned int (*originate)(uint32_t, const char*);
  void (*close_link)(void);
  *(void**)&open_link = dlsym(library, "zop_open");
  *(void**)&originate = dlsym(library, "zop_originate_call_test");
  *(void**)&close_link = dlsym(library, "zop_close");
  if (open_link(modem) != 0) return failed("no modem");
  if (originate(30, "123") != ZOP_SUCCESS) return failed("no call");
  close_link();
  return 0;
}

static int vurn_open_gives(void* library, int expected) {
  int (*open_module)(void);
  *(void**)&open_module = dlsym(library, "vurn_open");
  return open_module() == expected ? 0 : failed("vurn_open");
}

/* Waits for this many; a thread that was joined leaves the list a moment later. */
static int threads_become(int expected) {
  int threads = 0;
  for (int look = 0; look < 300 && threads != expected; ++look) {
    usleep(10000);
    DIR* tasks = opendir("/proc/self/task");
    threads = -2; /* . and .. */
    while (readdir(tasks) != NULL) ++threads;
    closedir(tasks);
  }
  return threads == expected ? 0 : failed("another number of threads");
}

static int leave_a_failed_open(void* library) {
  modem = NULL;
  return vurn_open_gives(library, VURN_ERR_FAILED) || threads_become(2);
}

/* With the listener at work. A child that exits has none of the threads, and leaves the port. */
static int leave_it_open(void* library) {
  if (vurn_open_gives(library, VURN_OK) || threads_become(3)) return 1;
  pid_t child = fork();
  if (child == 0) exit(0);
  int status;
  waitpid(child, &status, 0);
  return status == 0 ? 0 : failed("a child's exit");
}

/* Loads the library, leaves it in the middle of something, and finds nothing of it left. */
static int unloads(const char* path, int (*leave)(void* library)) {
  void* library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (library == NULL) return failed(dlerror());
  if (leave(library) != 0) return 1;
  if (dlclose(library) != 0 || dlopen(path, RTLD_NOW | RTLD_NOLOAD)) return failed("stays loaded");
  if (threads_become(1) != 0) return 1;
  struct sigaction action;
  sigaction(SIGALRM, NULL, &action);
  bool gone = action.sa_handler != SIG_IGN && action.sa_handler != SIG_DFL;
  return gone ? failed("its alarm's handler is gone") : 0;
}

int main(int argc, char** argv) {
  if (argc < 2) return failed("which library?");
  if (unloads(argv[1], loads_and_is_closed) != 0) return 1;
  if (unloads(argv[1], tells_that_events_are_unbound) != 0) return 1;
  if (argc < 3) return 0;
  modem = argv[2];
  if (unloads(argv[1], leave_an_alarm) || unloads(argv[1], leave_it_open)) return 1;
  return unloads(argv[1], leave_a_failed_open);
}
