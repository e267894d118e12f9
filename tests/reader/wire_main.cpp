// A news wire: an application without windows, on GLib's main loop alone. Its arguments are the description
// and, where its lines are to go to a file, that file.

#include <gio/gio.h>

#include <cstdio>

#include "VorselKelp/VorselKellp.h"
#include "VorselKelpFreedesktop/Application.h"
#include "VorselKelpFreedesktop/HostConsole.h"
#include "VorselKelpSystem/Description.h"

using namespace VorselKelp;

namespace {

struct Wire {
  system::Description description;
  const char* log = nullptr;
  std::shared_ptr<freedesktop::Application> push;
};

void start(GApplication* application, gpointer self) {
  auto& wire = *static_cast<Wire*>(self);
  freedesktop::ApplicationOptions options;
  options.configure = [](VorselBuilder& builder) { builder.push().scheduleNotifications(3600); };
  options.openArticle = [](const std::string& url) { return std::printf("opened %s\n", url.c_str()) > 0; };
  if (wire.log != nullptr) options.console = *freedesktop::makeFileConsole(wire.log);
  auto started = freedesktop::startApplication(application, wire.description, std::move(options));
  if (!started) return g_printerr("No pushes: %s\n", started.error().description.c_str());
  wire.push = *std::move(started);
  g_application_hold(application);
}

/// app.remind: schedules the reminder.
void remind(GSimpleAction*, GVariant*, gpointer) {
  VorselKellp::setNotification("The wire is waiting");
  VorselKellp::updateScheduler();
}

/// app.register(token): as if an agent had brought a token.
void takeToken(GSimpleAction*, GVariant* token, gpointer) {
  const std::string text = g_variant_get_string(token, nullptr);
  VorselKellp::setUserValue("subscription", text);
  VorselKellp::registerToken({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

}  // namespace

int main(int argc, char** argv) {
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  const auto description = system::loadDescription(argc > 1 ? argv[1] : "");
  if (!description) return 2;
  Wire wire{*description, argc > 2 ? argv[2] : nullptr, nullptr};
  g_autoptr(GApplication) application =
      g_application_new(description->bundleIdentifier.c_str(), G_APPLICATION_DEFAULT_FLAGS);
  const GActionEntry actions[] = {{"remind", &remind, nullptr, nullptr, nullptr, {}},
                                  {"register", &takeToken, "s", nullptr, nullptr, {}}};
  g_action_map_add_action_entries(G_ACTION_MAP(application), actions, G_N_ELEMENTS(actions), &wire);
  g_signal_connect(application, "startup", G_CALLBACK(&start), &wire);
  g_signal_connect(application, "activate", G_CALLBACK(+[](GApplication*, gpointer) {}), nullptr);
  return g_application_run(application, 0, nullptr);
}
