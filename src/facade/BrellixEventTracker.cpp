#include "facade/BrellixEventTracker.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "base/Text.h"
#include "base/Url.h"

namespace BrellixPush {
namespace {

using VorselKelp::platform::TextList;

constexpr const char* sentEventsKey = "com.brellix.push.sent_events";
constexpr double requestTimeout = 5;
constexpr int cancelled = -999;

/// Two different events never share a key: what separates entries, and keys from values, is escaped within
/// them.
std::string eventKey(const Event& event) {
  std::string key;
  for (const auto& [name, value] : event) {
    if (!key.empty()) key += '&';
    key += VorselKelp::escaped(name) + "=" + VorselKelp::escaped(value);
  }
  return key;
}

TextList sentEvents(VorselKelp::platform::DefaultsDomain& store) {
  const auto stored = store.object(sentEventsKey);
  const auto* list = stored ? stored->as<TextList>() : nullptr;
  return list ? *list : TextList{};
}

void logOutcome(const VorselKelp::CoreContext& context, const VorselKelp::platform::URLResult& result) {
  if (result.error) {
    if (result.error->code != cancelled) context.print("Event tracking failed: " + result.error->description);
  } else if (result.response && (result.response->statusCode < 200 || result.response->statusCode > 299)) {
    context.print("Event tracking failed with status code: " + std::to_string(result.response->statusCode));
  } else {
    context.print("Event tracking success");
  }
}

}  // namespace

Event askedEvent() {
  return {{"action", "ask"}};
}
Event allowedEvent() {
  return {{"action", "allow"}};
}
Event blockedEvent() {
  return {{"action", "block"}};
}

bool BrellixEventTracker::mark(const VorselKelp::CoreContext& context, const std::string& key) {
  const auto store = context.services->userDefaults->standard();
  if (std::ranges::count(sentEvents(*store), key) > 0) return false;
  bool first = false;
  const bool stored = store->transact([&] {
    TextList sent = sentEvents(*store);
    first = std::ranges::count(sent, key) == 0;
    if (!first) return;
    sent.push_back(key);
    store->setObject(sentEventsKey, {std::move(sent)});
  });
  // Without the mark the event would go out again and again.
  if (first && !stored) context.print("Event tracking failed: the event can't be marked as sent");
  return stored && first;
}

std::string BrellixEventTracker::url(const VorselKelp::CoreContext& context, const Event& event) const {
  const std::string version =
      context.services->bundle->libraryBundleText("CFBundleShortVersionString").value_or("unknown");
  std::vector<std::pair<std::string, std::string>> items{
      {"cat", "webpush"},
      {"pid", publisherId_},
      {"src", source_},
      {"v", version},
      {"platform_type", VorselKelp::lowerCased(context.services->device->systemFamily())}};
  items.insert(items.end(), event.begin(), event.end());
  std::string url = context.services->endpoints.events;
  char separator = '?';
  for (const auto& [name, value] : items) {
    url += separator + VorselKelp::escaped(name) + "=" + VorselKelp::escaped(value);
    separator = '&';
  }
  return url;
}

void BrellixEventTracker::send(const Event& event) {
  const auto context = context_.lock();
  if (!context || !mark(*context, eventKey(event))) return;
  auto parsed = VorselKelp::parseUrl(url(*context, event));
  if (!parsed || !parsed->isWeb()) {
    context->print("Failed to construct URL for event tracking");
    return;
  }
  VorselKelp::platform::URLRequest request;
  request.url = std::move(parsed->text);
  request.timeout = requestTimeout;
  request.responseLimit = std::size_t{64} << 10;
  request.discardBody = true;
  context->services->urlSession->send(
      std::move(request),
      [context](const VorselKelp::platform::URLResult& result) { logOutcome(*context, result); });
}

}  // namespace BrellixPush
