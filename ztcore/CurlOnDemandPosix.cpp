// What this library calls of libcurl, with libcurl itself loaded by the first call: together with all that it
// stands on that takes longer than most programs run which need no network.
#include <curl/curl.h>
#include <dlfcn.h>

#include <cstdarg>

#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"

// These are macros that look at the types of their arguments, all of which have the size of a pointer.
#undef curl_easy_setopt
#undef curl_easy_getinfo
#undef curl_multi_setopt
static_assert(sizeof(long) == sizeof(void*) && sizeof(curl_off_t) == sizeof(void*));

namespace {

#ifdef __APPLE__
constexpr const char* fileName = "libcurl.4.dylib";
#else
constexpr const char* fileName = "libcurl.so.4";
#endif

// Of a function of C, which throws nothing.
template <class Function>
struct Pointer;
template <class Result, class... Arguments>
struct Pointer<Result(Arguments...)> {
  using type = Result (*)(Arguments...) noexcept;
};
template <class Result, class... Arguments>
struct Pointer<Result(Arguments..., ...)> {
  using type = Result (*)(Arguments..., ...) noexcept;
};

[[noreturn]] void fail() {
  const char* const reason = dlerror();
  throw tovin::Exception(L"Unable to load HTTP: %ls", tovin::utf8ToWide(reason ? reason : fileName).c_str());
}

template <class Type>
Type found(void* library, const char* symbol) {
  void* const place = dlsym(library, symbol);
  if (!place) fail();
  return reinterpret_cast<Type>(place);
}

void* load() {
  void* const library = dlopen(fileName, RTLD_NOW | RTLD_LOCAL);
  if (!library) fail();
  return library;
}

// Never unloaded: it leaves things to be done when the process ends.
struct Curl {
  void* library = load();
#define ZTB_CURL(name) \
  Pointer<decltype(::curl_##name)>::type name = found<decltype(name)>(library, "curl_" #name)
  ZTB_CURL(easy_cleanup);
  ZTB_CURL(easy_getinfo);
  ZTB_CURL(easy_init);
  ZTB_CURL(easy_pause);
  ZTB_CURL(easy_perform);
  ZTB_CURL(easy_reset);
  ZTB_CURL(easy_setopt);
  ZTB_CURL(easy_strerror);
  ZTB_CURL(free);
  ZTB_CURL(global_init);
  ZTB_CURL(multi_add_handle);
  ZTB_CURL(multi_cleanup);
  ZTB_CURL(multi_info_read);
  ZTB_CURL(multi_init);
  ZTB_CURL(multi_perform);
  ZTB_CURL(multi_poll);
  ZTB_CURL(multi_remove_handle);
  ZTB_CURL(multi_setopt);
  ZTB_CURL(slist_append);
  ZTB_CURL(slist_free_all);
  ZTB_CURL(url);
  ZTB_CURL(url_cleanup);
  ZTB_CURL(url_get);
  ZTB_CURL(url_set);
  ZTB_CURL(url_strerror);
  ZTB_CURL(version_info);
#undef ZTB_CURL
};

// What was loaded by the calls that begin something; all others follow one of them.
const Curl* loaded = nullptr;

const Curl& begun() {
  static const Curl curl;
  static const bool once = (loaded = &curl, true);
  static_cast<void>(once);
  return curl;
}

// The last argument of the calls whose arguments are of any type.
#define ZTB_LAST(before)                  \
  va_list rest;                           \
  va_start(rest, before);                 \
  void* const last = va_arg(rest, void*); \
  va_end(rest)

// The type of what comes before it is libcurl's choice; that an enumeration is promoted when passed is what
// Clang warns of, and harmless where a pointer follows.
#ifdef __clang__
#pragma clang diagnostic ignored "-Wvarargs"
#endif

// Newer headers say that it is not changed.
template <class Result, class First, class... Rest>
First firstOf(Result (*)(First, Rest...));
using UrlToRead = decltype(firstOf(&::curl_url_get));

}  // namespace

CURLcode curl_global_init(long flags) { return begun().global_init(flags); }
curl_version_info_data* curl_version_info(CURLversion age) { return begun().version_info(age); }
CURL* curl_easy_init() { return begun().easy_init(); }
CURLM* curl_multi_init() { return begun().multi_init(); }
CURLU* curl_url() { return begun().url(); }
curl_slist* curl_slist_append(curl_slist* list, const char* text) { return begun().slist_append(list, text); }

void curl_easy_cleanup(CURL* easy) { loaded->easy_cleanup(easy); }
CURLcode curl_easy_getinfo(CURL* easy, CURLINFO info, ...) {
  ZTB_LAST(info);
  return loaded->easy_getinfo(easy, info, last);
}
CURLcode curl_easy_pause(CURL* easy, int mask) { return loaded->easy_pause(easy, mask); }
CURLcode curl_easy_perform(CURL* easy) { return loaded->easy_perform(easy); }
void curl_easy_reset(CURL* easy) { loaded->easy_reset(easy); }
CURLcode curl_easy_setopt(CURL* easy, CURLoption option, ...) {
  ZTB_LAST(option);
  return loaded->easy_setopt(easy, option, last);
}
const char* curl_easy_strerror(CURLcode code) { return loaded->easy_strerror(code); }
void curl_free(void* block) { loaded->free(block); }
CURLMcode curl_multi_add_handle(CURLM* multi, CURL* easy) { return loaded->multi_add_handle(multi, easy); }
CURLMcode curl_multi_cleanup(CURLM* multi) { return loaded->multi_cleanup(multi); }
CURLMsg* curl_multi_info_read(CURLM* multi, int* left) { return loaded->multi_info_read(multi, left); }
CURLMcode curl_multi_perform(CURLM* multi, int* running) { return loaded->multi_perform(multi, running); }
CURLMcode curl_multi_poll(CURLM* multi, curl_waitfd files[], unsigned count, int timeout, int* ready) {
  return loaded->multi_poll(multi, files, count, timeout, ready);
}
CURLMcode curl_multi_remove_handle(CURLM* multi, CURL* easy) {
  return loaded->multi_remove_handle(multi, easy);
}
CURLMcode curl_multi_setopt(CURLM* multi, CURLMoption option, ...) {
  ZTB_LAST(option);
  return loaded->multi_setopt(multi, option, last);
}
void curl_slist_free_all(curl_slist* list) { loaded->slist_free_all(list); }
void curl_url_cleanup(CURLU* url) { loaded->url_cleanup(url); }
CURLUcode curl_url_get(UrlToRead url, CURLUPart part, char** text, unsigned flags) {
  return loaded->url_get(url, part, text, flags);
}
CURLUcode curl_url_set(CURLU* url, CURLUPart part, const char* text, unsigned flags) {
  return loaded->url_set(url, part, text, flags);
}
const char* curl_url_strerror(CURLUcode code) { return loaded->url_strerror(code); }
