#include "net/VorselRequest.h"

#include <cstddef>
#include <utility>

#include "base/FatalError.h"
#include "base/Url.h"
#include "json/Encoder.h"
#include "net/OpenCounter.h"
#include "net/ResponseText.h"

namespace VorselKelp {
namespace {

constexpr double requestTimeout = 60;
constexpr double sessionTimeout = 10;
constexpr std::size_t droppedLimit = std::size_t{64} << 10;
constexpr std::size_t documentLimit = std::size_t{1} << 20;

}  // namespace

std::optional<platform::URLRequest> VorselRequest::post(StorageKey key) const {
  auto url = parseUrl(context_->storage.text(key).value_or(""));
  if (!url) return std::nullopt;
  platform::URLRequest request;
  request.url = std::move(url->text);
  request.method = "POST";
  request.headers = {{"Content-Type", "application/json"}};
  request.timeout = requestTimeout;
  request.sessionTimeout = sessionTimeout;
  request.responseLimit = droppedLimit;
  request.discardBody = true;
  return request;
}

template <class Body>
bool VorselRequest::attach(platform::URLRequest& request, const Body& body, const char* prefix) const {
  auto json = json::encode(body);
  if (json) {
    request.body = *std::move(json);
  } else {
    context_->print(prefix + json.error().description);
  }
  return json.ok();
}

void VorselRequest::send(platform::URLRequest request, DocumentCompletion completion) const {
  context_->services->urlSession->send(
      std::move(request),
      [completion = std::move(completion)](platform::URLResult result) { completion(std::move(result)); });
}

void VorselRequest::sendActivityInstall(const ActivityBody& body, Completion completion) {
  auto request = post(StorageKey::activityUrl);
  if (!request) return;
  // The line tells of the hand-over, not of the server's answer.
  if (attach(*request, body, "sendActivityInstall error: ")) context_->print("Install sent");
  send(*std::move(request),
       [context = context_, completion = std::move(completion)](platform::URLResult result) {
         if (result.error) context->print(result.error->description);
         completion(std::move(result.response), std::move(result.error));
       });
}

void VorselRequest::sendActivityOpen(const ActivityBody& body, Completion completion) {
  auto request = post(StorageKey::activityUrl);
  if (!request) return;
  attach(*request, body, "sendActivityOpen ");
  const OpenCounter counter(context_);
  const auto owed = counter.take();
  for (std::int64_t i = 0; i <= owed; ++i) {
    send(*request, [context = context_, completion, counter](platform::URLResult result) {
      if (result.response) {
        if (result.response->statusCode == httpCreated) {
          counter.acknowledge();
          context->print("Open sent");
        }
        completion(std::move(result.response), std::nullopt);
      } else {
        counter.owe();
        completion(std::nullopt, std::move(result.error));
        context->print("Request ERROR");
      }
    });
  }
}

void VorselRequest::sendActivityLocationEvent(const ActivityBody& body, Completion completion) {
  auto request = post(StorageKey::activityUrl);
  if (!request) return;
  attach(*request, body, "sendActivityLocationEvent ");
  send(*std::move(request),
       [context = context_, completion = std::move(completion)](platform::URLResult result) {
         if (result.error) context->print(result.error->description);
         completion(std::move(result.response), std::move(result.error));
       });
}

void VorselRequest::sendPushData(const PushBody& body, PushCompletion completion) {
  auto request = post(StorageKey::userUrl);
  if (!request) return;
  if (attach(*request, body, "sendPushData ")) context_->print("sendPushData " + request->body);
  send(*std::move(request),
       [context = context_, completion = std::move(completion)](platform::URLResult result) {
         if (result.response) {
           completion(true, result.response, std::nullopt);
           context->print(responseText(*result.response));
         } else {
           completion(false, std::nullopt, std::move(result.error));
         }
       });
}

void VorselRequest::trackingGet(const std::string& url, DocumentCompletion completion) const {
  auto parsed = parseUrl(trackingUrl(url));
  if (!parsed) return;
  platform::URLRequest request;
  request.url = std::move(parsed->text);
  request.timeout = sessionTimeout;
  request.responseLimit = documentLimit;
  send(std::move(request),
       [context = context_, completion = std::move(completion)](platform::URLResult result) {
         if (result.error) context->print(result.error->description);
         completion(std::move(result));
       });
}

void VorselRequest::fireTracker(const std::string& url) {
  auto address = webUrl(url);
  if (!address) return;
  platform::URLRequest request;
  request.url = *std::move(address);
  request.responseLimit = droppedLimit;
  request.discardBody = true;
  send(std::move(request), [](const platform::URLResult&) {});
}

void VorselRequest::download(const std::string& url, std::size_t limit, DocumentCompletion completion) {
  download(url, limit, nullptr, std::move(completion));
}

void VorselRequest::download(const std::string& url, std::size_t limit, platform::BodyConsumer consumer,
                             DocumentCompletion completion) {
  auto parsed = parseUrl(url);
  platform::URLRequest request;
  request.url = parsed ? std::move(parsed->text) : url;  // what is none, the session answers with an error
  request.responseLimit = limit;
  request.bodyConsumer = std::move(consumer);
  send(std::move(request), std::move(completion));
}

void VorselRequest::sendFeedGet(const std::string& url, DocumentCompletion completion) {
  auto parsed = parseUrl(url);
  if (!parsed) {
    context_->print("URL is not valid");
    return;
  }
  platform::URLRequest request;
  request.url = std::move(parsed->text);
  request.headers = {{"Content-Type", "application/json"}};
  request.timeout = requestTimeout;
  request.sessionTimeout = sessionTimeout;
  request.responseLimit = documentLimit;
  send(std::move(request), std::move(completion));
}

void VorselRequest::fetchAutoconfig(const std::string& tag, DocumentCompletion completion) {
  const auto base = context_->storage.text(StorageKey::configUrl);
  if (!base || !parseUrl(*base)) return;
  auto url = appendingPathComponent(*base, tag + ".json");
  if (!url) fatalError("fetchAutoconfig: no URL for the configuration document under " + *base);
  platform::URLRequest request;
  request.url = *std::move(url);
  // The very first fetch is conditional too, against a fixed date.
  request.headers = {
      {"If-Modified-Since",
       context_->storage.text(StorageKey::lastModified).value_or("Fri, 12 Jan 2024 09:42:01 GMT")}};
  request.timeout = requestTimeout;
  request.responseLimit = documentLimit;
  send(std::move(request), std::move(completion));
}

}  // namespace VorselKelp
