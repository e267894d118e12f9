#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "VorselKelp/VorselNotificationView.h"
#include "VorselKelpTesting/MemoryPlatform.h"
#include "content_ext/Figures.h"
#include "core/CoreContext.h"
#include "core/CoreScope.h"

namespace VorselKelp::benchmarks {
namespace {

std::string campaign() {
  std::string messages;
  for (const std::string k : {"0", "1", "2", "3", "4"}) {
    messages += (messages.empty() ? "" : ",") + (R"({"t":"Title )" + k) + R"(","i":["https://t/)" + k +
                R"("],"o":{"body":"Body )" + k + R"(","image":"https://i/)" + k +
                R"(","data":{"url":"app://x","t":["https://c"]}}})";
  }
  return R"({"p":[)" + messages + R"(],"isMultiple":true})";
}

}  // namespace

/// The pictures never come: paging must not wait for them.
Line carouselPaging() {
  testing_platform::MemoryPlatform device;
  const CoreScope scope(std::make_shared<CoreContext>(device.platform()));
  const auto controller = std::make_shared<ui::ViewController>();
  controller->view()->frame = ui::Rect{{0, 0}, {390, 312}};
  platform::DeliveredNotification notification;
  notification.request.content.userInfo = platform::UserInfo::fromJSON(campaign());
  const auto view = VorselNotificationView::make(notification, controller);
  view->performLayout();
  std::vector<double> times;
  for (int page = 0; page < 1000; ++page) {
    const auto start = std::chrono::steady_clock::now();
    view->rightButtonTapped();
    view->performLayout();
    times.push_back(
        std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count());
  }
  const auto worst = std::ranges::max(times);
  return {"one page of the carousel, the slowest of 1000", "us", worst, 0, 16000, Line::Goal::difference};
}

}  // namespace VorselKelp::benchmarks
