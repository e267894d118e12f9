#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "core/CoreContext.h"
#include "net/ReportBuilder.h"
#include "net/VorselRequest.h"

namespace VorselKelp {

/// Decides whether a device token must be reported, reports it, and records what the server accepted.
class TokenRegistration : public std::enable_shared_from_this<TokenRegistration> {
 public:
  TokenRegistration(std::shared_ptr<CoreContext> context, std::shared_ptr<VorselRequest> requests,
                    std::shared_ptr<ReportBuilder> reports)
      : context_(std::move(context)), requests_(std::move(requests)), reports_(std::move(reports)) {}

  void registerToken(std::span<const std::uint8_t> deviceToken);

 private:
  /// Main thread, like every request for the permission.
  void askPermission(const std::string& token);
  /// The user allows notifications. On a thread of the platform's.
  void permitted(const std::string& token);
  /// Without a counted session the process stops.
  void report(const std::string& token);
  void reported(const VorselRequest::Response& response, const std::string& token);

  std::shared_ptr<CoreContext> context_;
  std::shared_ptr<VorselRequest> requests_;
  std::shared_ptr<ReportBuilder> reports_;
};

}  // namespace VorselKelp
