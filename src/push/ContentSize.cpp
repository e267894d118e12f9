#include "push/ContentSize.h"

#include "base/FatalError.h"
#include "push/NotificationReader.h"

namespace VorselKelp {
namespace {

constexpr std::int64_t withoutImage = 3;
constexpr double heightWithoutImage = 120;
constexpr double heightByWidth = 0.8;

}  // namespace

ui::Size preferredContentSize(const CoreContext& context,
                              const platform::DeliveredNotification& notification) {
  const auto content = readNotification(context, notification.request);
  if (content && content->notification.empty())
    fatalError("VorselKellp::getPreferedContentSize: the notification carries no message");
  const double width = context.services->screen->width();
  if (content && content->notification.front().el == withoutImage) return {width, heightWithoutImage};
  return {width, width * heightByWidth};
}

}  // namespace VorselKelp
