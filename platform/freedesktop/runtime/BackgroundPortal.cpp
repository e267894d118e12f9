#include "VorselKelpFreedesktop/BackgroundPortal.h"

#include <algorithm>
#include <map>
#include <utility>

#include "bus/BusText.h"
#include "bus/Connection.h"
#include "bus/Portal.h"

namespace VorselKelp::freedesktop {
namespace {

constexpr std::size_t longestReason = 512;  // bytes
constexpr std::size_t longestWord = 4096;   // bytes, of a command line

/// What the portal's answer is told apart by; a part of an object's path.
std::string newRequestToken() {
  std::string token = "vorselkelp-" + std::string(TextPtr(g_uuid_string_random()).get());
  std::ranges::replace(token, '-', '_');
  return token;
}

VariantPtr requestArguments(const BackgroundWish& wish, const std::string& token) {
  GVariantBuilder words;
  g_variant_builder_init(&words, G_VARIANT_TYPE("as"));
  for (const auto& word : wish.commandLine)
    g_variant_builder_add(&words, "s", busText(word, longestWord).c_str());
  GVariantBuilder options;
  g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
  const auto add = [&](const char* name, GVariant* value) {
    g_variant_builder_add(&options, "{sv}", name, value);
  };
  add("handle_token", g_variant_new_string(token.c_str()));
  add("reason", g_variant_new_string(busText(wish.reason, longestReason).c_str()));
  add("autostart", g_variant_new_boolean(wish.autostart ? TRUE : FALSE));
  add("commandline", g_variant_builder_end(&words));
  // By the bus it would start the application itself, with its window.
  add("dbus-activatable", g_variant_new_boolean(FALSE));
  constexpr const char* noWindow = "";
  return hold(g_variant_new("(s@a{sv})", noWindow, g_variant_builder_end(&options)));
}

/// Declined in whole, the answer has no members.
bool autostartIn(GVariant* arguments) {
  guint32 outcome = 0;
  GVariant* members = nullptr;
  g_variant_get(arguments, "(u@a{sv})", &outcome, &members);
  const VariantPtr held(members);
  gboolean autostart = FALSE;
  return outcome == 0 && g_variant_lookup(members, "autostart", "b", &autostart) && autostart;
}

class AskedPortal final : public BackgroundPortal, public std::enable_shared_from_this<AskedPortal> {
 public:
  AskedPortal(std::shared_ptr<platform::MainQueue> mainQueue, std::string busAddress)
      : connection_(
            std::make_shared<Connection>(BusKind::session, std::move(busAddress), std::move(mainQueue))) {}

  /// The object that answers is made by the request, and may answer before its path is known.
  void listen() {
    connection_->listen(
        {portalService, "org.freedesktop.portal.Request", "Response", nullptr, nullptr, "(ua{sv})"},
        [weak = weak_from_this()](const std::string& path, GVariant* arguments) {
          if (const auto self = weak.lock())
            self->end(path.substr(path.rfind('/') + 1), autostartIn(arguments));
        });
  }

  void ask(BackgroundWish wish, Answer answer) override {
    const auto token = newRequestToken();
    answers_.emplace(token, std::move(answer));
    connection_->call(
        {portalService, portalObject, "org.freedesktop.portal.Background", "RequestBackground", "(o)"},
        requestArguments(wish, token), [weak = weak_from_this(), token](const Result<VariantPtr>& taken) {
          if (const auto self = weak.lock(); self && !taken) self->end(token, taken.error());
        });
  }

  [[nodiscard]] bool idle() const override { return connection_->idle(); }

 private:
  void end(const std::string& token, Result<bool> result) {
    if (auto asked = answers_.extract(token)) asked.mapped()(std::move(result));
  }

  const std::shared_ptr<Connection> connection_;
  std::map<std::string, Answer> answers_;  ///< by token
};

}  // namespace

std::shared_ptr<BackgroundPortal> makeBackgroundPortal(std::shared_ptr<platform::MainQueue> mainQueue,
                                                       std::string busAddress) {
  auto portal = std::make_shared<AskedPortal>(std::move(mainQueue), std::move(busAddress));
  portal->listen();
  return portal;
}

}  // namespace VorselKelp::freedesktop
