#include "VorselKelp/VorselNotificationView.h"

#include <algorithm>
#include <sstream>
#include <utility>

#include "content_ext/ArrowImages.h"
#include "content_ext/CarouselCategory.h"
#include "content_ext/CarouselImages.h"
#include "content_ext/CarouselLayout.h"
#include "content_ext/ColorFromHex.h"
#include "content_ext/Stop.h"
#include "net/VorselRequest.h"
#include "push/AdFollowUp.h"
#include "push/CarouselPlan.h"

namespace VorselKelp {
namespace {

/// Both texts are replaced when the first message is shown.
std::shared_ptr<ui::Label> makeLabel(const char* placeholder, ui::Font font) {
  auto label = std::make_shared<ui::Label>();
  label->contentMode = ui::ContentMode::center;
  label->textAlignment = ui::TextAlignment::center;
  label->text = placeholder;
  label->font = font;
  label->translatesAutoresizingMaskIntoConstraints = false;
  return label;
}

template <class T>
std::shared_ptr<T> makeConstrained() {
  auto view = std::make_shared<T>();
  view->translatesAutoresizingMaskIntoConstraints = false;
  return view;
}

/// What a carousel can't be shown without.
template <class T>
T needed(Result<T> part) {
  if (!part) stopCarousel(part.error().description);
  return *std::move(part);
}

}  // namespace

Status VorselNotificationView::check(const platform::NotificationRequest& request) {
  const auto payload = Payload::open(request.content.userInfo);
  if (!payload) return payload.error();
  const auto carousel = carouselMessages(*payload);
  if (!carousel) return carousel.error();
  for (const P& message : *carousel->p) {
    if (const auto picture = pagePicture(message); !picture) return picture.error();
    const auto conversion = pageConversion(message);
    if (!conversion) return conversion.error();
    if (const auto link = pageLink(conversion->url); !link) return link.error();
  }
  return Done{};
}

std::shared_ptr<VorselNotificationView> VorselNotificationView::make(
    const platform::DeliveredNotification& notification,
    const std::shared_ptr<ui::ViewController>& controller) {
  const auto parent = controller ? controller->view() : nullptr;
  if (!parent) stopCarousel("there is no controller, or it has no view");
  const std::shared_ptr<VorselNotificationView> view(new VorselNotificationView(parent->frame));
  view->bind(*view->rightButton, &VorselNotificationView::rightButtonTapped);
  view->bind(*view->leftButton, &VorselNotificationView::leftButtonTapped);
  view->bind(*view->conversionButton, &VorselNotificationView::conversionTapped);
  view->notifExtension_ = controller;
  view->decode(notification.request);
  view->setArrows();
  view->prefetch();
  view->configureLayout();
  while (!parent->subviews().empty()) parent->subviews().back()->removeFromSuperview();
  parent->addSubview(view);
  return view;
}

VorselNotificationView::VorselNotificationView(const ui::Coder&) {
  fatalError("init(coder:) has not been implemented");
}

VorselNotificationView::VorselNotificationView(ui::Rect frame_)
    : View(frame_),
      rightButton(std::make_shared<ContentExtArrowButton>()),
      leftButton(std::make_shared<ContentExtArrowButton>()),
      conversionButton(makeConstrained<ui::Button>()),
      imageView(makeConstrained<ui::ImageView>()),
      titleLabel(makeLabel("TITLE", {13, true})),
      subtitleLabel(makeLabel("SUBTITLE", {11, false})),
      context_(CoreContext::current("VorselNotificationView")),
      requests_(std::make_shared<VorselRequest>(context_)),
      images_(std::make_shared<CarouselImages>(context_, requests_, imageView)),
      arrowImages_(std::make_shared<ArrowImages>(context_, requests_)) {
  addSubview(imageView);
  addSubview(titleLabel);
  addSubview(subtitleLabel);
}

void VorselNotificationView::bind(ui::Button& button, void (VorselNotificationView::*action)()) {
  button.onTouchUpInside([weak = weak_from_this(), action] {
    if (const auto view = std::static_pointer_cast<VorselNotificationView>(weak.lock()))
      (view.get()->*action)();
  });
}

void VorselNotificationView::decode(const platform::NotificationRequest& request) {
  notificationRequest_ = request;
  const auto payload = Payload::open(request.content.userInfo);
  if (!payload) stopCarousel("the payload can't be read: " + payload.error().description);
  notifications_ = needed(carouselMessages(*payload));
}

void VorselNotificationView::setArrows() {
  for (const auto& arrow : {leftButton, rightButton}) arrow->hidden = !*notifications_->isMultiple;
  leftButton->accessibilityLabel = "Previous";
  rightButton->accessibilityLabel = "Next";
  conversionButton->accessibilityLabel = "Open";
  const N& first = messages().front().o;
  setArrow(first.ap, leftButton, "left2.png");
  setArrow(first.an, rightButton, "right2.png");
}

void VorselNotificationView::setArrow(const std::optional<std::string>& url,
                                      const std::shared_ptr<ui::Button>& button, const char* builtIn) {
  if (url) {
    arrowImages_->load(*url, button, debugDescription());
  } else {
    arrowImages_->setBuiltIn(builtIn, *button);
  }
}

void VorselNotificationView::prefetch() {
  for (const P& message : messages()) {
    if (message.o.image) images_->prefetch(needed(pagePicture(message)));
  }
}

void VorselNotificationView::configureLayout() {
  const N& first = messages().front().o;
  titleLabel->textColor = colorFromHex("#" + first.tc.value_or("0"));
  subtitleLabel->textColor = colorFromHex("#" + first.dc.value_or("0"));
  titleLabel->textAlignment = ui::TextAlignment::left;
  subtitleLabel->textAlignment = ui::TextAlignment::left;
  activate(messageConstraints(*this, first.el.value_or(0)));
  if (!contentExtensionsReceiveTouches(*context_->services->device))
    return registerCarouselCategory(*context_->services->notificationCenter);
  addSubview(conversionButton);
  addSubview(leftButton);
  addSubview(rightButton);
  activate(buttonConstraints(*this));
}

void VorselNotificationView::layoutSubviews() {
  View::layoutSubviews();
  showNotification(position_);
}

void VorselNotificationView::rightButtonTapped() {
  page(true);
}

void VorselNotificationView::leftButtonTapped() {
  page(false);
}

void VorselNotificationView::page(bool forward) {
  const auto last = static_cast<std::int64_t>(messages().size()) - 1;
  if (forward) {
    position_ = position_ < last ? position_ + 1 : 0;
  } else {
    position_ = position_ >= 1 ? position_ - 1 : last;
  }
  showNotification(position_);
}

void VorselNotificationView::showNotification(std::int64_t index) {
  const P& message = messages()[static_cast<std::size_t>(index)];
  presentedNotification_ = message;
  titleLabel->text = message.t;
  subtitleLabel->text = message.o.body;
  images_->show(needed(pagePicture(message)));
  fireImpressions(message, index);
}

void VorselNotificationView::fireImpressions(const P& message, std::int64_t index) {
  if (std::ranges::find(positionsCovered_, index) != positionsCovered_.end()) return;
  if (message.i) {
    for (const std::string& tracker : *message.i) requests_->fireTracker(tracker);
  }
  positionsCovered_.push_back(index);
}

void VorselNotificationView::conversionTapped() {
  openConversion();
}

void VorselNotificationView::openConversion() {
  if (!presentedNotification_) stopCarousel("no message is shown that could be opened");
  // A copy: what opening calls may page on.
  const auto conversion = needed(pageConversion(*presentedNotification_));
  requests_->fireTracker(conversion.t->front());
  openLink(conversion.url);
  followUpAd(*context_, *requests_);
}

void VorselNotificationView::openLink(const std::string& url) {
  const auto controller = notifExtension_.lock();
  if (!controller) stopCarousel("the extension's view controller has gone");
  auto* const extension = dynamic_cast<platform::NotificationContentExtension*>(controller.get());
  if (extension == nullptr) return;
  const auto extensionContext = extension->extensionContext();
  if (!extensionContext) stopCarousel("the extension has no extension context");
  const auto link = needed(pageLink(url));
  if (link.empty()) return context_->print("URL is not valid");
  extensionContext->open(link);
}

void VorselNotificationView::handleNotificationAction(const platform::NotificationResponse& response) {
  const std::string& action = response.actionIdentifier;
  if (action == "open") return openConversion();
  if (action != "next" && action != "prev") return;
  titleLabel->text = "";
  subtitleLabel->text = "";
  page(action == "next");
}

ui::ImagePtr VorselNotificationView::cachedImage(const std::string& url) const {
  return images_->cached(url);
}

const std::vector<P>& VorselNotificationView::messages() const {
  if (!notifications_ || !notifications_->p) stopCarousel("there are no messages");
  return *notifications_->p;
}

std::string VorselNotificationView::debugDescription() const {
  const ui::Rect& r = frame.get();
  std::ostringstream text;
  text << "<VorselNotificationView: frame = (" << r.origin.x << " " << r.origin.y << "; " << r.size.width
       << " " << r.size.height << ")>";
  return text.str();
}

}  // namespace VorselKelp
