#include "ads/ITIView.h"

#include <utility>

#include "gif/GifManager.h"
#include "gif/ImageLoading.h"
#include "net/VorselRequest.h"

namespace VorselKelp {
namespace {

constexpr std::size_t imageLimit = std::size_t{10} << 20;

using ImageTarget = std::weak_ptr<ui::ImageView>;

/// On the session's delegate queue: decodes there, and shows on the main thread.
void downloaded(const std::shared_ptr<CoreContext>& context, const ImageTarget& target,
                const platform::URLResult& result) {
  if (result.error) context->print(result.error->description + "ERROREEERR");
  if (!result.body || target.expired()) return;
  auto image = gif::decodeImage(*context->services->imageDecoder, *result.body);
  if (!image) return;
  context->services->mainQueue->async([context, target, picture = *std::move(image)] {
    if (const auto view = target.lock()) gif::GifManager::of(*context)->show(view, picture);
  });
}

}  // namespace

std::shared_ptr<ITIView> ITIView::create(const std::shared_ptr<CoreContext>& context, ui::Rect frame,
                                         ui::DeviceOrientation orientation, const AdexObject& ad) {
  std::shared_ptr<ITIView> view(new ITIView(frame));
  view->addSubview(view->imageView());
  view->addSubview(view->textView());
  view->layOut(orientation);
  const Md* creative = ad.creative();
  view->textView()->text = creative ? creative->title.value_or("") : "";
  if (creative && creative->img) view->loadImage(context, *creative->img);
  return view;
}

const std::shared_ptr<ui::ImageView>& ITIView::imageView() {
  if (!imageView_) {
    imageView_ = std::make_shared<ui::ImageView>();
    imageView_->translatesAutoresizingMaskIntoConstraints = false;
  }
  return imageView_;
}

const std::shared_ptr<ui::TextView>& ITIView::textView() {
  if (!textView_) {
    textView_ = std::make_shared<ui::TextView>();
    textView_->translatesAutoresizingMaskIntoConstraints = false;
  }
  return textView_;
}

void ITIView::layOut(ui::DeviceOrientation orientation) {
  ui::View& picture = *imageView_;
  ui::View& words = *textView_;
  const bool upright = orientation == ui::DeviceOrientation::portrait ||
                       orientation == ui::DeviceOrientation::portraitUpsideDown;
  if (upright) {
    activate({ui::equal(picture.top(), top()), ui::equal(picture.leading(), leading()),
              ui::equal(picture.trailing(), trailing()), ui::proportional(picture.height(), height(), 0.5),
              ui::equal(words.top(), picture.bottom()), ui::equal(words.leading(), leading()),
              ui::equal(words.bottom(), bottom()), ui::equal(words.trailing(), trailing())});
  } else {
    activate({ui::equal(picture.top(), top()), ui::equal(picture.leading(), leading()),
              ui::equal(picture.bottom(), bottom()), ui::proportional(picture.width(), width(), 0.5),
              ui::equal(words.top(), top()), ui::equal(words.bottom(), bottom()),
              ui::equal(words.trailing(), trailing()), ui::equal(words.leading(), picture.trailing())});
  }
}

void ITIView::loadImage(const std::shared_ptr<CoreContext>& context, const std::string& url) {
  VorselRequest(context).download(
      url, imageLimit, [context, target = ImageTarget(imageView_)](const platform::URLResult& result) {
        downloaded(context, target, result);
      });
}

}  // namespace VorselKelp
