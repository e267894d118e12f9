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
  void resume(platform::NotificationRequest request, platform::NotificationCategory category,
              std::uint32_t number) override {
    mainQueue_->async([desk = desk_, request = std::move(request), category = std::move(category),
                       number]() mutable { desk->resume(std::move(request), std::move(category), number); });
  }
  void remove(const std::vector<std::string>& identifiers) override {
    mainQueue_->async([desk = desk_, identifiers] {
      for (const auto& identifier : identifiers) desk->remove(identifier);
    });
  }
  [[nodiscard]] bool idle() const override { return desk_->idle(); }
  [[nodiscard]] bool awaitsUser() const override { return desk_->awaitsUser(); }

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

void NotificationDesk::show(NotificationOrder order) {
  auto* earlier = sending(order.request.identifier);
  if (!earlier) return start(std::move(order));
  if (earlier->next) earlier->next->end(Done{});
  earlier->next = std::move(order);
}

void NotificationDesk::remove(const std::string& identifier) {
  if (auto* current = sending(identifier)) {
    current->removed = true;
    if (auto next = std::exchange(current->next, std::nullopt)) next->end(Done{});
  }
  takeAway(identifier);
}

void NotificationDesk::abandon() {
  const Error reason{"the application ended before it was shown"};
  for (auto& [identifier, sending] : std::exchange(sending_, {})) {
    sending.order.end(reason);
    if (sending.next) sending.next->end(reason);
  }
}

NotificationDesk::Sending* NotificationDesk::sending(const std::string& identifier) {
  const auto found = sending_.find(identifier);
  return found == sending_.end() ? nullptr : &found->second;
}

void NotificationDesk::start(NotificationOrder order) {
  const auto identifier = order.request.identifier;
  sending_.emplace(identifier, Sending{std::move(order), std::nullopt, false});
  send(identifier);
}

void NotificationDesk::finish(const std::string& identifier, const Status& status) {
  auto ended = std::move(sending_.extract(identifier).mapped());
  const bool wanted = !ended.removed && !ended.next;
  if (ended.next) start(*std::move(ended.next));
  ended.order.end(wanted ? status : Done{});
}

std::shared_ptr<BusNotifications> queuedNotifications(std::shared_ptr<platform::MainQueue> mainQueue,
                                                      std::shared_ptr<NotificationDesk> desk) {
  return std::make_shared<QueuedNotifications>(std::move(mainQueue), std::move(desk));
}

}  // namespace VorselKelp::freedesktop
