#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "VorselKelp/VorselKellp.h"

namespace reader {

/// A reading application as far as push concerns it: starts the library, keeps a list of pages to show, and
/// knows whether the server has the device's token. Main thread, except where noted.
class ReaderApp final : public VorselKelp::VorselKellpDelegate,
                        public std::enable_shared_from_this<ReaderApp> {
 public:
  static constexpr const char* appGroup = "group.com.example.reader";

  /// Starts the library on a platform: the real one in main(), one in memory in the tests.
  static std::shared_ptr<ReaderApp> launch(std::shared_ptr<VorselKelp::platform::Platform> platform);

  /// The user pressed "Tell me about new chapters".
  void enableNotifications() { VorselKelp::VorselKellp::askForNotificationsPermission(); }
  /// The system's callbacks.
  void didRegister(std::span<const std::uint8_t> token) { VorselKelp::VorselKellp::registerToken(token); }
  void didReceive(const VorselKelp::platform::NotificationResponse& response);

  /// The chapters that deep links have opened, oldest first.
  [[nodiscard]] const std::vector<std::string>& openedChapters() const { return openedChapters_; }
  [[nodiscard]] bool reachable() const { return reachable_; }

  void handleURL(const std::string& url) override;
  void vorselInited(bool success) override { reachable_ = success; }

 private:
  std::vector<std::string> openedChapters_;
  bool reachable_ = false;
};

}  // namespace reader
