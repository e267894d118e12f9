// A content extension whose window nobody sees. Its first argument is the folder that all of it lies in, its
// second how the extension is.

#include <stdio.h>
#include <stdlib.h>

#include <string_view>

#include "VorselKelp/VorselKellp.h"
#include "VorselKelpSystem/ContentMain.h"

namespace {

using namespace VorselKelp;

class Area final : public ui::ViewController, public platform::NotificationContentExtension {
 public:
  explicit Area(std::shared_ptr<platform::ExtensionContext> context) : context_(std::move(context)) {}
  void didReceive(const platform::DeliveredNotification& notification) override {
    const auto& content = notification.request.content;
    std::printf("%s/%s/%s at %.1f\n", notification.request.identifier.c_str(), content.title.c_str(),
                content.attachments.at(0).path.c_str(), notification.date);
    context_->open(content.userInfo.dictionary()->at(0).key + ":");
  }
  std::shared_ptr<platform::ExtensionContext> extensionContext() override { return context_; }

 private:
  const std::shared_ptr<platform::ExtensionContext> context_;
};

class Extension final : public system::ContentExtension {
 public:
  explicit Extension(std::string_view kind) : kind_(kind) {}
  ui::Size preferredContentSize(const platform::DeliveredNotification& notification) override {
    VorselKellp::setValueFor("group.com.example.reader");
    return VorselKellp::getPreferedContentSize(notification);
  }
  std::shared_ptr<ui::ViewController> makeController(
      std::shared_ptr<platform::ExtensionContext> context) override {
    if (kind_ == "none") return nullptr;
    if (kind_ == "plain") return std::make_shared<ui::ViewController>();
    return std::make_shared<Area>(std::move(context));
  }

 private:
  const std::string_view kind_;
};

class Window final : public system::ContentWindow {
 public:
  explicit Window(bool stays) : stays_(stays) {}
  std::shared_ptr<posix::LoopWaiter> makeWaiter() override { return nullptr; }
  Result<Services> open(const std::shared_ptr<ui::ViewController>& area,
                        const std::shared_ptr<posix::EventLoop>& loop) override {
    std::printf("open, %.0f wide\n", area->view()->frame->size.width);
    loop->async([this] { left_ = !stays_; });
    return Services{};
  }
  [[nodiscard]] bool left() const override { return left_; }
  void close() override { std::puts("closed"); }

 private:
  const bool stays_;
  bool left_ = false;
};

struct Opener final : system::UrlOpener {
  void open(const std::string& url) override { std::printf("opened %s\n", url.c_str()); }
};

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) return 3;
  ::setlinebuf(stdout);
  ::setenv("XDG_DATA_HOME", argv[1], 1);
  ::setenv("XDG_CACHE_HOME", argv[1], 1);
  const auto description = system::parseDescription(
      R"({"bundleIdentifier": "com.example.reader", "appGroupId": "group.com.example.reader"})");
  Extension extension(argv[2]);
  system::Machine machine;
  machine.screenWidth = 400;
  machine.screenHeight = 300;
  const auto window = std::make_shared<Window>(std::string_view(argv[2]) == "stays");
  return system::runContentMain(argc - 2, argv + 2, system::contentDescriptionOf(*description), extension,
                                {window, system::makeScreen(machine), std::make_shared<Opener>()});
}
