#pragma once

#include <memory>

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

  const std::shared_ptr<ui::ImageView>& imageView();
  const std::shared_ptr<ui::TextView>& textView();

 private:
  explicit ITIView(ui::Rect frame_) : View(frame_) {}
  void layOut(ui::DeviceOrientation orientation);
  void loadImage(const std::shared_ptr<CoreContext>& context, const std::string& url);

  std::shared_ptr<ui::ImageView> imageView_;
  std::shared_ptr<ui::TextView> textView_;
};

}  // namespace VorselKelp
