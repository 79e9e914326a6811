// libcurl, loaded with the first connection: it brings thirty libraries, with which every verb
// would start later.
#pragma once

#include <curl/curl.h>

#include <string>

namespace fleet {

class CurlLibrary {
 public:
  // Loaded once, and kept. Throws records::Failure.
  static const CurlLibrary& loaded();

 private:
  CurlLibrary();
  static void* find(const std::string& name);
  template <typename Type>
  static Type bind(const char* name) {
    return reinterpret_cast<Type>(find(std::string("curl_") + name));
  }

#define BIND(name) decltype(&curl_##name) const name = bind<decltype(&curl_##name)>(#name)
 public:
  BIND(easy_cleanup);
  BIND(easy_escape);
  BIND(easy_getinfo);
  BIND(easy_init);
  BIND(easy_perform);
  BIND(easy_setopt);
  BIND(easy_strerror);
  BIND(free);
  BIND(mime_addpart);
  BIND(mime_data);
  BIND(mime_filename);
  BIND(mime_free);
  BIND(mime_init);
  BIND(mime_name);
  BIND(slist_append);
  BIND(slist_free_all);
#undef BIND
};

}  // namespace fleet
