#include "VorselKelpSystem/ContentRun.h"

#include "VorselKelp/VorselKellp.h"
#include "VorselKelpSystem/ShortLife.h"

namespace VorselKelp::system {
namespace {

Status show(const ContentProcess& process, platform::Platform& services,
            const std::shared_ptr<ui::ViewController>& controller, ui::Size size) {
  if (!controller || !controller->view()) return Error{"The content extension has no controller to show"};
  controller->view()->frame = ui::Rect{{0, 0}, size};
  auto opened = process.screen.open(controller, process.loop);
  if (!opened) return opened.error();
  if (opened->screen) services.screen = std::move(opened->screen);
  if (opened->viewPresenter) services.viewPresenter = std::move(opened->viewPresenter);
  if (opened->webViews) services.webViews = std::move(opened->webViews);
  return Done{};
}

Status handOver(ui::ViewController& controller, const platform::DeliveredNotification& notification) {
  auto* extension = dynamic_cast<platform::NotificationContentExtension*>(&controller);
  if (extension == nullptr) return Error{"The controller is no notification-content extension"};
  extension->didReceive(notification);
  return Done{};
}

}  // namespace

Status runContent(const ContentProcess& process, std::shared_ptr<platform::Platform> services,
                  const platform::DeliveredNotification& notification, ContentExtension& extension,
                  platform::FunctionRef<void()> start,
                  platform::FunctionRef<Status(ui::ViewController&)> live) {
  // The area's size is the library's to say, and the library needs a screen first.
  VorselKellp::install(services);
  start();
  const auto size = extension.preferredContentSize(notification);
  auto controller = extension.makeController(process.context);
  auto status = show(process, *services, controller, size);
  if (status) status = handOver(*controller, notification);
  if (status) status = live(*controller);
  // What is shown holds the core.
  process.screen.close();
  process.session->close();
  controller = nullptr;
  services = nullptr;
  leaveCore(*process.loop);
  return status;
}

}  // namespace VorselKelp::system
