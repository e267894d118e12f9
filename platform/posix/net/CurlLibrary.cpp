#include "net/CurlLibrary.h"

#include <unistd.h>

namespace VorselKelp::posix {

CurlLibrary::CurlLibrary(const std::string& name) : library_(name) {
  decltype(curl_global_init)* globalInit = nullptr;
  decltype(curl_version_info)* versionInfo = nullptr;
  library_.find(globalInit, "curl_global_init");
  library_.find(versionInfo, "curl_version_info");
  library_.find(easyInit, "curl_easy_init");
  library_.find(easyCleanup, "curl_easy_cleanup");
  library_.find(easySetOption, "curl_easy_setopt");
  library_.find(easyInformation, "curl_easy_getinfo");
  library_.find(easyErrorText, "curl_easy_strerror");
  library_.find(listAppend, "curl_slist_append");
  library_.find(listFree, "curl_slist_free_all");
  library_.find(multiInit, "curl_multi_init");
  library_.find(multiSetOption, "curl_multi_setopt");
  library_.find(multiCleanup, "curl_multi_cleanup");
  library_.find(multiAdd, "curl_multi_add_handle");
  library_.find(multiRemove, "curl_multi_remove_handle");
  library_.find(multiPerform, "curl_multi_perform");
  library_.find(multiPoll, "curl_multi_poll");
  library_.find(multiWakeUp, "curl_multi_wakeup");
  library_.find(multiMessage, "curl_multi_info_read");
  if (!error().empty()) return;

  // libcurl counts these calls and guards them; there is no cleanup, since the library stays loaded.
  globalInit(CURL_GLOBAL_DEFAULT);
  const auto* version = versionInfo(CURLVERSION_NOW);
  if (version->age >= CURLVERSION_SEVENTH && version->cainfo && ::access(version->cainfo, R_OK) == 0) {
    certificateFile = version->cainfo;
  }
}

}  // namespace VorselKelp::posix
