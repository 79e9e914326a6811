/* A host in plain C: all headers compile as C99, and the library loads without a C++ runtime. With
   a modem's device it has a test call timed, and unloads the library before the alarm. */
#include <dlfcn.h>
#include <signal.h>
#include <stdio.h>
#include <string.h>

#include "nubi.h"
#include "vurn.h"
#include "zop.h"
#include "zop_diag_info.h"

static int failed(const char* what) {
  fprintf(stderr, "plain_c_host: %s\n", what);
  return 1;
}

static int leave_an_alarm(void* library, const char* device) {
  unsigned int (*open_link)(const char*);
  unsigned int (*originate)(uint32_t, const char*);
  void (*close_link)(void);
  *(void**)&open_link = dlsym(library, "zop_open");
  *(void**)&originate = dlsym(library, "zop_originate_call_test");
  *(void**)&close_link = dlsym(library, "zop_close");
  if (open_link(device) != 0) return failed("no modem");
  if (originate(30, "123") != ZOP_SUCCESS) return failed("no call");
  close_link();
  return 0;
}

int main(int argc, char** argv) {
  void* library = argc >= 2 ? dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) : NULL;
  if (library == NULL) return failed(argc >= 2 ? dlerror() : "which library?");

  unsigned int (*version)(uint8_t*, uint32_t*);
  *(void**)&version = dlsym(library, "zop_get_tq2_version");
  uint8_t text[ZOP_LIBRARY_VERSION_SIZE];
  uint32_t size = sizeof text;
  if (version == NULL || version(text, &size) != ZOP_SUCCESS) return failed("no version");
  if (strcmp((const char*)text, "REV_3.0 20100419") != 0) return failed("another version");

  int (*update)(void);
  *(void**)&update = dlsym(library, "vurn_update_prl");
  if (update == NULL || update() != VURN_ERR_NOT_OPEN) return failed("open before vurn_open");

  if (argc == 3 && leave_an_alarm(library, argv[2]) != 0) return 1;
  if (dlclose(library) != 0) return failed("can't be unloaded");
  if (argc == 3) raise(SIGALRM); /* its handler must not be in code that is gone */
  return 0;
}
