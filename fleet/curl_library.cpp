// The library is never unloaded: it leaves threads and handlers of its own libraries behind.
#include "fleet/curl_library.h"

#include <dlfcn.h>

#include "records/reading.h"

namespace fleet {

void* CurlLibrary::find(const std::string& name) {
  static void* library = dlopen("libcurl.so.4", RTLD_LAZY | RTLD_LOCAL);
  void* found = library == nullptr ? nullptr : dlsym(library, name.c_str());
  if (found == nullptr) {
    throw records::Failure("a server is asked by libcurl.so.4, which can't be loaded",
                           "install libcurl4, 7.85 or newer");
  }
  return found;
}

CurlLibrary::CurlLibrary() = default;

const CurlLibrary& CurlLibrary::loaded() {
  static const CurlLibrary library;
  return library;
}

}  // namespace fleet
