#include "road/Taps.h"

#include <utility>

#include "VorselKelpPosix/LineSink.h"

namespace VorselKelp::agent {

Taps::Taps(std::shared_ptr<system::NotificationStore> store, ApplicationDoor& application,
           std::function<void()> ended)
    : store_(std::move(store)), application_(application), ended_(std::move(ended)) {}

/// The store has the response before the application hears of it: whatever becomes of either, it is not lost.
/// What can't be kept goes to the application all the same, which finds the notification where it lies.
void Taps::respond(const freedesktop::BusNotificationResponse& response) {
  const auto& identifier = response.request.identifier;
  const auto kept = store_->keepResponse(identifier, response.actionIdentifier);
  if (!kept) {
    posix::standardErrorLines()(kept.error().description);
    if (!store_->tappable(identifier)) return;
  }
  ++responding_;
  application_.respond(identifier, response.actionIdentifier, response.activationToken,
                       [this](const Status& reached) {
                         --responding_;
                         if (!reached)
                           posix::standardErrorLines()("A tap waits for the application's next start: " +
                                                       reached.error().description);
                         ended_();
                       });
}

}  // namespace VorselKelp::agent
