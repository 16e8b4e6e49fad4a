#pragma once

// Checks of arguments by macros, which would take the members below for the functions themselves.
#define CURL_DISABLE_TYPECHECK
#include <curl/curl.h>

#include "Platform/System/LazyLibrary.h"

namespace nomely {

// libcurl's functions, looked up in the library once.
class Curl {
 private:
  LazyLibrary library_{"libcurl.so.4"};

 public:
  // The process's one, initialised. Throws LazyLibrary::MissingError. Safe on any thread.
  [[nodiscard]] static const Curl& loaded();

#define NOMELY_CURL(name) decltype(::name)* const name = library_.function<decltype(::name)>(#name)
  NOMELY_CURL(curl_global_init);
  NOMELY_CURL(curl_easy_init);
  NOMELY_CURL(curl_easy_setopt);
  NOMELY_CURL(curl_easy_getinfo);
  NOMELY_CURL(curl_easy_recv);
  NOMELY_CURL(curl_easy_send);
  NOMELY_CURL(curl_easy_cleanup);
  NOMELY_CURL(curl_mime_init);
  NOMELY_CURL(curl_mime_addpart);
  NOMELY_CURL(curl_mime_name);
  NOMELY_CURL(curl_mime_data);
  NOMELY_CURL(curl_mime_filedata);
  NOMELY_CURL(curl_mime_filename);
  NOMELY_CURL(curl_mime_type);
  NOMELY_CURL(curl_mime_free);
  NOMELY_CURL(curl_multi_init);
  NOMELY_CURL(curl_multi_add_handle);
  NOMELY_CURL(curl_multi_remove_handle);
  NOMELY_CURL(curl_multi_perform);
  NOMELY_CURL(curl_multi_poll);
  NOMELY_CURL(curl_multi_wakeup);
  NOMELY_CURL(curl_multi_info_read);
  NOMELY_CURL(curl_multi_cleanup);
  NOMELY_CURL(curl_slist_append);
  NOMELY_CURL(curl_slist_free_all);
  NOMELY_CURL(curl_url);
  NOMELY_CURL(curl_url_set);
  NOMELY_CURL(curl_url_get);
  NOMELY_CURL(curl_url_cleanup);
  NOMELY_CURL(curl_free);
#undef NOMELY_CURL

 private:
  Curl();
};

}  // namespace nomely
