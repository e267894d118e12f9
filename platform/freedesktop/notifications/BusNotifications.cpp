#include "VorselKelpFreedesktop/BusNotifications.h"

#include <utility>

#include "bus/Connection.h"
#include "notifications/NotificationDesk.h"
#include "notifications/NotificationMessage.h"
#include "notifications/ShownNotifications.h"

namespace VorselKelp::freedesktop {
namespace {

constexpr const char* service = "org.freedesktop.Notifications";
constexpr const char* object = "/org/freedesktop/Notifications";

CloseReason closeReason(std::uint32_t code) {
  constexpr auto last = static_cast<std::uint32_t>(CloseReason::undefined);
  return code == 0 || code > last ? CloseReason::undefined : static_cast<CloseReason>(code);
}

class ServerDesk final : public NotificationDesk, public std::enable_shared_from_this<ServerDesk> {
 public:
  ServerDesk(BusNotificationOptions options, const std::shared_ptr<platform::MainQueue>& mainQueue,
             NotificationRespond respond, NotificationGone gone)
      : options_(std::move(options)),
        respond_(std::move(respond)),
        gone_(std::move(gone)),
        connection_(std::make_shared<Connection>(BusKind::session, options_.busAddress, mainQueue)) {}

  void listen() {
    const auto on = [this](const SignalMatch& match, void (ServerDesk::*event)(GVariant*)) {
      connection_->listen(match, [weak = weak_from_this(), event](const std::string&, GVariant* arguments) {
        if (const auto self = weak.lock()) ((*self).*event)(arguments);
      });
    };
    on({service, service, "ActionInvoked", object, nullptr, "(us)"}, &ServerDesk::actionInvoked);
    on({service, service, "NotificationClosed", object, nullptr, "(uu)"}, &ServerDesk::closed);
    on({service, service, "ActivationToken", object, nullptr, "(us)"}, &ServerDesk::activationAllowed);
    on({"org.freedesktop.DBus", "org.freedesktop.DBus", "NameOwnerChanged", nullptr, service, "(sss)"},
       &ServerDesk::serverChanged);
    connection_->whenLost([weak = weak_from_this()] {
      if (const auto self = weak.lock()) self->forgetAll();
    });
  }

  void resume(platform::NotificationRequest request, platform::NotificationCategory category,
              std::uint32_t number) override {
    for (const auto& lost : shown_.put({number, std::move(request), std::move(category), {}, false, true}))
      tellGone(lost, CloseReason::undefined);
  }
  [[nodiscard]] bool idle() const override { return connection_->idle(); }
  [[nodiscard]] bool awaitsUser() const override { return shown_.any(remembers_); }

 private:
  using Step = void (ServerDesk::*)(const std::string& identifier, Result<VariantPtr> reply);

  void send(const std::string& identifier) override {
    if (abilities_) return notify(identifier);
    ask(identifier, {service, object, service, "GetCapabilities", "(as)"}, nullptr,
        &ServerDesk::abilitiesKnown);
  }

  void ask(const std::string& identifier, Method method, VariantPtr arguments, Step step) {
    connection_->call(std::move(method), std::move(arguments),
                      [weak = weak_from_this(), identifier, step](Result<VariantPtr> reply) {
                        const auto self = weak.lock();
                        if (self && self->sending(identifier)) ((*self).*step)(identifier, std::move(reply));
                      });
  }

  void abilitiesKnown(const std::string& identifier, Result<VariantPtr> reply) {
    if (!reply) return finish(identifier, reply.error());
    abilities_ = serverAbilities(reply->get());
    remembers_ = abilities_->persistence;
    if (sending(identifier)->removed) return finish(identifier, Done{});
    notify(identifier);
  }

  void notify(const std::string& identifier) {
    const auto& order = sending(identifier)->order;
    auto content = order.request.content;
    if (shown_.resumed(identifier)) content.sound.reset();
    ask(identifier, {service, object, service, "Notify", "(u)"},
        notifyArguments(options_, content, order.category, *abilities_, shown_.numberOf(identifier)),
        &ServerDesk::taken);
  }

  void taken(const std::string& identifier, Result<VariantPtr> reply) {
    if (!reply) return finish(identifier, reply.error());
    const auto& [order, next, removed] = *sending(identifier);
    std::uint32_t number = 0;
    g_variant_get(reply->get(), "(u)", &number);
    if (number == 0) return finish(identifier, Error{"the desktop gave it no number"});
    if (removed) {
      close(number);
      return finish(identifier, Done{});
    }
    if (options_.numbered) options_.numbered(identifier, number);
    for (const auto& lost : shown_.put({number, order.request, order.category, {}, false, false}))
      tellGone(lost, CloseReason::undefined);
    finish(identifier, Done{});
  }

  void takeAway(const std::string& identifier) override {
    const auto shown = shown_.take(identifier);
    if (!shown) return;
    close(shown->number);
    tellGone(identifier, CloseReason::closedByUs);
  }

  void close(std::uint32_t number) {
    // A server that does not know the number any more has nothing to close.
    connection_->call({service, object, service, "CloseNotification"}, hold(g_variant_new("(u)", number)),
                      [](const Result<VariantPtr>&) {});
  }

  void activationAllowed(GVariant* arguments) {
    std::uint32_t number = 0;
    const char* token = nullptr;
    g_variant_get(arguments, "(u&s)", &number, &token);
    if (auto* shown = shown_.find(number)) shown->activationToken = token;
  }

  void actionInvoked(GVariant* arguments) {
    std::uint32_t number = 0;
    const char* key = nullptr;
    g_variant_get(arguments, "(u&s)", &number, &key);
    const auto* shown = shown_.find(number);
    if (!shown) return;
    auto action = actionOfKey(shown->category, key);
    if (!action) return;
    close(number);  // some servers leave that to the application
    respond(*shown_.take(std::string(shown->request.identifier)), *std::move(action),
            CloseReason::closedByUs);
  }

  void closed(GVariant* arguments) {
    std::uint32_t number = 0;
    std::uint32_t code = 0;
    g_variant_get(arguments, "(uu)", &number, &code);
    auto* shown = shown_.find(number);
    if (!shown) return;
    const auto identifier = shown->request.identifier;
    const auto reason = closeReason(code);
    if (reason == CloseReason::expired) {
      if (!std::exchange(shown->expired, true)) tellGone(identifier, reason);
      return;
    }
    auto taken = *shown_.take(identifier);
    if (reason != CloseReason::dismissed || !taken.category.customDismissAction)
      return tellGone(identifier, reason);
    respond(std::move(taken), std::string(platform::dismissActionIdentifier), reason);
  }

  void respond(ShownNotification shown, std::string action, CloseReason reason) {
    const auto identifier = shown.request.identifier;
    if (respond_) respond_({{std::move(shown.request), std::move(action)}, std::move(shown.activationToken)});
    tellGone(identifier, reason);
  }

  void tellGone(const std::string& identifier, CloseReason reason) const {
    if (gone_) gone_(identifier, reason);
  }

  /// Another server counts anew: the old numbers would name notifications of others.
  void serverChanged(GVariant*) { forgetAll(); }
  void forgetAll() {
    abilities_.reset();
    for (const auto& identifier : shown_.clear()) tellGone(identifier, CloseReason::undefined);
  }

  const BusNotificationOptions options_;
  const NotificationRespond respond_;
  const NotificationGone gone_;
  const std::shared_ptr<Connection> connection_;
  ShownNotifications shown_;
  std::optional<ServerAbilities> abilities_;  ///< of the one that runs; absent: nobody has asked it yet
  bool remembers_ = false;                    ///< the server keeps what has expired for the user to look at
};

}  // namespace

std::shared_ptr<BusNotifications> makeBusNotifications(BusNotificationOptions options,
                                                       std::shared_ptr<platform::MainQueue> mainQueue,
                                                       NotificationRespond respond, NotificationGone gone) {
  auto desk =
      std::make_shared<ServerDesk>(std::move(options), mainQueue, std::move(respond), std::move(gone));
  desk->listen();
  return queuedNotifications(std::move(mainQueue), std::move(desk));
}

}  // namespace VorselKelp::freedesktop
