#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "VorselKelp/VorselConfig.h"
#include "VorselKelp/VorselKellpDelegate.h"
#include "core/SessionValues.h"

namespace VorselKelp {

/// What one core keeps in memory for all of its parts. Any thread.
class CoreState {
 public:
  [[nodiscard]] std::string appGroupSetting() const;
  void setAppGroupSetting(std::string group);

  [[nodiscard]] std::shared_ptr<VorselKellpDelegate> delegate() const;
  void setDelegate(std::weak_ptr<VorselKellpDelegate> delegate);

  [[nodiscard]] std::shared_ptr<VorselConfig> configuration() const;
  void setConfiguration(std::shared_ptr<VorselConfig> configuration);

  /// Sent as "u" with every report.
  [[nodiscard]] std::map<std::string, std::string> userValues() const;
  void setUserValue(const std::string& key, std::string value);

  /// The session that this process has counted, whether or not the store took it.
  [[nodiscard]] std::optional<SessionValues> countedSession() const;
  void setCountedSession(SessionValues session);

  /// Where the user came from: carried in reports once something sets it; nothing does yet.
  [[nodiscard]] std::optional<std::string> link() const { return std::nullopt; }
  [[nodiscard]] std::optional<std::string> referrer() const { return std::nullopt; }

  std::atomic<bool> initialised = false;
  /// Registration for remote notifications was asked for at start-up.
  std::atomic<bool> registrationRequested = false;
  /// The remote configuration names a permission page of the publisher's.
  std::atomic<bool> customPrompt = false;

 private:
  mutable std::mutex mutex_;
  std::string appGroupSetting_;
  std::weak_ptr<VorselKellpDelegate> delegate_;
  std::shared_ptr<VorselConfig> configuration_;
  std::map<std::string, std::string> userValues_;
  std::optional<SessionValues> countedSession_;
};

}  // namespace VorselKelp
