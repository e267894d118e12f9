#include "VorselKelpLinux/ServiceExtensionHost.h"

#include <mutex>

#include "VorselKelp/VorselKellp.h"
#include "VorselKelpLinux/CurlURLSession.h"
#include "VorselKelpLinux/EventLoop.h"
#include "VorselKelpLinux/NotificationRecords.h"
#include "VorselKelpLinux/ProcessPlatform.h"
#include "host/CountedURLSession.h"
#include "host/EventChannel.h"
#include "host/ExitStatus.h"
#include "host/LeaveCore.h"
#include "host/ProcessOptions.h"
#include "host/StaleFiles.h"

namespace VorselKelp::linux_platform {
namespace {

constexpr double defaultTimeLimit = 30;

/// User information in the form in which it arrived is known to whoever sent it.
JSONAny describe(const platform::NotificationContent& content) {
  auto json = encodeContent(content);
  if (const auto* info = content.userInfo.dictionary()) {
    std::get<JSONAny::Dictionary>(json.value).push_back({"userInfo", JSONAny::Dictionary(*info)});
  }
  return json;
}

/// Remembers that the content handler was called, and tells the first content on. Outlives the run: a handler
/// may be called at any time.
class Delivery {
 public:
  Delivery(std::shared_ptr<EventChannel> channel, std::shared_ptr<EventLoop> loop)
      : channel_(std::move(channel)), loop_(std::move(loop)) {}

  void answer(const std::shared_ptr<platform::NotificationContent>& content) {
    {
      const std::lock_guard lock(mutex_);
      if (answered_ || content == nullptr) return;
      answered_ = true;
      channel_->send("content", describe(*content));
    }
    loop_->wake();
  }

  /// What comes later comes too late.
  void close() {
    const std::lock_guard lock(mutex_);
    answered_ = true;
  }

  [[nodiscard]] bool answered() const {
    const std::lock_guard lock(mutex_);
    return answered_;
  }

 private:
  const std::shared_ptr<EventChannel> channel_;
  const std::shared_ptr<EventLoop> loop_;
  mutable std::mutex mutex_;
  bool answered_ = false;
};

class ExtensionRun {
 public:
  ExtensionRun(ProcessOptions options, Manifest manifest)
      : options_(std::move(options)),
        manifest_(std::move(manifest)),
        deadline_(EventLoop::Clock::now() + loopDuration(options_.timeLimit.value_or(defaultTimeLimit))),
        home_(options_.home),
        channel_(std::make_shared<EventChannel>(options_.channel)),
        session_(
            std::make_shared<CountedURLSession>(makeURLSession(), loop_, [loop = loop_] { loop->wake(); })),
        delivery_(std::make_shared<Delivery>(channel_, loop_)) {}

  int run(std::string payload, const JSONAny& json, ServiceExtension& extension) {
    removeStaleAttachments(home_.temporaryFolder(manifest_, ProcessKind::serviceExtension));
    auto services = makeServices();
    VorselKellp::install(services);
    extension.willStart(manifest_);
    platform::NotificationRequest request;
    request.identifier = options_.identifier.empty() ? "notification" : options_.identifier;
    request.content = originalContent(json);
    request.content.userInfo = platform::UserInfo::fromJSON(std::move(payload));
    extension.didReceive(request, std::make_shared<platform::NotificationContent>(request.content),
                         [delivery = delivery_](std::shared_ptr<platform::NotificationContent> content) {
                           delivery->answer(content);
                         });
    const auto finished = [&] { return delivery_->answered() && session_->idle(); };
    if (!loop_->run(finished, deadline_) && !delivery_->answered()) {
      channel_->send("timeLimit", true);
      extension.serviceExtensionTimeWillExpire();
    }
    channel_->send("ended", true);
    delivery_->close();
    session_->close();
    services = nullptr;
    leaveCore(*loop_);
    return 0;
  }

 private:
  std::shared_ptr<platform::Platform> makeServices() {
    auto device = std::make_shared<SimulatedDevice>(home_, manifest_.bundleIdentifier);
    ProcessServices services;
    services.device = device;
    services.mainQueue = loop_;
    services.console = makeChannelConsole(channel_);
    services.urlSession = session_;
    services.notificationCenter = makeNotificationCenter(device, loop_, DialogAnswer::none);
    services.application = makeUnavailableApplication();
    services.inAppBrowser = makeUnavailableBrowser();
    return makePlatform(manifest_, ProcessKind::serviceExtension, home_, std::move(services));
  }

  const ProcessOptions options_;
  const Manifest manifest_;
  const EventLoop::Clock::time_point deadline_;
  const DeviceHome home_;
  const std::shared_ptr<EventLoop> loop_ = std::make_shared<EventLoop>();
  const std::shared_ptr<EventChannel> channel_;
  const std::shared_ptr<CountedURLSession> session_;
  const std::shared_ptr<Delivery> delivery_;
};

}  // namespace

int runServiceExtension(int argc, const char* const* argv, ServiceExtension& extension) {
  auto options = readOptions(argc, argv);
  if (!options) return exitWith(options.error().description, 2);
  auto manifest = loadManifest(options->manifest);
  if (!manifest) return exitWith(manifest.error().description, 1);
  auto payload = readInput(options->payload);
  if (!payload) return exitWith(payload.error().description, 1);
  const auto json = JSONAny::decode(*payload);
  if (!json || json->as<JSONAny::Dictionary>() == nullptr) {
    return exitWith(
        "The payload is no JSON object" + (json ? std::string() : ": " + json.error().description), 1);
  }
  return ExtensionRun(std::move(*options), std::move(*manifest)).run(std::move(*payload), *json, extension);
}

}  // namespace VorselKelp::linux_platform
