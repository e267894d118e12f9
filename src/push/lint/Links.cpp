#include "push/lint/Links.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "base/Text.h"
#include "base/Url.h"
#include "push/DeliveryPlan.h"
#include "push/LinkTarget.h"

namespace VorselKelp {
namespace {

std::string quoted(const std::string& text) {
  return "\"" + text + "\"";
}

bool isWebScheme(const std::string& lowerScheme) {
  return lowerScheme == "http" || lowerScheme == "https";
}

/// Schemes that lead to no page and to no application.
bool isUnsafeScheme(std::string_view lowerScheme) {
  constexpr std::string_view schemes[] = {"javascript", "vbscript", "data", "file", "about", "blob"};
  return std::ranges::find(schemes, lowerScheme) != std::end(schemes);
}

/// Nothing is filled in where `filled` still holds one.
void warnOfPlaceholder(LintLines& warnings, const std::string& where, const std::string& filled,
                       const char* hint) {
  const auto begin = filled.find("${");
  if (begin == std::string::npos) return;
  const auto end = filled.find('}', begin);
  const auto length = end == std::string::npos ? end : end - begin + 1;
  warnings.push_back(where + ": " + quoted(filled.substr(begin, length)) + " stays as it is; " + hint);
}

void warnOfRequest(LintLines& warnings, const std::string& where, const std::string& url,
                   const char* consequence) {
  warnOfPlaceholder(warnings, where, url, "nothing is filled in here");
  const auto parsed = parseUrl(url);
  if (!parsed || !parsed->isWeb()) {
    warnings.push_back(where + ": " + quoted(url) + " is no web address" + consequence + hostHint(url));
  } else if (lowerCased(parsed->scheme) == "http") {
    warnings.push_back(where + ": " + quoted(url) + " is not encrypted; systems refuse http addresses");
  }
}

/// What a link is that does not do what was meant; absent when there is nothing to say.
std::optional<std::string> oddity(const std::string& link) {
  const auto url = parseUrl(link);
  if (!url) return "forms no URL; a tap opens nothing" + hostHint(link);
  const auto scheme = lowerCased(url->scheme);
  if (isWebScheme(scheme) && url->host.empty()) return "names no host; a tap opens nothing";
  const char* const handed = "; the application gets it as a deep link";
  if (scheme.empty()) return std::string("is relative") + handed;
  if (isWebScheme(scheme) && linkTarget(link).kind == LinkTarget::Kind::deepLink)
    return std::string("opens no browser, which wants \"") + scheme + "\" in small letters" + handed;
  if (isUnsafeScheme(scheme)) return "opens no page: \"" + scheme + ":\" is no web address" + handed;
  return std::nullopt;
}

std::optional<std::string> pageOddity(const std::string& link) {
  const auto url = parseUrl(link);
  if (!url) return std::nullopt;  // it stops the extension, which is more than odd
  const auto scheme = lowerCased(url->scheme);
  if (scheme.empty()) return "is relative; a tap opens nothing";
  if (isWebScheme(scheme) && url->host.empty()) return "names no host; the system opens nothing";
  if (isUnsafeScheme(scheme)) return "is nothing that a system opens";
  return std::nullopt;
}

}  // namespace

void warnOfTracker(LintLines& warnings, const std::string& where, const std::string& url) {
  warnOfRequest(warnings, where, url, " and is never requested");
}

void warnOfTrackers(LintLines& warnings, const std::string& where,
                    const std::optional<std::vector<std::string>>& urls) {
  if (!urls) return;
  for (std::size_t i = 0; i < urls->size(); ++i)
    warnOfTracker(warnings, where + "[" + std::to_string(i) + "]", (*urls)[i]);
}

void warnOfPicture(LintLines& warnings, const std::string& where, const std::string& url) {
  warnOfRequest(warnings, where, url, "; the picture is left out");
}

void warnOfLink(LintLines& warnings, const std::string& where, const std::string& url) {
  const auto filled = storedUrl(url, "action");
  warnOfPlaceholder(warnings, where, filled, "\"${VA_BACID}\" is the only placeholder");
  if (const auto odd = oddity(filled)) warnings.push_back(where + ": " + quoted(url) + " " + *odd);
}

void warnOfPageLink(LintLines& warnings, const std::string& where, const std::string& url) {
  warnOfPlaceholder(warnings, where, url, "a carousel fills in nothing");
  if (const auto odd = pageOddity(url)) warnings.push_back(where + ": " + quoted(url) + " " + *odd);
}

std::string hostHint(const std::string& url) {
  return hasForeignHost(url) ? "; write its host in ASCII (\"xn--...\")" : "";
}

std::vector<std::string> webRequests(const std::vector<std::string>& urls) {
  std::vector<std::string> requests;
  for (const auto& url : urls) {
    if (auto request = webUrl(url)) requests.push_back(*std::move(request));
  }
  return requests;
}

}  // namespace VorselKelp
