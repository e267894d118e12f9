#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "core/CoreContext.h"
#include "json/Decoder.h"
#include "net/ActivityRecords.h"

namespace VorselKelp {

/// The status with which a server takes a report.
inline constexpr int httpCreated = 201;

/// The URL of a tracking GET: the given one, which is expected to have a query, with the library's version
/// added.
[[nodiscard]] inline std::string trackingUrl(const std::string& url) {
  return url + "&ver=2.0.0";
}

/// The core's one outlet to the servers: builds a request from the URL that the store holds at this moment,
/// sends it, and answers on the session's delegate queue. Nothing is retried here but owed open reports.
/// Where the stored text forms no URL nothing happens at
/// all: no request, no line, no answer. Any thread.
class VorselRequest {
 public:
  using Response = std::optional<platform::HTTPURLResponse>;
  using Completion = std::function<void(Response, std::optional<Error>)>;
  using PushCompletion = std::function<void(bool, Response, std::optional<Error>)>;
  /// A response, with its body when one came back, or an error.
  using DocumentCompletion = std::function<void(platform::URLResult)>;

  explicit VorselRequest(std::shared_ptr<CoreContext> context) : context_(std::move(context)) {}

  void sendActivityInstall(const ActivityBody& body, Completion completion);
  /// Sends the report once, and once more for each earlier one that failed; every one of them answers.
  void sendActivityOpen(const ActivityBody& body, Completion completion);
  void sendActivityLocationEvent(const ActivityBody& body, Completion completion);
  void sendPushData(const PushBody& body, PushCompletion completion);

  /// Requests `url` with the library's version added, and decodes the answer: a record, or nothing when no
  /// body came or it does not decode.
  template <class Record>
  void sendTrackingGet(const std::string& url,
                       std::function<void(std::optional<Record>, std::optional<Error>)> completion);

  /// Requests a tracker; the answer is ignored. A text that forms no web URL is skipped.
  void fireTracker(const std::string& url);

  /// Requests `url` from an ad server, for its body. A text that forms no URL is dropped with a
  /// line.
  void sendFeedGet(const std::string& url, DocumentCompletion completion);

  /// Requests `url`, for its body of at most `limit` bytes.
  void download(const std::string& url, std::size_t limit, DocumentCompletion completion);
  /// The same, with the body handed to `consumer` as it comes.
  void download(const std::string& url, std::size_t limit, platform::BodyConsumer consumer,
                DocumentCompletion completion);

  /// Requests the remote configuration document of `tag`; without a valid stored base nothing happens.
  void fetchAutoconfig(const std::string& tag, DocumentCompletion completion);

 private:
  /// The POST request to the URL stored under `key`; absent when there is none or it is malformed.
  std::optional<platform::URLRequest> post(StorageKey key) const;
  template <class Body>
  bool attach(platform::URLRequest& request, const Body& body, const char* prefix) const;
  void send(platform::URLRequest request, DocumentCompletion completion) const;
  void trackingGet(const std::string& url, DocumentCompletion completion) const;

  std::shared_ptr<CoreContext> context_;
};

template <class Record>
void VorselRequest::sendTrackingGet(
    const std::string& url, std::function<void(std::optional<Record>, std::optional<Error>)> completion) {
  trackingGet(url, [completion = std::move(completion)](platform::URLResult result) {
    std::optional<Record> record;
    if (result.body) {
      if (auto decoded = json::decode<Record>(std::string_view(*result.body))) record = *std::move(decoded);
    }
    completion(std::move(record), std::move(result.error));
  });
}

}  // namespace VorselKelp
