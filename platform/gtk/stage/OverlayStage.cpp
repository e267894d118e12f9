#include "stage/OverlayStage.h"

#include <algorithm>
#include <ranges>
#include <utility>

#include "stage/BrowserSheet.h"
#include "stage/PermissionSheet.h"
#include "stage/StagePresenter.h"
#include "stage/StageScreen.h"

namespace VorselKelp::gtk {
namespace {

class OpenQuestion final : public PermissionQuestion {
 public:
  explicit OpenQuestion(std::weak_ptr<PermissionSheet> sheet) : sheet_(std::move(sheet)) {}
  void tap(bool allow) override {
    if (const auto sheet = sheet_.lock()) sheet->button(allow)->tap();
  }

 private:
  const std::weak_ptr<PermissionSheet> sheet_;
};

}  // namespace

OverlayStage::~OverlayStage() {
  endPaint();
  while (!layers_.empty()) remove(*layers_.back().controller);
  endPaint();
  if (idle_ != 0) g_source_remove(idle_);
}

GtkOverlay* OverlayStage::overlayOf(const ui::ViewController& controller) const {
  for (const auto& layer : layers_) {
    if (layer.controller.get() == &controller) return layer.frame->overlay();
  }
  return options_.overlay();
}

GtkOverlay* OverlayStage::topOverlay() const {
  for (const auto& layer : layers_ | std::views::reverse) {
    if (auto* overlay = layer.frame->overlay()) return overlay;
  }
  return options_.overlay();
}

void OverlayStage::push(GtkOverlay* overlay, const std::shared_ptr<ui::ViewController>& controller,
                        Hands hands) {
  auto shown = makeViewWidget(controller->view());
  auto frame = std::make_shared<ModalFrame>(overlay, shown->widget(), std::move(hands.escaped));
  g_signal_connect(shown->widget(), "notify::root", G_CALLBACK(&OverlayStage::onRoot), this);
  layers_.push_back({controller, std::move(shown), std::move(frame), std::move(hands.windowGone)});
}

void OverlayStage::remove(const ui::ViewController& controller) {
  const auto found = std::ranges::find_if(
      layers_, [&](const Layer& layer) { return layer.controller.get() == &controller; });
  if (found == layers_.end()) return;
  auto gone = std::move(*found);
  layers_.erase(found);
  takeOut(std::move(gone));
}

void OverlayStage::takeOut(Layer layer) {
  g_signal_handlers_disconnect_by_data(layer.shown->widget(), this);
  auto* overlay = layer.frame->overlay();
  layer.frame = nullptr;
  if (overlay != nullptr) awaitPaint(GTK_WIDGET(overlay));
}

void OverlayStage::awaitPaint(GtkWidget* overlay) {
  endPaint();
  if (!gtk_widget_get_mapped(overlay)) return;
  painting_.reset(GDK_FRAME_CLOCK(g_object_ref(gtk_widget_get_frame_clock(overlay))));
  g_signal_connect(painting_.get(), "after-paint", G_CALLBACK(&OverlayStage::onPaint), this);
  gtk_widget_queue_draw(overlay);
}

void OverlayStage::endPaint() {
  if (painting_) g_signal_handlers_disconnect_by_data(painting_.get(), this);
  painting_.reset();
}

void OverlayStage::onPaint(GdkFrameClock*, OverlayStage* self) {
  self->endPaint();
}

void OverlayStage::onRoot(GtkWidget* widget, GParamSpec*, OverlayStage* self) {
  if (gtk_widget_get_root(widget) != nullptr || self->idle_ != 0) return;
  // An overlay may be on its way from one window to another; what is gone later is gone.
  self->idle_ = g_idle_add(&OverlayStage::onIdle, self);
}

gboolean OverlayStage::onIdle(gpointer self) {
  auto& stage = *static_cast<OverlayStage*>(self);
  stage.idle_ = 0;
  const auto keep = stage.shared_from_this();
  stage.dropLayersWithoutWindow();
  return G_SOURCE_REMOVE;
}

void OverlayStage::dropLayersWithoutWindow() {
  const auto layers = layers_;
  for (const auto& layer : layers | std::views::reverse) {
    if (gtk_widget_get_root(layer.shown->widget()) == nullptr) layer.windowGone();
  }
}

bool OverlayStage::painted() const {
  return !painting_ &&
         std::ranges::all_of(layers_, [](const Layer& layer) { return layer.shown->painted(); });
}

void OverlayStage::flush() {
  const auto layers = layers_;
  for (const auto& layer : layers) layer.shown->flush();
}

ui::Rect OverlayStage::boundsOf(ui::View& view) const {
  for (const auto& layer : layers_) {
    if (layer.controller->viewIfLoaded()->contains(view)) return layer.shown->boundsOf(view);
  }
  return {};
}

std::shared_ptr<platform::ViewPresenter> OverlayStage::presenter() {
  return std::make_shared<StagePresenter>(weak_from_this());
}

std::shared_ptr<platform::Screen> OverlayStage::screen() {
  return std::make_shared<StageScreen>(weak_from_this());
}

std::shared_ptr<platform::InAppBrowser> OverlayStage::makeBrowser(
    std::shared_ptr<platform::WebViews> webViews) {
  return std::make_shared<SheetBrowser>(weak_from_this(), std::move(webViews));
}

std::shared_ptr<PermissionQuestion> OverlayStage::askPermission(
    const std::string& application, std::function<void(std::optional<bool>)> answered) {
  auto* overlay = topOverlay();
  if (overlay == nullptr) {
    answered(std::nullopt);
    return nullptr;
  }
  const auto shown = std::make_shared<std::weak_ptr<PermissionSheet>>();
  const auto sheet = std::make_shared<PermissionSheet>(
      application, PermissionSheet::Look{isDark(GTK_WIDGET(overlay)), textScale(GTK_WIDGET(overlay))},
      [weak = weak_from_this(), shown, answered = std::move(answered)](std::optional<bool> allowed) {
        const auto closed = shown->lock();
        if (const auto stage = weak.lock(); stage && closed) stage->remove(*closed);
        answered(allowed);
      });
  *shown = sheet;
  (void)sheet->view();
  const auto answer = [shown](std::optional<bool> allowed) {
    if (const auto open = shown->lock()) open->answer(allowed);
  };
  push(overlay, sheet,
       {[answer] { answer(std::nullopt); },
        [answer] {
          answer(false);
          return true;
        }});
  return std::make_shared<OpenQuestion>(sheet);
}

std::shared_ptr<Stage> makeStage(StageOptions options) {
  return std::make_shared<OverlayStage>(std::move(options));
}

}  // namespace VorselKelp::gtk
