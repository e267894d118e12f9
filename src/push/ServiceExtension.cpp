#include "push/ServiceExtension.h"

#include <utility>

#include "ads/AdRecords.h"
#include "base/FatalError.h"
#include "json/Encoder.h"
#include "push/AdContent.h"
#include "push/PayloadDecoder.h"
#include "push/Tags.h"

namespace VorselKelp {
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
    std::vector<VorselReceivedObject> received;
    received.push_back(receivedObject(push, request.identifier));
    const std::lock_guard lock(mutex_);
    lastReceived_ = std::move(received);
  }
  if (const auto line = json::encode(push)) context_->print(*line);
  Delivery delivery{planDelivery(std::move(push), request.identifier), std::move(best), std::move(handler)};
  if (delivery.plan.viewTracker) requests_->fireTracker(*delivery.plan.viewTracker);
  if (std::holds_alternative<DeliveryPlan::Message>(delivery.plan.kind)) {
    deliverMessage(delivery);
  } else {
    deliverAd(delivery);
  }
}

void ServiceExtension::deliverAd(const Delivery& delivery) {
  auto& storage = context_->storage;
  const auto& plan = std::get<DeliveryPlan::Ad>(delivery.plan.kind);
  storage.transact([&] {
    if (plan.interstitial) {
      storage.set(StorageKey::adPending, *plan.interstitial);
      storage.synchronize();
    }
    if (plan.endpoint) storage.set(StorageKey::eventEndpoint, *plan.endpoint);
  });
  if (!plan.endpoint) return;  // nothing to show: the extension's time limit ends it
  requests_->sendTrackingGet<AdexObject>(
      *plan.endpoint, [self = shared_from_this(), delivery](const std::optional<AdexObject>& ad,
                                                            const std::optional<Error>&) {
        // The content is the main thread's to change.
        self->context_->services->mainQueue->async([self, delivery, ad] { self->adAnswered(delivery, ad); });
      });
}

void ServiceExtension::adAnswered(const Delivery& delivery, const std::optional<AdexObject>& ad) {
  if (handedOver(delivery.best)) return;
  delivery.best->title = adTitle(ad, std::get<DeliveryPlan::Ad>(delivery.plan.kind).title);
  const auto image = adImage(ad);
  if (!image) {
    delivery.handler(delivery.best);
    return;
  }
  images_->fetch(*image, [self = shared_from_this(), delivery](const auto& attachment) {
    self->finishWithImage(delivery, attachment, [&] { delivery.handler(delivery.best); });
  });
}

void ServiceExtension::deliverMessage(const Delivery& delivery) {
  const auto& plan = std::get<DeliveryPlan::Message>(delivery.plan.kind);
  delivery.best->sound = plan.sound;
  std::optional<CategoryHelper::Registration> category;
  if (plan.category) {
    category = categories_->add(*plan.category, delivery.plan.identifier);
    delivery.best->categoryIdentifier = category->identifier;
  }
  if (!plan.image) {
    finish(delivery, std::move(category));
    return;
  }
  context_->storage.transact([&] { saveCategory(delivery, *category); });
  category.reset();  // a download is no time to keep others waiting
  images_->fetch(*plan.image, [self = shared_from_this(), delivery](const auto& attachment) {
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
  for (const Action& action : *std::get<DeliveryPlan::Message>(delivery.plan.kind).category) {
    if (action.url) targets_->record(delivery.plan.identifier, action.action, *action.url);
  }
  categories_->save(category);
}

void ServiceExtension::finish(const Delivery& delivery,
                              std::optional<CategoryHelper::Registration> category) {
  const auto& plan = std::get<DeliveryPlan::Message>(delivery.plan.kind);
  delivery.best->title = plan.title;
  if (plan.body) delivery.best->body = *plan.body;
  for (const std::string& tracker : plan.impressionTrackers) requests_->fireTracker(tracker);
  if (plan.target) targets_->announce();
  std::vector<std::string> removed, replaced;
  if (plan.tag) removed = removeTagged(*context_, *plan.tag);
  // All that one delivery stores goes in as one step: a killed extension leaves the whole of it or nothing.
  context_->storage.transact([&] {
    if (category) saveCategory(delivery, *category);
    if (plan.target) targets_->store(*plan.target, delivery.plan.identifier);
    if (plan.tag) replaced = takeOverTag(*context_, *plan.tag, delivery.plan.identifier);
  });
  if (!replaced.empty() && replaced != removed)
    context_->services->notificationCenter->removeDeliveredNotifications(replaced);
  category.reset();  // gives the lock back before the application's code runs
  delivery.handler(delivery.best);
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
