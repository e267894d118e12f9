#include "VorselKelpFreedesktop/BusNotifications.h"

#include <algorithm>
#include <map>
#include <utility>

#include "VorselKelpPosix/LineSink.h"
#include "bus/Connection.h"
#include "notifications/NotificationMessage.h"

namespace VorselKelp::freedesktop {
namespace {

using platform::NotificationCategory;
using platform::NotificationRequest;

constexpr const char* service = "org.freedesktop.Notifications";
constexpr const char* object = "/org/freedesktop/Notifications";
constexpr std::uint32_t dismissedByUser = 2;

struct Order {
  NotificationRequest request;
  NotificationCategory category;
  BusNotifications::Answer answer;

  void end(const Status& status) {
    if (answer) return answer(status);
    if (status) return;
    posix::standardErrorLines()("The desktop does not show the notification \"" + request.identifier +
                                "\": " + status.error().description);
  }
};

/// What is on its way to the server, one at a time for an identifier: a later one has to name the number that
/// the server gives to the one before.
struct Sending {
  Order order;
  std::optional<Order> next;
  bool removed = false;
};

struct Shown {
  std::uint32_t number = 0;  ///< the server's
  NotificationRequest request;
  NotificationCategory category;
};

/// Everything here happens on the main queue.
class Desk : public std::enable_shared_from_this<Desk> {
 public:
  using Respond = std::function<void(platform::NotificationResponse)>;

  Desk(BusNotificationOptions options, const std::shared_ptr<platform::MainQueue>& mainQueue, Respond respond)
      : options_(std::move(options)),
        respond_(std::move(respond)),
        connection_(std::make_shared<Connection>(BusKind::session, options_.busAddress, mainQueue)) {}

  void listen() {
    const auto on = [this](const SignalMatch& match, void (Desk::*event)(GVariant*)) {
      connection_->listen(match, [weak = weak_from_this(), event](const std::string&, GVariant* arguments) {
        if (const auto self = weak.lock()) ((*self).*event)(arguments);
      });
    };
    on({service, service, "ActionInvoked", object, nullptr, "(us)"}, &Desk::actionInvoked);
    on({service, service, "NotificationClosed", object, nullptr, "(uu)"}, &Desk::closed);
    on({"org.freedesktop.DBus", "org.freedesktop.DBus", "NameOwnerChanged", nullptr, service, "(sss)"},
       &Desk::serverChanged);
  }

  void show(Order order) {
    const auto found = sending_.find(order.request.identifier);
    if (found == sending_.end()) return send(std::move(order));
    auto& next = found->second.next;
    if (next) next->end(Error{"a newer one took its place before it was shown"});
    next = std::move(order);
  }

  void remove(const std::string& identifier) {
    if (const auto found = sending_.find(identifier); found != sending_.end()) {
      found->second.removed = true;
      if (auto next = std::exchange(found->second.next, std::nullopt)) next->end(removedTooSoon());
    }
    if (const auto gone = shown_.extract(identifier)) close(gone.mapped().number);
  }

  void abandon() {
    for (auto& [identifier, sending] : std::exchange(sending_, {})) {
      const Error reason{"the application ended before it was shown"};
      sending.order.end(reason);
      if (sending.next) sending.next->end(reason);
    }
  }

  [[nodiscard]] bool idle() const { return connection_->idle(); }

 private:
  static Error removedTooSoon() { return {"it was removed before it was shown"}; }

  using Step = void (Desk::*)(const std::string& identifier, Result<VariantPtr> reply);

  void ask(const std::string& identifier, Method method, VariantPtr arguments, Step step) {
    connection_->call(std::move(method), std::move(arguments),
                      [weak = weak_from_this(), identifier, step](Result<VariantPtr> reply) {
                        const auto self = weak.lock();
                        if (self && self->sending_.contains(identifier))
                          ((*self).*step)(identifier, std::move(reply));
                      });
  }

  void send(Order order) {
    const auto identifier = order.request.identifier;
    sending_.emplace(identifier, Sending{std::move(order), std::nullopt, false});
    ask(identifier, {service, object, service, "GetCapabilities", "(as)"}, nullptr, &Desk::abilitiesKnown);
  }

  void abilitiesKnown(const std::string& identifier, Result<VariantPtr> reply) {
    const auto& [order, next, removed] = sending_.at(identifier);
    if (!reply) return finish(identifier, reply.error());
    if (removed) return finish(identifier, removedTooSoon());
    const auto old = shown_.find(identifier);
    const auto replaced = old == shown_.end() ? 0 : old->second.number;
    ask(identifier, {service, object, service, "Notify", "(u)"},
        notifyArguments(options_, order.request.content, order.category, serverAbilities(reply->get()),
                        replaced),
        &Desk::taken);
  }

  void taken(const std::string& identifier, Result<VariantPtr> reply) {
    if (!reply) return finish(identifier, reply.error());
    const auto& [order, next, removed] = sending_.at(identifier);
    std::uint32_t number = 0;
    g_variant_get(reply->get(), "(u)", &number);
    if (removed) {
      close(number);
      return finish(identifier, removedTooSoon());
    }
    shown_.insert_or_assign(identifier, Shown{number, order.request, order.category});
    finish(identifier, Done{});
  }

  void finish(const std::string& identifier, const Status& status) {
    auto sending = std::move(sending_.extract(identifier).mapped());
    if (sending.next) send(*std::move(sending.next));
    sending.order.end(status);
  }

  void close(std::uint32_t number) {
    // A server that does not know the number any more has nothing to close.
    connection_->call({service, object, service, "CloseNotification"}, hold(g_variant_new("(u)", number)),
                      [](const Result<VariantPtr>&) {});
  }

  std::map<std::string, Shown>::iterator find(std::uint32_t number) {
    return std::find_if(shown_.begin(), shown_.end(),
                        [&](const auto& entry) { return entry.second.number == number; });
  }

  void actionInvoked(GVariant* arguments) {
    std::uint32_t number = 0;
    const char* key = nullptr;
    g_variant_get(arguments, "(u&s)", &number, &key);
    const auto found = find(number);
    if (found == shown_.end()) return;
    auto action = actionOfKey(found->second.category, key);
    if (!action) return;
    auto tapped = std::move(shown_.extract(found).mapped());
    close(number);  // some servers leave that to the application
    respond_({std::move(tapped.request), *std::move(action)});
  }

  void closed(GVariant* arguments) {
    std::uint32_t number = 0;
    std::uint32_t reason = 0;
    g_variant_get(arguments, "(uu)", &number, &reason);
    const auto found = find(number);
    if (found == shown_.end()) return;
    auto gone = std::move(shown_.extract(found).mapped());
    if (reason == dismissedByUser && gone.category.customDismissAction)
      respond_({std::move(gone.request), std::string(platform::dismissActionIdentifier)});
  }

  /// Another server counts anew: the old numbers would name notifications of others.
  void serverChanged(GVariant*) { shown_.clear(); }

  const BusNotificationOptions options_;
  const Respond respond_;
  const std::shared_ptr<Connection> connection_;
  std::map<std::string, Sending> sending_;
  std::map<std::string, Shown> shown_;
};

/// The face for all threads. The desk behind it is used and destroyed on the main queue.
class QueuedNotifications final : public BusNotifications {
 public:
  QueuedNotifications(std::shared_ptr<platform::MainQueue> mainQueue, std::shared_ptr<Desk> desk)
      : mainQueue_(std::move(mainQueue)), desk_(std::move(desk)) {}
  ~QueuedNotifications() override {
    mainQueue_->async([desk = std::move(desk_)] { desk->abandon(); });
  }

  void show(NotificationRequest request, NotificationCategory category, Answer answer) override {
    mainQueue_->async(
        [desk = desk_, order = Order{std::move(request), std::move(category), std::move(answer)}]() mutable {
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
  std::shared_ptr<Desk> desk_;
};

}  // namespace

std::shared_ptr<BusNotifications> makeBusNotifications(
    BusNotificationOptions options, std::shared_ptr<platform::MainQueue> mainQueue,
    std::function<void(platform::NotificationResponse)> respond) {
  auto desk = std::make_shared<Desk>(std::move(options), mainQueue, std::move(respond));
  desk->listen();
  return std::make_shared<QueuedNotifications>(std::move(mainQueue), std::move(desk));
}

}  // namespace VorselKelp::freedesktop
