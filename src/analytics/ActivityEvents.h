#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "VorselKelp/JSONAny.h"
#include "core/CoreContext.h"
#include "net/ReportBuilder.h"
#include "net/VorselRequest.h"

namespace VorselKelp {

/// Decides when activity is reported, and with which code. Any thread; answers are handled on the session's
/// delegate queue.
class ActivityEvents : public std::enable_shared_from_this<ActivityEvents> {
 public:
  /// Values that travel with the install report to the open report that follows it; they enter neither body.
  using Parameters = std::map<std::string, std::string>;

  ActivityEvents(std::shared_ptr<CoreContext> context, std::shared_ptr<VorselRequest> requests,
                 std::shared_ptr<ReportBuilder> reports);

  /// Reports the install until the server has accepted one, else the open.
  void startActivity(const Parameters& parameters);
  /// An application's own event, sent whatever the analytics switch says. A value without a JSON form and
  /// missing session values stop the process.
  void sendCustomEvent(const std::string& key, const JSONAny& value);
  void sendStatusEvent(std::int64_t code);

 private:
  void sendActivity(std::int64_t code, const Parameters& parameters);
  void installAnswered(const VorselRequest::Response& response, const std::optional<Error>& error,
                       const Parameters& parameters);
  /// The body with this code; absent while the core or analytics is off, or a session value is missing.
  std::optional<ActivityBody> body(std::int64_t code);

  std::shared_ptr<CoreContext> context_;
  std::shared_ptr<VorselRequest> requests_;
  std::shared_ptr<ReportBuilder> reports_;
};

}  // namespace VorselKelp
