#pragma once

#include <memory>
#include <string>
#include <utility>

#include "VorselKelp/ui/ImageView.h"
#include "VorselKelp/ui/Label.h"
#include "VorselKelp/ui/Orientation.h"
#include "ads/AdRecords.h"
#include "core/CoreContext.h"

namespace VorselKelp {

/// An ad as picture and text: one above the other on a device held upright, else side by side, each half of
/// the view. Main thread.
class ITIView final : public ui::View {
 public:
  /// Starts to load the ad's picture, which appears when it has come.
  static std::shared_ptr<ITIView> create(const std::shared_ptr<CoreContext>& context, ui::Rect frame,
                                         ui::DeviceOrientation orientation, const AdexObject& ad);

  ~ITIView() override;

  /// Stops an animated picture where it is; one that comes later stands still from its beginning.
  void stop();
  /// Undoes stop().
  void resume();

  const std::shared_ptr<ui::ImageView>& imageView();
  const std::shared_ptr<ui::TextView>& textView();

 private:
  ITIView(std::shared_ptr<CoreContext> context, ui::Rect frame_)
      : View(frame_), context_(std::move(context)) {}
  void layOut(ui::DeviceOrientation orientation);
  void loadImage(const std::string& url);
  void show(ui::ImagePtr picture);

  const std::shared_ptr<CoreContext> context_;
  bool stopped_ = false;
  std::shared_ptr<ui::ImageView> imageView_;
  std::shared_ptr<ui::TextView> textView_;
};

}  // namespace VorselKelp
