#include "notifications/NotificationDesk.h"

#include <utility>

#include "VorselKelpPosix/LineSink.h"

namespace VorselKelp::freedesktop {
namespace {

class QueuedNotifications final : public BusNotifications {
 public:
  QueuedNotifications(std::shared_ptr<platform::MainQueue> mainQueue, std::shared_ptr<NotificationDesk> desk)
      : mainQueue_(std::move(mainQueue)), desk_(std::move(desk)) {}
  ~QueuedNotifications() override {
    mainQueue_->async([desk = std::move(desk_)] { desk->abandon(); });
  }

  void show(platform::NotificationRequest request, platform::NotificationCategory category,
            Answer answer) override {
    mainQueue_->async([desk = desk_, order = NotificationOrder{std::move(request), std::move(category),
                                                               std::move(answer)}]() mutable {
      desk->show(std::move(order));
    });
  }
  void remove(const std::vector<std::string>& identifiers) override {
    mainQueue_->async([desk = desk_, identifiers] {
      for (const auto& identifier : identifiers) desk->remove(identifier);
    });
  }
  [[nodiscard]] bool idle() const override { return desk_->idle(); }

 private:
  const std::shared_ptr<platform::MainQueue> mainQueue_;
  std::shared_ptr<NotificationDesk> desk_;
};

}  // namespace

void NotificationOrder::end(const Status& status) {
  if (answer) return answer(status);
  if (status) return;
  posix::standardErrorLines()("The desktop does not show the notification \"" + request.identifier +
                              "\": " + status.error().description);
}

std::shared_ptr<BusNotifications> queuedNotifications(std::shared_ptr<platform::MainQueue> mainQueue,
                                                      std::shared_ptr<NotificationDesk> desk) {
  return std::make_shared<QueuedNotifications>(std::move(mainQueue), std::move(desk));
}

}  // namespace VorselKelp::freedesktop
