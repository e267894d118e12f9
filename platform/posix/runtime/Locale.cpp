#include "VorselKelpPosix/Locale.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <string_view>

namespace VorselKelp::posix {
namespace {

bool isLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// "de_DE.UTF-8" is German; the locales without a language ("C", "POSIX") count as English.
std::string languageOf(std::string_view locale) {
  const auto language = locale.substr(0, locale.find_first_of("_.@"));
  if (language.empty() || language == "C" || language == "POSIX") return "en";
  return std::ranges::all_of(language, isLetter) ? std::string(language) : "en";
}

}  // namespace

std::string userLanguage() {
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* locale = std::getenv(name);
    if (locale != nullptr && *locale != '\0') return languageOf(locale);
  }
  return "en";
}

int secondsFromGMT() {
  ::tzset();  // a journey changes the system's zone
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  if (::localtime_r(&now, &local) == nullptr) return 0;
  return static_cast<int>(local.tm_gmtoff);
}

}  // namespace VorselKelp::posix
