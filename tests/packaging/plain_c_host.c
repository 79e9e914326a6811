/* A host in plain C: all headers compile as C99, and the library loads without a C++ runtime. It
   unloads the library in the middle of things; with a modem's device, in the middle of more. */
#undef _FORTIFY_SOURCE
#define _GNU_SOURCE
#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

#include "nubi.h"
#include "vurn.h"
#include "zop.h"
#include "zop_diag_info.h"

static void* library;
static const char* modem; /* stands in for the device of vurn_open; null: no modem */
static int lines;

#define CALL(name) (__extension__(__typeof__(&name)) dlsym(library, #name))

/* The library's calls bind to these. */
int open(const char* path, int flags, ...) {
  if (strcmp(path, "/dev/tts/USB1") == 0) path = modem != NULL ? modem : "/no modem";
  return (int)syscall(SYS_openat, AT_FDCWD, path, flags, 0);
}
unsigned sleep(unsigned seconds) { return (void)seconds, 0; }
static void note_line(int priority) {
  bool is_main = getpid() == syscall(SYS_gettid);
  if (is_main && priority == LOG_ERR) ++lines;
  if (!is_main) usleep(100000); /* a thread of the library is busy */
}
void syslog(int priority, const char* format, ...) { (void)format, note_line(priority); }
void __syslog_chk(int priority, int flag, const char* format, ...) {
  (void)format, (void)flag, note_line(priority);
}

static int failed(const char* what) {
  fprintf(stderr, "plain_c_host: %s\n", what);
  return 1;
}

/* This host has no platform library: events are ignored and one log line says so. */
static int leave_it_closed(void) {
  if (CALL(vurn_report_event)(NULL) != VURN_OK || lines != 0) return failed("a line unasked");
  CALL(vurn_set_log_mask)(VURN_LOG_ERROR);
  for (int i = 0; i < 2; ++i) CALL(vurn_report_event)(NULL);
  return lines == 1 ? 0 : failed("unbound event calls are not told of once");
}

static int leave_an_alarm(void) {
  if (CALL(zop_open)(modem) != 0) return failed("no modem");
  if (CALL(zop_originate_call_test)(30, "123") != ZOP_SUCCESS) return failed("no call");
  CALL(zop_close)();
  return 0;
}

static unsigned threads(void) {
  struct stat tasks = {0};
  stat("/proc/self/task", &tasks);
  return (unsigned)tasks.st_nlink;
}
static unsigned threads_at_start; /* an emulator has some of its own */

/* Waits: a joined thread leaves the list a moment later. */
static int threads_become(unsigned expected) {
  for (int look = 0; look < 300 && threads() != threads_at_start + expected; ++look) usleep(10000);
  return threads() == threads_at_start + expected ? 0 : failed("another number of threads");
}

static int leave_a_failed_open(void) {
  CALL(vurn_set_log_mask)(VURN_LOG_TRACE);
  if (CALL(vurn_open)() != VURN_ERR_FAILED) return failed("an open without a modem");
  return threads_become(1);
}

/* With the listener running. A child that exits has no threads and must leave the port alone. */
static int leave_it_open(void) {
  if (CALL(vurn_open)() != VURN_OK || threads_become(2) != 0) return failed("no listener");
  if (fork() == 0) exit(0);
  int status;
  return wait(&status) > 0 && status == 0 ? 0 : failed("a child's exit");
}

/* Loads the library, unloads it while it is busy, and checks that nothing remains. */
static int unloads(const char* path, int (*leave)(void)) {
  library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (library == NULL) return failed(dlerror());
  if (leave() != 0) return 1;
  if (dlclose(library) != 0 || dlopen(path, RTLD_NOW | RTLD_NOLOAD)) return failed("stays loaded");
  struct sigaction action;
  sigaction(SIGALRM, NULL, &action);
  if (action.sa_handler != SIG_IGN && action.sa_handler != SIG_DFL) return failed("its handler");
  return threads_become(0);
}

int main(int argc, char** argv) {
  threads_at_start = threads();
  if (argc < 2) return failed("which library?");
  if (unloads(argv[1], leave_it_closed) != 0) return 1;
  if (argc < 3) return 0;
  if (unloads(argv[1], leave_a_failed_open) != 0) return 1;
  modem = argv[2];
  return unloads(argv[1], leave_an_alarm) || unloads(argv[1], leave_it_open);
}
