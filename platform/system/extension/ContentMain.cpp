#include "VorselKelpSystem/ContentMain.h"

#include <unistd.h>

#include <algorithm>

#include "VorselKelp/JSONText.h"
#include "VorselKelpPosix/LineSink.h"
#include "VorselKelpPosix/Services.h"
#include "VorselKelpSystem/Input.h"
#include "VorselKelpSystem/NotificationRecords.h"
#include "extension/ExtensionPlatform.h"

namespace VorselKelp::system {
namespace {

/// How long the last requests are waited for when the user has left.
constexpr double farewell = 2;  // seconds
constexpr double century = 100.0 * 365 * 24 * 3600;

class OpeningContext final : public platform::ExtensionContext {
 public:
  explicit OpeningContext(std::shared_ptr<UrlOpener> opener) : opener_(std::move(opener)) {}
  void open(const std::string& url) override { opener_->open(url); }

 private:
  const std::shared_ptr<UrlOpener> opener_;
};

Result<platform::DeliveredNotification> readNotification(const ExtensionOptions& options) {
  const auto text = readInput("");
  if (!text) return text.error();
  const auto json = readJSONText(*text);
  if (!json || json->as<JSONAny::Dictionary>() == nullptr)
    return Error{"The notification is no JSON object" +
                 (json ? std::string() : ": " + json.error().description)};
  auto notification = decodeDelivered(*json);
  if (!options.identifier.empty()) notification.request.identifier = options.identifier;
  return notification;
}

/// Until the user leaves, and then a little for what is under way.
void live(const ContentWindow& window, posix::EventLoop& loop, const CountedURLSession& session,
          posix::EventLoop::Clock::time_point deadline) {
  if (!loop.run([&] { return window.left(); }, deadline)) return;
  const auto end = posix::EventLoop::Clock::now() + posix::loopDuration(farewell);
  loop.run([&] { return session.idle(); }, std::min(deadline, end));
}

}  // namespace

int runContentMain(int argc, const char* const* argv, const ExtensionDescription& description,
                   ContentExtension& extension, const ContentPorts& ports) {
  const auto options = readExtensionOptions(argc, argv);
  if (!options) return endWith(options.error(), 2);
  const auto notification = readNotification(*options);
  if (!notification) return endWith(notification.error(), 1);
  const auto deadline =
      posix::EventLoop::Clock::now() + posix::loopDuration(options->timeLimit.value_or(century));
  const auto loop = std::make_shared<posix::EventLoop>(ports.window->makeWaiter());
  const auto session = makeExtensionSession(loop);
  const auto console = ports.console ? ports.console : posix::makeConsole(STDOUT_FILENO);
  auto services = makeExtensionPlatform(description, loop, session, console);
  services->screen = ports.screen;
  const auto status = runContent(
      {loop, session, std::make_shared<OpeningContext>(ports.opener), *ports.window}, std::move(services),
      *notification, extension, [] {},
      [&](ui::ViewController&) -> Status {
        live(*ports.window, *loop, *session, deadline);
        return Done{};
      });
  return status ? 0 : endWith(status.error(), 1);
}

}  // namespace VorselKelp::system
