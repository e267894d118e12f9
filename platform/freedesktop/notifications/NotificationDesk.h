#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "VorselKelpFreedesktop/BusNotifications.h"

namespace VorselKelp::freedesktop {

/// A notification that is to be shown, and who waits for the outcome.
struct NotificationOrder {
  platform::NotificationRequest request;
  platform::NotificationCategory category;
  BusNotifications::Answer answer;

  /// Once. Without anybody who waits a failure is a line on standard error.
  void end(const Status& status);
};

/// Takes orders and has them sent, one at a time for an identifier: a later one has to know what became of
/// the one before. Main queue only, the destructor included.
class NotificationDesk {
 public:
  virtual ~NotificationDesk() = default;

  void show(NotificationOrder order);
  void remove(const std::string& identifier);
  /// Ends all orders: nobody will run the desk any more.
  void abandon();
  virtual void resume(platform::NotificationRequest request, platform::NotificationCategory category,
                      std::uint32_t number) = 0;
  [[nodiscard]] virtual bool idle() const = 0;
  [[nodiscard]] virtual bool awaitsUser() const = 0;

 protected:
  struct Sending {
    NotificationOrder order;
    std::optional<NotificationOrder> next;
    bool removed = false;
  };

  /// Begins to send what `sending` holds for the identifier; finish() is called once for it, later.
  virtual void send(const std::string& identifier) = 0;
  /// Takes away what is shown under the identifier, if anything is.
  virtual void takeAway(const std::string& identifier) = 0;

  /// Null when it has been abandoned meanwhile.
  [[nodiscard]] Sending* sending(const std::string& identifier);
  /// Refused, it is done with all the same when it was removed or replaced meanwhile.
  void finish(const std::string& identifier, const Status& status);

  [[nodiscard]] bool nothingToSend() const { return sending_.empty(); }

 private:
  void start(NotificationOrder order);

  std::map<std::string, Sending> sending_;
};

/// The desk for callers of any thread.
std::shared_ptr<BusNotifications> queuedNotifications(std::shared_ptr<platform::MainQueue> mainQueue,
                                                      std::shared_ptr<NotificationDesk> desk);

}  // namespace VorselKelp::freedesktop
