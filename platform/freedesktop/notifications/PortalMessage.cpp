#include "notifications/PortalMessage.h"

#include "VorselKelpPosix/SafeName.h"
#include "bus/BusText.h"
#include "notifications/NotificationTexts.h"

namespace VorselKelp::freedesktop {
namespace {

constexpr std::size_t longestTarget = 4096;  // bytes
constexpr std::uint32_t versionWithSounds = 2;
constexpr const char* ownAction = "notification-response";  // of no prefix: the portal tells us of it

class Dictionary {
 public:
  Dictionary() { g_variant_builder_init(&builder_, G_VARIANT_TYPE_VARDICT); }
  void add(const char* name, GVariant* value) { g_variant_builder_add(&builder_, "{sv}", name, value); }
  void add(const char* name, const std::string& text) { add(name, g_variant_new_string(text.c_str())); }
  GVariant* end() { return g_variant_builder_end(&builder_); }

 private:
  GVariantBuilder builder_;
};

std::string actionName(const BusNotificationOptions& application) {
  return application.exportedAction.empty() ? ownAction : busText(application.exportedAction, longestLabel);
}

GVariant* targetOf(const std::string& identifier, std::string_view action) {
  return g_variant_new("(ss)", busText(identifier, longestTarget).c_str(),
                       busText(action, longestTarget).c_str());
}

GVariant* buttonsOf(const BusNotificationOptions& application, const std::string& identifier,
                    const platform::NotificationCategory& category) {
  GVariantBuilder buttons;
  g_variant_builder_init(&buttons, G_VARIANT_TYPE("aa{sv}"));
  for (std::size_t i = 0; i < buttonCount(category); ++i) {
    const auto& action = category.actions[i];
    Dictionary button;
    button.add("label", busText(action.title, longestLabel));
    button.add("action", actionName(application));
    button.add("target", targetOf(identifier, action.identifier));
    g_variant_builder_add_value(&buttons, button.end());
  }
  return g_variant_builder_end(&buttons);
}

GVariant* iconOf(const std::string& png) {
  GVariant* bytes = g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, png.data(), png.size(), 1);
  return g_variant_new("(sv)", "bytes", bytes);
}

}  // namespace

std::string portalName(const std::string& identifier) {
  return posix::safeName(identifier);
}

VariantPtr portalArguments(const BusNotificationOptions& application,
                           const platform::NotificationRequest& request,
                           const platform::NotificationCategory& category, const std::string& icon,
                           std::uint32_t version) {
  const auto& [identifier, content, trigger] = request;
  Dictionary notification;
  notification.add("title", titleText(application, content));
  if (const auto body = bodyText(content); !body.empty()) notification.add("body", body);
  notification.add("priority", std::string("normal"));
  notification.add("default-action", actionName(application));
  notification.add("default-action-target", targetOf(identifier, platform::defaultActionIdentifier));
  if (buttonCount(category) > 0) notification.add("buttons", buttonsOf(application, identifier, category));
  if (!icon.empty()) notification.add("icon", iconOf(icon));
  if (version >= versionWithSounds)
    notification.add("sound", std::string(content.sound ? "default" : "silent"));
  return hold(g_variant_new("(s@a{sv})", portalName(identifier).c_str(), notification.end()));
}

PortalTap portalTap(GVariant* arguments) {
  const char* name = nullptr;
  GVariant* listed = nullptr;
  g_variant_get(arguments, "(&ss@av)", &name, nullptr, &listed);
  const VariantPtr parameters(listed);
  PortalTap tap;
  tap.name = name;
  for (gsize i = 0; i < g_variant_n_children(parameters.get()); ++i) {
    GVariant* boxed = nullptr;
    g_variant_get_child(parameters.get(), i, "v", &boxed);
    const VariantPtr parameter(boxed);
    const char* texts[2] = {};
    if (g_variant_is_of_type(boxed, G_VARIANT_TYPE("(ss)"))) {
      g_variant_get(boxed, "(&s&s)", &texts[0], &texts[1]);
      tap.identifier = texts[0];
      tap.action = texts[1];
    } else if (g_variant_is_of_type(boxed, G_VARIANT_TYPE_VARDICT) &&
               g_variant_lookup(boxed, "activation-token", "&s", &texts[0])) {
      tap.activationToken = texts[0];
    }
  }
  return tap;
}

}  // namespace VorselKelp::freedesktop
