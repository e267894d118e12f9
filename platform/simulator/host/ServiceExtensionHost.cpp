#include "VorselKelpSimulator/ServiceExtensionHost.h"

#include <mutex>

#include "VorselKelp/JSONText.h"
#include "VorselKelp/VorselKellp.h"
#include "VorselKelpSystem/Input.h"
#include "VorselKelpSystem/NotificationRecords.h"
#include "VorselKelpSystem/ShortLife.h"
#include "host/ExitStatus.h"
#include "host/HostedProcess.h"

namespace VorselKelp::simulator {
namespace {

constexpr double serviceTimeLimit = 30;

/// User information in the form in which it arrived is known to whoever sent it.
JSONAny describe(const platform::NotificationContent& content) {
  auto json = system::encodeContent(content);
  if (const auto* info = content.userInfo.dictionary()) {
    std::get<JSONAny::Dictionary>(json.value).push_back({"userInfo", JSONAny::Dictionary(*info)});
  }
  return json;
}

/// Remembers that the content handler was called, and tells the first content on; of any further call it
/// tells that there was one. Outlives the run: a handler may be called at any time.
class Delivery {
 public:
  Delivery(std::shared_ptr<system::EventChannel> channel, std::shared_ptr<posix::EventLoop> loop)
      : channel_(std::move(channel)), loop_(std::move(loop)) {}

  void answer(const std::shared_ptr<platform::NotificationContent>& content) {
    {
      const std::lock_guard lock(mutex_);
      if (closed_) return;
      if (answered_ || content == nullptr) {
        channel_->send("contentAgain", content != nullptr);
        return;
      }
      answered_ = true;
      channel_->send("content", describe(*content));
    }
    loop_->wake();
  }

  /// What comes later comes too late.
  void close() {
    const std::lock_guard lock(mutex_);
    closed_ = true;
  }

  [[nodiscard]] bool answered() const {
    const std::lock_guard lock(mutex_);
    return answered_;
  }

 private:
  const std::shared_ptr<system::EventChannel> channel_;
  const std::shared_ptr<posix::EventLoop> loop_;
  mutable std::mutex mutex_;
  bool answered_ = false;
  bool closed_ = false;
};

class ExtensionRun {
 public:
  ExtensionRun(ProcessOptions options, Manifest manifest)
      : process_(std::move(options), std::move(manifest), serviceTimeLimit),
        delivery_(std::make_shared<Delivery>(process_.channel, process_.loop)) {}

  int run(std::string payload, const JSONAny& json, ServiceExtension& extension) {
    system::removeStaleAttachments(
        process_.home.temporaryFolder(process_.manifest, ProcessKind::serviceExtension));
    auto services = makeServices();
    VorselKellp::install(services);
    extension.willStart(process_.manifest);
    platform::NotificationRequest request;
    request.identifier = process_.options.identifier.empty() ? "notification" : process_.options.identifier;
    request.content = system::originalContent(json);
    request.content.userInfo = platform::UserInfo::fromJSON(std::move(payload));
    extension.didReceive(request, std::make_shared<platform::NotificationContent>(request.content),
                         [delivery = delivery_](std::shared_ptr<platform::NotificationContent> content) {
                           delivery->answer(content);
                         });
    const auto finished = [&] { return delivery_->answered() && process_.session->idle(); };
    if (!process_.loop->run(finished, process_.deadline) && !delivery_->answered()) {
      process_.channel->send("timeLimit", true);
      extension.serviceExtensionTimeWillExpire();
    }
    process_.channel->send("ended", true);
    delivery_->close();
    process_.session->close();
    services = nullptr;
    system::leaveCore(*process_.loop);
    return 0;
  }

 private:
  std::shared_ptr<platform::Platform> makeServices() {
    auto device = std::make_shared<SimulatedDevice>(process_.home, process_.manifest.bundleIdentifier);
    return makePlatform(process_.manifest, ProcessKind::serviceExtension, process_.home,
                        process_.extensionServices(device));
  }

  const HostedProcess process_;
  const std::shared_ptr<Delivery> delivery_;
};

}  // namespace

int runServiceExtension(int argc, const char* const* argv, ServiceExtension& extension) {
  system::prepareShortLife();
  auto options = readOptions(argc, argv);
  if (!options) return exitWith(options.error().description, 2);
  auto manifest = loadManifest(options->manifest);
  if (!manifest) return exitWith(manifest.error().description, 1);
  auto payload = system::readInput(options->payload);
  if (!payload) return exitWith(payload.error().description, 1);
  const auto json = readJSONText(*payload);
  if (!json || json->as<JSONAny::Dictionary>() == nullptr) {
    return exitWith(
        "The payload is no JSON object" + (json ? std::string() : ": " + json.error().description), 1);
  }
  return ExtensionRun(std::move(*options), std::move(*manifest)).run(std::move(*payload), *json, extension);
}

}  // namespace VorselKelp::simulator
