#pragma once

#include <gtk/gtk.h>

#include <vector>

#include "VorselKelpGtk/Stage.h"
#include "VorselKelpGtk/ViewWidget.h"
#include "stage/ModalFrame.h"
#include "views/Painter.h"

namespace VorselKelp::gtk {

/// What lies over an application's windows. The services that it makes put their screens here.
class OverlayStage final : public Stage, public std::enable_shared_from_this<OverlayStage> {
 public:
  explicit OverlayStage(StageOptions options) : options_(std::move(options)) {}
  OverlayStage(const OverlayStage&) = delete;
  OverlayStage& operator=(const OverlayStage&) = delete;
  ~OverlayStage() override;

  std::shared_ptr<platform::ViewPresenter> presenter() override;
  std::shared_ptr<platform::Screen> screen() override;
  std::shared_ptr<platform::InAppBrowser> makeBrowser(std::shared_ptr<platform::WebViews> webViews) override;
  std::shared_ptr<PermissionQuestion> askPermission(
      const std::string& application, std::function<void(std::optional<bool> allowed)> answered) override;
  [[nodiscard]] bool painted() const override;
  void flush() override;
  [[nodiscard]] ui::Rect boundsOf(ui::View& view) const override;

  /// The overlay that shows this controller, else the one that the application names; null: there is no
  /// window.
  [[nodiscard]] GtkOverlay* overlayOf(const ui::ViewController& controller) const;
  /// The overlay of what lies on top, else the one that the application names; null: there is no window.
  [[nodiscard]] GtkOverlay* topOverlay() const;
  /// What a layer does when something happens to it that it did not ask for.
  struct Hands {
    /// The window was closed: the layer is to be removed.
    std::function<void()> windowGone;
    /// The user pressed Escape; answers whether that was for the layer.
    std::function<bool()> escaped;
  };
  /// Puts the controller's view on top; its view must have been made.
  void push(GtkOverlay* overlay, const std::shared_ptr<ui::ViewController>& controller, Hands hands);
  void remove(const ui::ViewController& controller);
  [[nodiscard]] const StageOptions& options() const { return options_; }

 private:
  struct Layer {
    std::shared_ptr<ui::ViewController> controller;
    std::shared_ptr<ViewWidget> shown;
    std::shared_ptr<ModalFrame> frame;
    std::function<void()> windowGone;
  };

  static void onRoot(GtkWidget*, GParamSpec*, OverlayStage* self);
  static gboolean onIdle(gpointer self);
  static void onPaint(GdkFrameClock*, OverlayStage* self);
  void dropLayersWithoutWindow();
  void takeOut(Layer layer);
  void awaitPaint(GtkWidget* overlay);
  void endPaint();

  const StageOptions options_;
  std::vector<Layer> layers_;
  ObjectPtr<GdkFrameClock>
      painting_;  ///< of a window from which something has gone, until it is painted without
  guint idle_ = 0;
};

}  // namespace VorselKelp::gtk
