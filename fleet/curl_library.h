// libcurl, loaded with the first connection: it brings thirty libraries, with which every verb
// would start later.
#pragma once

#include <curl/curl.h>

namespace fleet {

class CurlLibrary {
 public:
  // Loaded once, and kept. Throws records::Failure.
  static const CurlLibrary& loaded();

 private:
  CurlLibrary();
  static void* find(const char* name);

#define BIND(name) \
  decltype(&curl_##name) name = reinterpret_cast<decltype(&curl_##name)>(find("curl_" #name))
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
