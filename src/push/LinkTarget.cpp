#include "push/LinkTarget.h"

#include <utility>

#include "base/Url.h"

namespace VorselKelp {

LinkTarget linkTarget(const std::string& link) {
  auto url = parseUrl(link);
  if (!url) return {};
  if (url->scheme != "https" && url->scheme != "http")
    return {LinkTarget::Kind::deepLink, std::move(url->text)};
  return url->isWeb() ? LinkTarget{LinkTarget::Kind::browser, std::move(url->text)} : LinkTarget{};
}

}  // namespace VorselKelp
