#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "VorselKelp/VorselNotificationView.h"
#include "kellp/KellpTest.h"

namespace VorselKelp {

struct ContentController final : ui::ViewController, platform::NotificationContentExtension {
  void didReceive(const platform::DeliveredNotification&) override {}
  std::shared_ptr<platform::ExtensionContext> extensionContext() override { return context; }

  std::shared_ptr<testing_platform::RecordingExtensionContext> context =
      std::make_shared<testing_platform::RecordingExtensionContext>();
};

inline platform::DeliveredNotification delivered(const std::string& json) {
  platform::DeliveredNotification notification;
  notification.request.identifier = "n-1";
  notification.request.content.userInfo = platform::UserInfo::fromJSON(json);
  return notification;
}

/// A carousel of three messages, k = 0, 1, 2: title "Tk", body "Bk", image "https://i/k", and two impression
/// trackers. `first` adds members to the first message's "o".
inline std::string carousel(const std::string& first = {}, const std::string& isMultiple = "true") {
  std::string messages;
  for (const std::string k : {"0", "1", "2"}) {
    messages += (k == "0" ? R"({"t":"T)" : R"(,{"t":"T)") + k + R"(","i":["https://t/)" + k +
                R"(a","no url","https://t/)" + k + R"(b"],"o":{"body":"B)" + k + R"(","image":"https://i/)" +
                k + R"(","data":{"url":"app://open/)" + k + R"(","t":["https://c/)" + k +
                R"(","https://c/never"]})" + (k == "0" ? first : "") + "}}";
  }
  return R"({"p":[)" + messages + R"(],"isMultiple":)" + isMultiple + "}";
}

/// The library inside the content extension's process.
class CarouselTest : public KellpTest {
 protected:
  static constexpr const char* extensionIdentifier = "com.example.app.content";

  CarouselTest() {
    VorselKellp::install(extension_.platform());
    VorselKellp::setValueFor(group);
    extension_.bundle->setResource("left2.png", testing_platform::pngBeginning(8, 8));
    extension_.bundle->setResource("right2.png", testing_platform::pngBeginning(9, 9));
    controller_->view()->frame = {{0, 0}, {320, 240}};
  }
  ~CarouselTest() override { VorselKellp::install(app_.platform()); }

  std::shared_ptr<VorselNotificationView> make(const std::string& json = carousel()) {
    return VorselNotificationView::make(delivered(json), controller_);
  }
  /// The same, with its first layout pass and all that was asked so far forgotten.
  std::shared_ptr<VorselNotificationView> shown(const std::string& json = carousel()) {
    auto view = make(json);
    view->performLayout();
    newUrls();
    return view;
  }
  /// What was requested since the last look.
  std::vector<std::string> newUrls() {
    const auto all = extension_.urlSession->urls();
    std::vector<std::string> fresh(all.begin() + static_cast<std::ptrdiff_t>(seen_), all.end());
    seen_ = all.size();
    return fresh;
  }
  /// Answers the oldest waiting request for `url`, and runs the main queue.
  void answer(const std::string& url, const testing_platform::ServerAnswer& with) {
    auto& session = *extension_.urlSession;
    for (const auto number : session.unanswered()) {
      if (session.request(number).url != url) continue;
      session.answer(number, with);
      extension_.settle();
      return;
    }
    ADD_FAILURE() << "nobody asked for " << url;
  }
  std::vector<std::string> extensionLines() const { return extension_.console->texts(); }

  testing_platform::MemoryPlatform extension_{device_, testing_platform::ProcessKind::extension,
                                              extensionIdentifier};
  std::shared_ptr<ContentController> controller_ = std::make_shared<ContentController>();

 private:
  std::size_t seen_ = 0;
};

inline testing_platform::ServerAnswer picture(unsigned width, unsigned height) {
  return status(200, testing_platform::pngBeginning(width, height));
}

inline int widthOf(const ui::ImagePtr& image) {
  return image ? image->width() : 0;
}

}  // namespace VorselKelp
