#pragma once

#include <memory>
#include <string>

#include "VorselKelp/JSONAny.h"
#include "VorselKelp/VorselNotificationView.h"

namespace VorselKelp::simulator {

/// The simulated user's hand and eye on a content extension's area: finds the carousel in it, touches it, and
/// says what is to be seen.
class CarouselHand {
 public:
  /// The controller outlives the hand.
  CarouselHand(platform::NotificationRequest request, ui::ViewController& controller,
               platform::NotificationContentExtension& extension)
      : request_(std::move(request)), controller_(controller), extension_(extension) {}

  /// "right", "left" or "open": a touch, or where the carousel takes none the notification's button. An error
  /// says why there is nothing to touch.
  Status perform(const std::string& act);
  /// Position, title, body, image (its URL while it is shown, else null) and whether there are arrows; null
  /// when there is no carousel.
  [[nodiscard]] JSONAny describe() const;

 private:
  [[nodiscard]] std::shared_ptr<VorselNotificationView> carousel() const;

  const platform::NotificationRequest request_;
  ui::ViewController& controller_;
  platform::NotificationContentExtension& extension_;
};

}  // namespace VorselKelp::simulator
