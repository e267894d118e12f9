#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "VorselKelpSystem/NotificationCenter.h"
#include "VorselKelpSystem/RunningApplication.h"
#include "bus/Connection.h"

namespace VorselKelp::freedesktop {

struct AgentEvents {
  /// There is a push subscription, perhaps another than before: as JSON.
  std::function<void(const std::string& subscription)> registered;
  /// There will be none.
  std::function<void(const Error& reason)> refused;
};

/// The application's push agent, where one is installed: gets the application its subscription, shows its
/// notifications and wakes for them. Main thread, end() apart.
class AgentClient final : public system::RemoteRegistration,
                          public system::ShowingProcess,
                          public std::enable_shared_from_this<AgentClient> {
 public:
  /// `application` is the application's identifier.
  AgentClient(const std::string& application, std::string busAddress,
              std::shared_ptr<platform::MainQueue> mainQueue, AgentEvents events);

  /// Looks whether there is one; `found` comes once. To be called once, before everything else.
  void find(platform::UniqueFunction<void(bool)> found);

  void begin() override;
  void end() override;
  void look() override;
  void takeAway(const std::vector<std::string>& identifiers) override;

 private:
  void listed(Result<VariantPtr> names, platform::UniqueFunction<void(bool)> found);
  void settle(bool there, platform::UniqueFunction<void(bool)> found);
  void ask();
  void call(const char* method, VariantPtr arguments, const char* answer, Connection::Reply reply);
  void note(GVariant* condition);

  const std::string name_;
  const std::shared_ptr<platform::MainQueue> mainQueue_;
  const AgentEvents events_;
  const std::shared_ptr<Connection> connection_;
  std::optional<bool> there_;
  bool wanted_ = false;
  std::string reason_ = "there is no push agent on this machine";  ///< of its absence
  std::string subscription_;
};

}  // namespace VorselKelp::freedesktop
