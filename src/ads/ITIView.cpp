#include "ads/ITIView.h"

#include <utility>

#include "gif/GifManager.h"
#include "gif/ImageLoading.h"
#include "net/DownloadFailure.h"
#include "net/VorselRequest.h"

namespace VorselKelp {

std::shared_ptr<ITIView> ITIView::create(const std::shared_ptr<CoreContext>& context, ui::Rect frame,
                                         ui::DeviceOrientation orientation, const AdexObject& ad) {
  std::shared_ptr<ITIView> view(new ITIView(context, frame));
  view->addSubview(view->imageView());
  view->addSubview(view->textView());
  view->layOut(orientation);
  const Md* creative = ad.creative();
  view->textView()->text = creative ? creative->title.value_or("") : "";
  if (creative && creative->img) view->loadImage(*creative->img);
  return view;
}

ITIView::~ITIView() {
  gif::GifManager::of(*context_)->remove(*imageView());
}

void ITIView::stop() {
  stopped_ = true;
  gif::GifManager::of(*context_)->stop(*imageView());
}

void ITIView::resume() {
  stopped_ = false;
  gif::GifManager::of(*context_)->resume(*imageView());
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

void ITIView::loadImage(const std::string& url) {
  const auto self = std::static_pointer_cast<ITIView>(shared_from_this());
  const auto arrived = [context = context_, view = std::weak_ptr(self)](const platform::URLResult& result) {
    if (const auto failure = failureOf(result); !failure.empty())
      return context->print(failure + "ERROREEERR");
    // Here, on the session's queue, the view is looked for but never held: it must not end here.
    if (view.expired()) return;
    auto image = gif::decodeImage(*context->services->imageDecoder, *result.body);
    if (!image) return;
    context->services->mainQueue->async([view, picture = *std::move(image)] {
      if (const auto alive = view.lock()) alive->show(picture);
    });
  };
  VorselRequest(context_).download(url, gif::pictureByteLimit, arrived);
}

void ITIView::show(ui::ImagePtr picture) {
  const auto animations = gif::GifManager::of(*context_);
  animations->show(imageView(), std::move(picture), gif::GifManager::applicationFrameBudget);
  if (stopped_) animations->stop(*imageView());
}

}  // namespace VorselKelp
