#include "VorselKelpFreedesktop/PortalNotifications.h"

#include <utility>

#include "VorselKelpPosix/PixbufImageDecoder.h"
#include "bus/Connection.h"
#include "bus/Portal.h"
#include "notifications/AttachedImage.h"
#include "notifications/NotificationDesk.h"
#include "notifications/PortalIcon.h"
#include "notifications/PortalMessage.h"
#include "notifications/ShownNotifications.h"

namespace VorselKelp::freedesktop {
namespace {

constexpr const char* portalInterface = "org.freedesktop.portal.Notification";

class PortalDesk final : public NotificationDesk, public std::enable_shared_from_this<PortalDesk> {
 public:
  PortalDesk(BusNotificationOptions options, std::shared_ptr<platform::MainQueue> mainQueue,
             NotificationRespond respond, NotificationGone gone)
      : options_(std::move(options)),
        mainQueue_(std::move(mainQueue)),
        respond_(std::move(respond)),
        gone_(std::move(gone)),
        connection_(std::make_shared<Connection>(BusKind::session, options_.busAddress, mainQueue_)) {}

  void listen() {
    connection_->listen({portalService, portalInterface, "ActionInvoked", portalObject, nullptr, "(ssav)"},
                        [weak = weak_from_this()](const std::string&, GVariant* arguments) {
                          if (const auto self = weak.lock()) self->tapped(portalTap(arguments));
                        });
  }

  [[nodiscard]] bool idle() const override { return nothingToSend() && connection_->idle(); }
  /// The portal knows notifications by our own identifiers.
  void resume(platform::NotificationRequest, platform::NotificationCategory, std::uint32_t) override {}
  /// The portal activates the exported action, whoever runs.
  [[nodiscard]] bool awaitsUser() const override { return false; }

 private:
  using Step = void (PortalDesk::*)(const std::string& identifier, Result<VariantPtr> reply);

  void send(const std::string& identifier) override {
    ask(identifier, {portalService, portalObject, "org.freedesktop.DBus.Properties", "Get", "(v)"},
        hold(g_variant_new("(ss)", portalInterface, "version")), &PortalDesk::versionKnown);
  }

  void ask(const std::string& identifier, Method method, VariantPtr arguments, Step step) {
    connection_->call(std::move(method), std::move(arguments),
                      [weak = weak_from_this(), identifier, step](Result<VariantPtr> reply) {
                        const auto self = weak.lock();
                        if (self && self->sending(identifier)) ((*self).*step)(identifier, std::move(reply));
                      });
  }

  void versionKnown(const std::string& identifier, Result<VariantPtr> reply) {
    if (!reply) return finish(identifier, reply.error());
    GVariant* boxed = nullptr;
    g_variant_get(reply->get(), "(v)", &boxed);
    const VariantPtr version(boxed);
    addIcon(identifier, g_variant_is_of_type(boxed, G_VARIANT_TYPE_UINT32) ? g_variant_get_uint32(boxed) : 1);
  }

  void addIcon(const std::string& identifier, std::uint32_t version) {
    const auto& attachments = sending(identifier)->order.request.content.attachments;
    auto go = [weak = weak_from_this(), identifier, version](const std::string& icon) {
      const auto self = weak.lock();
      if (self && self->sending(identifier)) self->add(identifier, icon, version);
    };
    const auto file = imageFile(attachments);
    if (!file) return go({});
    makePortalIcon(*file, decoder_, mainQueue_, std::move(go));
  }

  void add(const std::string& identifier, const std::string& icon, std::uint32_t version) {
    const auto& [order, next, removed] = *sending(identifier);
    if (removed) return finish(identifier, Done{});
    // Some portals show nothing new for a name that they know.
    withdraw(identifier);
    ask(identifier, portalMethod("AddNotification"),
        portalArguments(options_, order.request, order.category, icon, version), &PortalDesk::added);
  }

  void added(const std::string& identifier, Result<VariantPtr> reply) {
    if (!reply) return finish(identifier, reply.error());
    const auto& [order, next, removed] = *sending(identifier);
    if (removed) {
      withdraw(identifier);
      return finish(identifier, Done{});
    }
    for (const auto& lost : shown_.put({++count_, order.request, order.category, {}, false}))
      tellGone(lost, CloseReason::undefined);
    finish(identifier, Done{});
  }

  void takeAway(const std::string& identifier) override {
    withdraw(identifier);
    if (shown_.take(identifier)) tellGone(identifier, CloseReason::closedByUs);
  }

  void withdraw(const std::string& identifier) {
    connection_->call(portalMethod("RemoveNotification"),
                      hold(g_variant_new("(s)", portalName(identifier).c_str())),
                      [](const Result<VariantPtr>&) {});
  }

  void tapped(PortalTap tap) {
    if (portalName(tap.identifier) != tap.name) return;  // not one of those that are shown here
    auto shown = shown_.take(tap.identifier);
    platform::NotificationRequest request;
    request.identifier = tap.identifier;
    if (shown) request = std::move(shown->request);
    withdraw(tap.identifier);
    if (respond_) respond_({{std::move(request), std::move(tap.action)}, std::move(tap.activationToken)});
    if (shown) tellGone(tap.identifier, CloseReason::closedByUs);
  }

  void tellGone(const std::string& identifier, CloseReason reason) const {
    if (gone_) gone_(identifier, reason);
  }

  static Method portalMethod(const char* name) {
    return {portalService, portalObject, portalInterface, name};
  }

  const BusNotificationOptions options_;
  const std::shared_ptr<platform::MainQueue> mainQueue_;
  const NotificationRespond respond_;
  const NotificationGone gone_;
  const std::shared_ptr<Connection> connection_;
  const std::shared_ptr<platform::ImageDecoder> decoder_ = posix::makeImageDecoder();
  ShownNotifications shown_;
  std::uint32_t count_ = 0;
};

}  // namespace

bool insideSandbox(const std::string& root) {
  return g_file_test((root + "/.flatpak-info").c_str(), G_FILE_TEST_EXISTS) != FALSE;
}

std::shared_ptr<BusNotifications> makePortalNotifications(BusNotificationOptions options,
                                                          std::shared_ptr<platform::MainQueue> mainQueue,
                                                          NotificationRespond respond,
                                                          NotificationGone gone) {
  auto desk =
      std::make_shared<PortalDesk>(std::move(options), mainQueue, std::move(respond), std::move(gone));
  desk->listen();
  return queuedNotifications(std::move(mainQueue), std::move(desk));
}

std::shared_ptr<BusNotifications> makeNotifications(BusNotificationOptions options,
                                                    std::shared_ptr<platform::MainQueue> mainQueue,
                                                    NotificationRespond respond, NotificationGone gone,
                                                    bool sandboxed) {
  const auto make = sandboxed ? makePortalNotifications : makeBusNotifications;
  return make(std::move(options), std::move(mainQueue), std::move(respond), std::move(gone));
}

}  // namespace VorselKelp::freedesktop
