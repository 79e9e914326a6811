/* A host in plain C: all headers compile as C99, and the library loads without a C++ runtime. */
#include <dlfcn.h>
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

int main(int argc, char** argv) {
  void* library = argc == 2 ? dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) : NULL;
  if (library == NULL) return failed(argc == 2 ? dlerror() : "which library?");

  unsigned int (*version)(uint8_t*, uint32_t*);
  *(void**)&version = dlsym(library, "zop_get_tq2_version");
  uint8_t text[ZOP_LIBRARY_VERSION_SIZE];
  uint32_t size = sizeof text;
  if (version == NULL || version(text, &size) != ZOP_SUCCESS) return failed("no version");
  if (strcmp((const char*)text, "REV_3.0 20100419") != 0) return failed("another version");

  int (*update)(void);
  *(void**)&update = dlsym(library, "vurn_update_prl");
  if (update == NULL || update() != VURN_ERR_NOT_OPEN) return failed("open before vurn_open");
  return dlclose(library);
}
