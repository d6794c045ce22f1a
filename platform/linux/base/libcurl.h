// libcurl, which brings some thirty libraries with it: loaded with the first request, long after the window
// is seen. https://curl.se/libcurl/c/
#pragma once

#include <curl/curl.h>

namespace platform {

/// To be called before any of the functions below. The first call loads the library from the system's
/// folders, as a call that may block (platform/blocking.h); throws base::RuntimeError when there is none to
/// load.
void loadLibcurl();

/// libcurl's functions under their own names: in this namespace, these stand before the declarations of
/// libcurl's header, to which nothing may be linked. Null until the library is loaded.
extern decltype(&::curl_global_init) curl_global_init;
extern decltype(&::curl_easy_init) curl_easy_init;
extern decltype(&::curl_easy_setopt) curl_easy_setopt;
extern decltype(&::curl_easy_getinfo) curl_easy_getinfo;
extern decltype(&::curl_easy_pause) curl_easy_pause;
extern decltype(&::curl_easy_cleanup) curl_easy_cleanup;
extern decltype(&::curl_multi_init) curl_multi_init;
extern decltype(&::curl_multi_add_handle) curl_multi_add_handle;
extern decltype(&::curl_multi_remove_handle) curl_multi_remove_handle;
extern decltype(&::curl_multi_perform) curl_multi_perform;
extern decltype(&::curl_multi_poll) curl_multi_poll;
extern decltype(&::curl_multi_info_read) curl_multi_info_read;
extern decltype(&::curl_multi_cleanup) curl_multi_cleanup;
extern decltype(&::curl_slist_append) curl_slist_append;
extern decltype(&::curl_slist_free_all) curl_slist_free_all;

} // namespace platform
