#pragma once

#include <curl/curl.h>

#include <string>

#include "support/DynamicLibrary.h"

namespace VorselKelp::posix {

/// The functions of libcurl that are used here, found at run time. Loading it twice is loading it once.
class CurlLibrary {
 public:
  explicit CurlLibrary(const std::string& name);

  /// Why there is no libcurl, empty when there is.
  [[nodiscard]] const std::string& error() const { return library_.error(); }

  decltype(curl_easy_init)* easyInit = nullptr;
  decltype(curl_easy_cleanup)* easyCleanup = nullptr;
  decltype(curl_easy_setopt)* easySetOption = nullptr;
  decltype(curl_easy_getinfo)* easyInformation = nullptr;
  decltype(curl_easy_strerror)* easyErrorText = nullptr;
  decltype(curl_slist_append)* listAppend = nullptr;
  decltype(curl_slist_free_all)* listFree = nullptr;
  decltype(curl_multi_init)* multiInit = nullptr;
  decltype(curl_multi_setopt)* multiSetOption = nullptr;
  decltype(curl_multi_cleanup)* multiCleanup = nullptr;
  decltype(curl_multi_add_handle)* multiAdd = nullptr;
  decltype(curl_multi_remove_handle)* multiRemove = nullptr;
  decltype(curl_multi_perform)* multiPerform = nullptr;
  decltype(curl_multi_poll)* multiPoll = nullptr;
  decltype(curl_multi_wakeup)* multiWakeUp = nullptr;
  decltype(curl_multi_info_read)* multiMessage = nullptr;
  /// The system's certificates as one file, empty when libcurl knows none.
  std::string certificateFile;

 private:
  DynamicLibrary library_;
};

}  // namespace VorselKelp::posix
