#include "VorselKelpGtk/Carousel.h"

#include <gtk/gtk.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "VorselKelp/VorselKellp.h"
#include "VorselKelp/VorselNotificationView.h"
#include "VorselKelpGtk/ViewWidget.h"

namespace VorselKelp::gtk {
namespace {

constexpr int narrowest = 320;  // pixels
constexpr double tallest = 420;

class OpeningContext final : public platform::ExtensionContext {
 public:
  explicit OpeningContext(std::function<void(const std::string&)> open) : open_(std::move(open)) {}
  void open(const std::string& url) override { open_(url); }

 private:
  const std::function<void(const std::string&)> open_;
};

/// The screen that the carousel expects around itself.
class CarouselController final : public ui::ViewController, public platform::NotificationContentExtension {
 public:
  explicit CarouselController(std::function<void(const std::string&)> open)
      : context_(std::make_shared<OpeningContext>(std::move(open))) {}

  /// Publishers choose the colours of their texts for a white ground, whatever the theme.
  void viewDidLoad() override { view()->backgroundColor = ui::Color::white(); }
  void didReceive(const platform::DeliveredNotification& campaign) override {
    shown_ = VorselNotificationView::make(campaign, shared_from_this());
  }
  std::shared_ptr<platform::ExtensionContext> extensionContext() override { return context_; }

 private:
  const std::shared_ptr<platform::ExtensionContext> context_;
  std::shared_ptr<VorselNotificationView> shown_;
};

/// Lives as long as the widget.
struct Kept {
  std::shared_ptr<CarouselController> controller;
  std::shared_ptr<ViewWidget> shown;
};

}  // namespace

Result<GtkWidget*> carousel(const platform::DeliveredNotification& campaign,
                            std::function<void(const std::string& url)> open) {
  if (const auto status = VorselNotificationView::check(campaign.request); !status) return status.error();
  const auto size = VorselKellp::getPreferedContentSize(campaign);
  auto controller = std::make_shared<CarouselController>(std::move(open));
  const double height = std::min(size.height, tallest);
  controller->view()->frame = ui::Rect{{0, 0}, {narrowest, height}};
  controller->didReceive(campaign);
  auto shown = makeViewWidget(controller->view());
  auto* widget = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_box_append(GTK_BOX(widget), shown->widget());
  gtk_widget_set_size_request(widget, narrowest, static_cast<int>(height));
  g_object_set_data_full(G_OBJECT(widget), "vorsel-carousel",
                         new Kept{std::move(controller), std::move(shown)},
                         [](gpointer kept) { delete static_cast<Kept*>(kept); });
  return widget;
}

}  // namespace VorselKelp::gtk
