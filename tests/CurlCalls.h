#pragma once

#include <curl/curl.h>
#include <dlfcn.h>

#include <cstdarg>
#include <string>

/// The calls of libcurl, in order: the name of each option that is set, and "append", "free" and "cleanup". A
/// test program that includes this header calls the functions below instead of libcurl's.
inline std::string curlCalls;

template <typename Function>
Function noted(const char* what, const char* name) {
  curlCalls += what;
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

#undef curl_easy_setopt
extern "C" {

CURLcode curl_easy_setopt(CURL* handle, CURLoption option, ...) {
  va_list values;
  va_start(values, option);
  void* const value = va_arg(values, void*);  // a long is as wide as a pointer
  va_end(values);
  const std::string name = std::string(curl_easy_option_by_id(option)->name) + " ";
  return noted<CURLcode (*)(CURL*, CURLoption, ...)>(name.c_str(), "curl_easy_setopt")(handle, option, value);
}

void curl_easy_cleanup(CURL* handle) { noted<void (*)(CURL*)>("cleanup ", "curl_easy_cleanup")(handle); }

curl_slist* curl_slist_append(curl_slist* list, const char* line) {
  return noted<curl_slist* (*)(curl_slist*, const char*)>("append ", "curl_slist_append")(list, line);
}

void curl_slist_free_all(curl_slist* list) {
  noted<void (*)(curl_slist*)>(list != nullptr ? "free " : "", "curl_slist_free_all")(list);
}

}  // extern "C"
