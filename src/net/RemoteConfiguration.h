#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "core/CoreContext.h"
#include "net/RemoteConfigurationRecords.h"
#include "net/VorselRequest.h"

namespace VorselKelp {

/// Fetches the remote configuration at start-up and applies it: endpoint overrides, feature switches, the
/// custom-prompt flag.
class RemoteConfiguration : public std::enable_shared_from_this<RemoteConfiguration> {
 public:
  using Continuation = std::function<void()>;

  RemoteConfiguration(std::shared_ptr<CoreContext> context, std::shared_ptr<VorselRequest> requests)
      : context_(std::move(context)), requests_(std::move(requests)) {}

  /// `continuation` runs on the session's delegate queue: at once for a status above 299, and after the
  /// document was handled for any status that brought one, so twice when both hold. Never after a transport
  /// error.
  void fetch(const std::string& apiKey, Continuation continuation);
  /// Fetches again, with the same continuation, what met a transport error last; nothing in any other case.
  /// Any thread.
  void repeat();

 private:
  void handle(const platform::URLResult& result, const std::string& apiKey, const Continuation& continuation);
  /// Everything that the document decides, in one step of the store.
  void apply(const std::string& document, const std::string& apiKey);
  void applyUrls(const Config& config);
  void applySwitches(const Config& config, const std::string& apiKey);

  std::shared_ptr<CoreContext> context_;
  std::shared_ptr<VorselRequest> requests_;
  std::mutex mutex_;
  std::function<void()> again_;  ///< null unless the last fetch met a transport error
};

}  // namespace VorselKelp
