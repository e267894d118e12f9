// The Reader with pushes: a permission page, a reminder, a badge, campaigns and an interstitial.

#include <libintl.h>

#include "ReaderWindow.h"
#include "VorselKelp/InterstitialAD.h"
#include "VorselKelp/VorselKellp.h"
#include "VorselKelpGtk/Attach.h"
#include "VorselKelpGtk/Carousel.h"
#include "VorselKelpSystem/Description.h"
#include "VorselKelpWebKit/WebViews.h"

using namespace VorselKelp;

namespace {

constexpr double day = 24 * 3600;  // seconds

struct Reader {
  ReaderWindow window;
  std::shared_ptr<gtk::Attached> push;
  std::shared_ptr<InterstitialAD> ad;
};

/// app.interstitial: an ad over the window.
void showInterstitial(GSimpleAction*, GVariant*, gpointer self) {
  auto& reader = *static_cast<Reader*>(self);
  if (!reader.push->started()) return;
  reader.ad = InterstitialAD::create("front");
  reader.push->present(reader.ad->interstitialController());
}

/// The campaign of a notification in a window of its own.
void showCampaign(Reader& reader, const platform::DeliveredNotification& campaign) {
  const auto stories =
      gtk::carousel(campaign, [&reader](const std::string& url) { reader.window.open(url); });
  if (!stories) return g_printerr("No campaign: %s\n", stories.error().description.c_str());
  auto* application = GTK_APPLICATION(g_application_get_default());
  auto* reading = gtk_application_get_active_window(application);
  auto* window = GTK_WINDOW(gtk_application_window_new(application));
  // The tap lets that one come to the front alone.
  gtk_window_set_transient_for(window, reading);
  gtk_window_set_title(window, "Stories");
  gtk_window_set_child(window, *stories);
  gtk_window_present(window);
}

/// What comes for the application alone.
void receive(const platform::UserInfo& userInfo) {
  VorselKellp::didReciveAdministrativeNotificationWith(userInfo, [](const auto&, const auto& beacons) {
    g_message("%zu beacons", beacons ? beacons->bl.size() : 0);
  });
}

/// The library's few texts in the user's language, where somebody has put a catalogue.
void findCatalogues() {
  g_autofree char* folder = g_build_filename(g_get_user_data_dir(), "locale", nullptr);
  bindtextdomain("vorselkelp", folder);
  bind_textdomain_codeset("vorselkelp", "UTF-8");
}

}  // namespace

int main(int argc, char** argv) {
  findCatalogues();
  Reader reader;
  g_autoptr(GtkApplication) application =
      gtk_application_new("com.example.reader", G_APPLICATION_DEFAULT_FLAGS);
  g_signal_connect(application, "activate", G_CALLBACK(+[](GtkApplication* app, gpointer self) {
                     static_cast<Reader*>(self)->window.show(app);
                   }),
                   &reader);
  // Another description serves for another server, other seconds for an impatient reader.
  const char* description = g_getenv("READER_DESCRIPTION");
  reader.push = gtk::attach(
      application, description != nullptr ? description : system::installedDescription("com.example.reader"),
      {.configure =
           [](VorselBuilder& builder) {
             const char* reminder = g_getenv("READER_REMINDER");
             builder.push().scheduleNotifications(reminder != nullptr ? g_ascii_strtod(reminder, nullptr)
                                                                      : day);
           },
       .overlay = [&] { return reader.window.overlay(); },
       .openArticle = [&](const std::string& url) { return reader.window.open(url); },
       .openCampaign = [&](const auto& campaign) { showCampaign(reader, campaign); },
       .received = &receive,
       .webViews = webkit::makeWebViews()});
  reader.push->whenReady([&] {
    VorselKellp::setNotification("Come back to your reading");
    VorselKellp::updateScheduler();
    reader.push->askForPermission();
  });
  const GActionEntry actions[] = {{"interstitial", &showInterstitial, nullptr, nullptr, nullptr, {}}};
  g_action_map_add_action_entries(G_ACTION_MAP(application), actions, G_N_ELEMENTS(actions), &reader);
  return g_application_run(G_APPLICATION(application), argc, argv);
}
