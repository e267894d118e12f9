#include "push/ServiceExtension.h"

#include <utility>

#include "ads/AdRecords.h"
#include "base/FatalError.h"
#include "base/Text.h"
#include "json/Encoder.h"
#include "push/AdContent.h"
#include "push/PayloadDecoder.h"
#include "push/Tags.h"

namespace VorselKelp {
namespace {

std::optional<platform::NotificationSound> soundOf(const N& n) {
  if (n.silent.value_or(false)) return std::nullopt;
  if (!n.sound) return platform::NotificationSound::defaultSound();
  return platform::NotificationSound::named(*n.sound + ".wav");
}

}  // namespace

ServiceExtension::ServiceExtension(std::shared_ptr<CoreContext> context,
                                   std::shared_ptr<VorselRequest> requests,
                                   std::shared_ptr<OpenTargets> targets,
                                   std::shared_ptr<CategoryHelper> categories,
                                   std::shared_ptr<ImageAttachment> images)
    : context_(std::move(context)),
      requests_(std::move(requests)),
      targets_(std::move(targets)),
      categories_(std::move(categories)),
      images_(std::move(images)) {}

PushObj ServiceExtension::decode(const platform::UserInfo& userInfo) const {
  const auto payload = Payload::open(userInfo);
  if (!payload) {
    context_->print("JSON serialization failed");
    fatalError("didReceiveNotification: the user information is no JSON object: " +
               payload.error().description);
  }
  auto push = payload->pushObj();
  if (push) return *std::move(push);
  context_->print("PUSH OBJECT FAILED");
  if (payload->campaign()) fatalError("didReceiveNotification: a campaign is no single message");
  context_->print("PUSH PCampaignObj OBJECT FAILED");
  fatalError("didReceiveNotification: the payload is no push message: " + push.error().description);
}

void ServiceExtension::didReceive(const platform::NotificationRequest& request, Content best,
                                  Handler handler) {
  PushObj push = decode(request.content.userInfo);
  {
    const std::lock_guard lock(mutex_);
    lastReceived_ = {receivedObject(push, request.identifier)};
  }
  if (const auto line = json::encode(push)) context_->print(*line);
  Delivery delivery{request.identifier, std::move(push.aps.notificationBody), std::move(best),
                    std::move(handler)};
  if (delivery.message.v) requests_->fireTracker(*delivery.message.v);
  if (delivery.message.n) {
    deliverMessage(std::move(delivery));
  } else {
    deliverAd(std::move(delivery));
  }
}

void ServiceExtension::deliverAd(Delivery delivery) {
  auto& storage = context_->storage;
  const NotificationBody& message = delivery.message;
  storage.transact([&] {
    if (message.adex) {
      storage.set(StorageKey::adPending, *message.adex);
      storage.synchronize();
    }
    if (message.e) storage.set(StorageKey::eventEndpoint, *message.e);
  });
  if (!message.e) return;  // nothing to show: the extension's time limit ends it
  requests_->sendTrackingGet<AdexObject>(
      *message.e, [self = shared_from_this(), delivery](const std::optional<AdexObject>& ad,
                                                        const std::optional<Error>&) {
        // The content is the main thread's to change.
        self->context_->services->mainQueue->async([self, delivery, ad] { self->adAnswered(delivery, ad); });
      });
}

void ServiceExtension::adAnswered(const Delivery& delivery, const std::optional<AdexObject>& ad) {
  if (handedOver(delivery.best)) return;
  delivery.best->title = adTitle(ad, delivery.message.title);
  const auto image = adImage(ad);
  if (!image) {
    delivery.handler(delivery.best);
    return;
  }
  images_->fetch(*image, [self = shared_from_this(), delivery](const auto& attachment) {
    self->finishWithImage(delivery, attachment, [&] { delivery.handler(delivery.best); });
  });
}

void ServiceExtension::deliverMessage(Delivery delivery) {
  const N& n = *delivery.message.n;
  delivery.best->sound = soundOf(n);
  if (n.cl.value_or(0) != 0) {
    finish(delivery, std::nullopt);
    return;
  }
  auto category = categories_->add(n.actions.value_or(std::vector<Action>{}), delivery.identifier);
  delivery.best->categoryIdentifier = category.identifier;
  if (!n.image) {
    finish(delivery, std::move(category));
    return;
  }
  context_->storage.transact([&] { saveCategory(delivery, category); });
  category.lock.reset();  // a download is no time to keep others waiting
  images_->fetch(*n.image, [self = shared_from_this(), delivery](const auto& attachment) {
    self->finishWithImage(delivery, attachment, [&] { self->finish(delivery, std::nullopt); });
  });
}

void ServiceExtension::finishWithImage(const Delivery& delivery,
                                       const std::optional<platform::NotificationAttachment>& image,
                                       const std::function<void()>& rest) {
  if (handedOver(delivery.best)) {
    if (image) images_->discard(*image);
    return;
  }
  if (image) delivery.best->attachments.push_back(*image);
  rest();
}

void ServiceExtension::saveCategory(const Delivery& delivery, const CategoryHelper::Registration& category) {
  if (const auto& actions = delivery.message.n->actions) {
    for (const Action& action : *actions) {
      if (action.url) targets_->record(delivery.identifier, action.action, *action.url);
    }
  }
  categories_->save(category);
}

void ServiceExtension::finish(const Delivery& delivery,
                              std::optional<CategoryHelper::Registration> category) {
  const NotificationBody& message = delivery.message;
  setTexts(delivery);
  if (message.t) {
    for (const std::string& tracker : *message.t) requests_->fireTracker(tracker);
  }
  if (message.n->data) targets_->announce();
  // All that one delivery stores goes in as one step: a killed extension leaves the whole of it or nothing.
  context_->storage.transact([&] {
    if (category) saveCategory(delivery, *category);
    if (message.n->data) targets_->store(*message.n->data, delivery.identifier);
  });
  replaceTagged(*context_, message.n->tag, delivery.identifier);
  category.reset();  // gives the lock back before the application's code runs
  delivery.handler(delivery.best);
}

void ServiceExtension::setTexts(const Delivery& delivery) const {
  const NotificationBody& message = delivery.message;
  delivery.best->title = fromNonLossyAscii(message.title).value_or(message.title);
  if (message.n->body) delivery.best->body = *message.n->body;
}

void ServiceExtension::willTerminate(Content best, const Handler& handler) {
  if (!context_->storage.flag(StorageKey::push)) return;
  {
    const std::lock_guard lock(mutex_);
    handedOver_ = best;
  }
  handler(std::move(best));
}

bool ServiceExtension::handedOver(const Content& content) const {
  const std::lock_guard lock(mutex_);
  return handedOver_.lock() == content;
}

std::vector<VorselReceivedObject> ServiceExtension::lastReceived() const {
  const std::lock_guard lock(mutex_);
  return lastReceived_;
}

}  // namespace VorselKelp
