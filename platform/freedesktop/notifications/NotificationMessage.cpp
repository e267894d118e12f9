#include "notifications/NotificationMessage.h"

#include <string_view>
#include <utility>

#include "bus/BusText.h"
#include "notifications/AttachedImage.h"
#include "notifications/NotificationTexts.h"

namespace VorselKelp::freedesktop {
namespace {

using platform::NotificationCategory;
using platform::NotificationContent;

constexpr std::string_view tapKey = "default";
constexpr int serversOwnTime = -1;  // how long it is shown
constexpr std::uint8_t normalUrgency = 1;

std::string keyOf(std::size_t button) {
  return "button-" + std::to_string(button);
}

std::string escaped(const std::string& text) {
  return TextPtr(g_markup_escape_text(text.c_str(), -1)).get();
}

/// `image`: the address of a picture that stands nowhere else.
std::string bodyOf(const NotificationContent& content, bool markup, const std::string& image) {
  const auto text = bodyText(content);  // cut before it is escaped, so that no entity is cut
  if (!markup) return text;
  return escaped(text) + (image.empty() ? "" : "<img src=\"" + escaped(image) + "\" alt=\"\"/>");
}

VariantPtr actionsOf(const NotificationCategory& category) {
  GVariantBuilder actions;
  g_variant_builder_init(&actions, G_VARIANT_TYPE("as"));
  const auto add = [&](const std::string& key, const std::string& title) {
    g_variant_builder_add(&actions, "s", key.c_str());
    g_variant_builder_add(&actions, "s", title.c_str());
  };
  add(std::string(tapKey), openLabel);
  for (std::size_t i = 0; i < buttonCount(category); ++i)
    add(keyOf(i), busText(category.actions[i].title, longestLabel));
  return hold(g_variant_builder_end(&actions));
}

/// The file in the application's folder of sounds; empty when there is none of this name.
std::string soundFile(const std::string& folder, const std::string& name) {
  const bool plainName = !name.empty() && name.find('/') == std::string::npos && name != "." && name != "..";
  const auto path = folder + "/" + name;
  const bool found = plainName && !folder.empty() && g_file_test(path.c_str(), G_FILE_TEST_IS_REGULAR);
  return found && g_utf8_validate(path.c_str(), -1, nullptr) ? path : std::string();
}

/// A server knows a few kinds of its own; others are to carry the name of who made them up.
std::string kindOf(const std::string& category) {
  std::string kind = "x-vorselkelp." + category.substr(0, longestLabel);
  for (auto& c : kind) {
    if (!g_ascii_isalnum(c) && c != '-' && c != '.' && c != '_') c = '_';
  }
  return kind;
}

class Hints {
 public:
  Hints() { g_variant_builder_init(&builder_, G_VARIANT_TYPE("a{sv}")); }
  void add(const char* name, const std::string& text) { add(name, g_variant_new_string(text.c_str())); }
  void add(const char* name, GVariant* value) { g_variant_builder_add(&builder_, "{sv}", name, value); }
  VariantPtr end() { return hold(g_variant_builder_end(&builder_)); }

 private:
  GVariantBuilder builder_;
};

void addSound(Hints& hints, const BusNotificationOptions& application, const NotificationContent& content) {
  if (!content.sound) return hints.add("suppress-sound", g_variant_new_boolean(TRUE));
  const auto file = soundFile(application.soundFolder, content.sound->name.value_or(""));
  if (file.empty()) return hints.add("sound-name", std::string("message-new-instant"));
  hints.add("sound-file", file);
}

VariantPtr hintsOf(const BusNotificationOptions& application, const NotificationContent& content,
                   ServerAbilities abilities, const std::string& image) {
  Hints hints;
  hints.add("urgency", g_variant_new_byte(normalUrgency));
  if (!application.applicationIdentifier.empty())
    hints.add("desktop-entry", busText(application.applicationIdentifier, longestLabel));
  if (!content.categoryIdentifier.empty()) hints.add("category", kindOf(content.categoryIdentifier));
  if (abilities.images && !image.empty()) hints.add("image-path", image);
  if (abilities.sound) addSound(hints, application, content);
  // Its buttons work out of the server's history too; it is closed when one was tapped.
  if (abilities.persistence) hints.add("resident", g_variant_new_boolean(TRUE));
  return hints.end();
}

}  // namespace

ServerAbilities serverAbilities(GVariant* answer) {
  using Ability = bool ServerAbilities::*;
  static constexpr std::pair<std::string_view, Ability> table[] = {
      {"actions", &ServerAbilities::actions},
      {"body-markup", &ServerAbilities::bodyMarkup},
      {"body-images", &ServerAbilities::bodyImages},
      {"icon-static", &ServerAbilities::images},
      {"icon-multi", &ServerAbilities::images},
      {"persistence", &ServerAbilities::persistence},
      {"sound", &ServerAbilities::sound}};
  ServerAbilities abilities;
  GVariantIter* names = nullptr;
  const char* name = nullptr;
  g_variant_get(answer, "(as)", &names);
  while (g_variant_iter_next(names, "&s", &name)) {
    for (const auto& [known, ability] : table) {
      if (known == name) abilities.*ability = true;
    }
  }
  g_variant_iter_free(names);
  return abilities;
}

VariantPtr notifyArguments(const BusNotificationOptions& application, const NotificationContent& content,
                           const NotificationCategory& category, ServerAbilities abilities,
                           std::uint32_t replaced) {
  const auto name = busText(application.applicationName, longestLabel);
  const auto title = titleText(application, content);
  const bool pictures = abilities.images || abilities.bodyImages;
  const auto image = pictures ? imageAddress(content.attachments).value_or("") : std::string();
  const bool within = abilities.bodyImages && !abilities.images;
  const auto body = bodyOf(content, abilities.bodyMarkup, within ? image : std::string());
  // A server without actions may put up a dialog in their place.
  const auto actions = abilities.actions ? actionsOf(category) : hold(g_variant_new("as", nullptr));
  const auto hints = hintsOf(application, content, abilities, image);
  constexpr const char* noIcon = "";
  return hold(g_variant_new("(susss@as@a{sv}i)", name.c_str(), replaced, noIcon, title.c_str(), body.c_str(),
                            actions.get(), hints.get(), serversOwnTime));
}

std::optional<std::string> actionOfKey(const NotificationCategory& category, const std::string& key) {
  if (key == tapKey) return std::string(platform::defaultActionIdentifier);
  for (std::size_t i = 0; i < buttonCount(category); ++i) {
    if (key == keyOf(i)) return category.actions[i].identifier;
  }
  return std::nullopt;
}

}  // namespace VorselKelp::freedesktop
