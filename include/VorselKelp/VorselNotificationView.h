#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/PushRecords.h"
#include "VorselKelp/Result.h"
#include "VorselKelp/platform/ContentExtension.h"
#include "VorselKelp/ui/Button.h"
#include "VorselKelp/ui/ImageView.h"
#include "VorselKelp/ui/Label.h"
#include "VorselKelp/ui/ViewController.h"

namespace VorselKelp {

class ArrowImages;
class CarouselImages;
class CoreContext;
class VorselRequest;

/// The button at either side of a carousel.
class VORSELKELP_API ContentExtArrowButton : public ui::Button {
 public:
  ContentExtArrowButton();
  [[noreturn]] explicit ContentExtArrowButton(const ui::Coder& coder);
};

/// The carousel of a notification-content extension: shows the messages of one push one at a time, and pages
/// through them. Where the system gives extensions no touches it registers a notification category instead
/// of its buttons, and lives on the actions handed to handleNotificationAction().
///
/// Lives in the extension's process, one for each notification shown. What it can't do without stops that
/// process: a payload without messages or whose images have no URL, an open without anything to open. What
/// the network does not give is printed and left out. Main thread.
class VORSELKELP_API VorselNotificationView : public ui::View {
 public:
  /// An error when make(), or what a user can do with it, would stop the process, and why. For whoever shows
  /// carousels in a process that must live on: an application's own.
  [[nodiscard]] static Status check(const platform::NotificationRequest& request);

  /// Made for the controller's view, in which it takes the place of every other subview. The controller is
  /// held weakly; its `extensionContext()` opens links when it is a platform::NotificationContentExtension.
  static std::shared_ptr<VorselNotificationView> make(const platform::DeliveredNotification& notification,
                                                      const std::shared_ptr<ui::ViewController>& controller);
  [[noreturn]] explicit VorselNotificationView(const ui::Coder& coder);

  const std::shared_ptr<ContentExtArrowButton> rightButton;
  const std::shared_ptr<ContentExtArrowButton> leftButton;
  /// Lies invisible over everything but the arrows.
  const std::shared_ptr<ui::Button> conversionButton;
  const std::shared_ptr<ui::ImageView> imageView;
  const std::shared_ptr<ui::Label> titleLabel;
  const std::shared_ptr<ui::Label> subtitleLabel;

  /// The messages whose impression trackers count as sent. The first one's are: its delivery sent them.
  [[nodiscard]] const std::vector<std::int64_t>& positionsCovered() const { return positionsCovered_; }
  /// The index of the message shown.
  [[nodiscard]] std::int64_t position() const { return position_; }
  [[nodiscard]] const std::optional<MultiMessagePush>& notifications() const { return notifications_; }
  [[nodiscard]] std::shared_ptr<ui::ViewController> notifExtension() const { return notifExtension_.lock(); }
  /// The message shown; absent before the first layout pass.
  [[nodiscard]] const std::optional<P>& presentedNotification() const { return presentedNotification_; }
  [[nodiscard]] const std::optional<platform::NotificationRequest>& notificationRequest() const {
    return notificationRequest_;
  }
  /// The message image of this URL, null when it is not there (yet). Pictures beyond 32 MiB of pixels are not
  /// kept for later, and the ones seen longest ago go first: such a message is downloaded again when shown.
  [[nodiscard]] ui::ImagePtr cachedImage(const std::string& url) const;

  /// Shows the current message again; its impression trackers go out the first time only.
  void layoutSubviews() override;

  void rightButtonTapped();
  void leftButtonTapped();
  void conversionTapped();
  /// The user chose "next", "prev" or "open"; nothing for any other action.
  void handleNotificationAction(const platform::NotificationResponse& response);

 private:
  explicit VorselNotificationView(ui::Rect frame);

  void bind(ui::Button& button, void (VorselNotificationView::*action)());
  void decode(const platform::NotificationRequest& request);
  void setArrows();
  void setArrow(const std::optional<std::string>& url, const std::shared_ptr<ui::Button>& button,
                const char* builtIn);
  void prefetch();
  void configureLayout();
  void page(bool forward);
  void showNotification(std::int64_t index);
  void fireImpressions(const P& message, std::int64_t index);
  void openConversion();
  void openLink(const std::string& url);
  [[nodiscard]] const std::vector<P>& messages() const;
  [[nodiscard]] std::string debugDescription() const;

  const std::shared_ptr<CoreContext> context_;
  const std::shared_ptr<VorselRequest> requests_;
  const std::shared_ptr<CarouselImages> images_;
  const std::shared_ptr<ArrowImages> arrowImages_;
  std::vector<std::int64_t> positionsCovered_ = {0};
  std::int64_t position_ = 0;
  std::optional<MultiMessagePush> notifications_;
  std::weak_ptr<ui::ViewController> notifExtension_;
  std::optional<P> presentedNotification_;
  std::optional<platform::NotificationRequest> notificationRequest_;
};

}  // namespace VorselKelp
