#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "VorselKelp/JSONAny.h"
#include "core/CoreContext.h"
#include "net/ReportBuilder.h"
#include "net/VorselRequest.h"

namespace VorselKelp {

/// Tracking parameters: collected with track(), sent together as one tracking event, stored once the server
/// has accepted them. Any thread; resends run on the main queue.
class Tracking : public std::enable_shared_from_this<Tracking> {
 public:
  using Parameters = std::map<std::string, std::string>;
  /// The status when a response came, a word about the outcome, and the transport's error.
  using Completion =
      std::function<void(std::optional<int>, std::optional<std::string>, std::optional<Error>)>;

  Tracking(std::shared_ptr<CoreContext> context, std::shared_ptr<VorselRequest> requests,
           std::shared_ptr<ReportBuilder> reports)
      : context_(std::move(context)), requests_(std::move(requests)), reports_(std::move(reports)) {}

  void track(const JSONAny::Dictionary& parameters);
  /// Reports to `completion`, which replaces the one of an earlier call, of a request under way too. It may
  /// be called more than once: a transport error is reported, and followed by a new try.
  void sendTrack(Completion completion);
  [[nodiscard]] Parameters getTrack();
  [[nodiscard]] std::string getTrackFor(const std::string& key);
  void removeTrack();
  void removeTrackFor(const std::string& key);

  void setUtm(const std::string& key, const std::string& value);
  void removeUtm(const std::string& key);
  [[nodiscard]] std::string getUtm(const std::string& key);

 private:
  /// Says so on the console when the core is not initialised.
  [[nodiscard]] bool ready() const;
  void send();
  void answered(const VorselRequest::Response& response, const std::optional<Error>& error);
  void storeAccepted();
  void resendLater(std::optional<int> status, const std::optional<Error>& error);
  void report(std::optional<int> status, const std::string& message, const std::optional<Error>& error);

  std::shared_ptr<CoreContext> context_;
  std::shared_ptr<VorselRequest> requests_;
  std::shared_ptr<ReportBuilder> reports_;
  std::mutex mutex_;
  Parameters working_;
  Completion pending_;
  int retries_ = 0;
};

}  // namespace VorselKelp
