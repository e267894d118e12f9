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
    deliverMessage(std::move(delivery));
  } else {
    deliverAd(std::move(delivery));
  }
}

void ServiceExtension::deliverAd(Delivery delivery) {
  auto& storage = context_->storage;
  const auto plan = std::get<DeliveryPlan::Ad>(delivery.plan.kind);
  storage.transact([&] {
    if (plan.interstitial) {
      storage.set(StorageKey::adPending, *plan.interstitial);
      storage.synchronize();
    }
    if (plan.endpoint) storage.set(StorageKey::eventEndpoint, *plan.endpoint);
  });
  if (!plan.endpoint) return;  // nothing to show: the extension's time limit ends it
  requests_->sendTrackingGet<AdexObject>(
      *plan.endpoint, [self = shared_from_this(), waiting = keep(std::move(delivery))](
                          const std::optional<AdexObject>& ad, const std::optional<Error>&) {
        // The content is the main thread's to change.
        self->context_->services->mainQueue->async([self, waiting, ad] { self->adAnswered(waiting, ad); });
      });
}

void ServiceExtension::adAnswered(const Waiting& delivery, const std::optional<AdexObject>& ad) {
  if (isHandedOver(*delivery)) return;
  delivery->best->title = adTitle(ad, std::get<DeliveryPlan::Ad>(delivery->plan.kind).title);
  if (const auto image = adImage(ad)) return fetchImage(delivery, *image);
  delivery->handler(delivery->best);
}

void ServiceExtension::deliverMessage(Delivery delivery) {
  const auto& plan = std::get<DeliveryPlan::Message>(delivery.plan.kind);
  delivery.best->sound = plan.sound;
  delivery.best->title = plan.title;
  if (plan.body) delivery.best->body = *plan.body;
  if (plan.category) {
    delivery.category = categories_->add(*plan.category, delivery.plan.identifier);
    delivery.best->categoryIdentifier = delivery.category->identifier;
  }
  if (!plan.image) return finish(delivery);
  // Whatever becomes of the picture, the rest can be read and opened.
  if (plan.target) targets_->announce();
  context_->storage.transact([&] { remember(delivery); });
  delivery.remembered = true;
  delivery.category.reset();  // a download is no time to keep others waiting
  const auto waiting = keep(std::move(delivery));
  fetchImage(waiting, *std::get<DeliveryPlan::Message>(waiting->plan.kind).image);
}

void ServiceExtension::fetchImage(const Waiting& delivery, const std::string& url) {
  images_->fetch(url, [self = shared_from_this(), delivery](const auto& attachment) {
    self->imageAnswered(*delivery, attachment);
  });
}

void ServiceExtension::imageAnswered(Delivery& delivery,
                                     const std::optional<platform::NotificationAttachment>& image) {
  if (isHandedOver(delivery)) {
    if (image) images_->discard(*image);
    return;
  }
  if (image) delivery.best->attachments.push_back(*image);
  if (std::holds_alternative<DeliveryPlan::Message>(delivery.plan.kind)) return finish(delivery);
  delivery.handler(delivery.best);
}

void ServiceExtension::remember(const Delivery& delivery) {
  const auto& plan = std::get<DeliveryPlan::Message>(delivery.plan.kind);
  if (delivery.category) {
    for (const Action& action : *plan.category) {
      if (action.url) targets_->record(delivery.plan.identifier, action.action, *action.url);
    }
    categories_->save(*delivery.category);
  }
  if (plan.target) targets_->store(*plan.target, delivery.plan.identifier);
}

void ServiceExtension::finish(Delivery& delivery) {
  const auto& plan = std::get<DeliveryPlan::Message>(delivery.plan.kind);
  for (const std::string& tracker : plan.impressionTrackers) requests_->fireTracker(tracker);
  if (plan.target && !delivery.remembered) targets_->announce();
  // What is stored now goes in as one step: a killed extension leaves the whole of it or nothing.
  const auto store = [&] {
    if (!delivery.remembered) remember(delivery);
  };
  if (plan.tag) {
    takeTag(*context_, *plan.tag, delivery.plan.identifier, store);
  } else if (!delivery.remembered) {
    context_->storage.transact(store);
  }
  delivery.category.reset();  // gives the lock back before the application's code runs
  delivery.handler(delivery.best);
}

void ServiceExtension::willTerminate(Content best, const Handler& handler) {
  if (!context_->storage.flag(StorageKey::push)) return;
  {
    const std::lock_guard lock(mutex_);
    for (const auto& waiting : waiting_) {
      if (const auto delivery = waiting.lock(); delivery && delivery->best == best)
        delivery->handedOver = true;
    }
  }
  handler(std::move(best));
}

ServiceExtension::Waiting ServiceExtension::keep(Delivery delivery) {
  auto waiting = std::make_shared<Delivery>(std::move(delivery));
  const std::lock_guard lock(mutex_);
  std::erase_if(waiting_, [](const auto& earlier) { return earlier.expired(); });
  waiting_.push_back(waiting);
  return waiting;
}

bool ServiceExtension::isHandedOver(const Delivery& delivery) const {
  const std::lock_guard lock(mutex_);
  return delivery.handedOver;
}

std::vector<VorselReceivedObject> ServiceExtension::lastReceived() const {
  const std::lock_guard lock(mutex_);
  return lastReceived_;
}

}  // namespace VorselKelp
