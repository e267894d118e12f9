#include "VorselKelpSystem/ServiceRun.h"

#include <mutex>

#include "VorselKelp/JSONText.h"
#include "VorselKelp/VorselKellp.h"
#include "VorselKelpSystem/Input.h"
#include "VorselKelpSystem/NotificationRecords.h"
#include "VorselKelpSystem/RemoteNotification.h"
#include "VorselKelpSystem/ShortLife.h"

namespace VorselKelp::system {
namespace {

/// User information in the form in which it arrived is known to whoever sent it.
JSONAny describeContent(const platform::NotificationContent& content) {
  auto json = encodeContent(content);
  if (const auto* info = content.userInfo.dictionary()) {
    std::get<JSONAny::Dictionary>(json.value).push_back({"userInfo", JSONAny::Dictionary(*info)});
  }
  return json;
}

/// Remembers that the content handler was called, and tells the first content on; of any further call it
/// tells that there was one. Outlives the run: a handler may be called at any time.
class Handler {
 public:
  Handler(std::shared_ptr<EventChannel> channel, std::shared_ptr<posix::EventLoop> loop)
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
      channel_->send("content", describeContent(*content));
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
  const std::shared_ptr<EventChannel> channel_;
  const std::shared_ptr<posix::EventLoop> loop_;
  mutable std::mutex mutex_;
  bool answered_ = false;
  bool closed_ = false;
};

}  // namespace

Result<ServicePayload> readServicePayload(const std::string& path) {
  auto text = readInput(path);
  if (!text) return text.error();
  auto json = readJSONText(*text);
  if (!json || json->as<JSONAny::Dictionary>() == nullptr)
    return Error{"The payload is no JSON object" + (json ? std::string() : ": " + json.error().description)};
  return ServicePayload{*std::move(text), *std::move(json)};
}

void runService(const ServiceProcess& process, std::shared_ptr<platform::Platform> services,
                const std::string& identifier, ServicePayload payload, ServiceExtension& extension,
                platform::FunctionRef<void()> start) {
  removeStaleAttachments(process.temporaryFolder);
  VorselKellp::install(services);
  start();
  platform::NotificationRequest request;
  request.identifier = identifier.empty() ? "notification" : identifier;
  request.content = unchangedContent(payload.json);
  request.content.userInfo = platform::UserInfo::fromJSON(std::move(payload.text));
  const auto handler = std::make_shared<Handler>(process.channel, process.loop);
  extension.didReceive(
      request, std::make_shared<platform::NotificationContent>(request.content),
      [handler](std::shared_ptr<platform::NotificationContent> content) { handler->answer(content); });
  const auto finished = [&] { return handler->answered() && process.session->idle(); };
  if (!process.loop->run(finished, process.deadline) && !handler->answered()) {
    process.channel->send("timeLimit", true);
    extension.serviceExtensionTimeWillExpire();
  }
  process.channel->send("ended", true);
  handler->close();
  process.session->close();
  services = nullptr;
  leaveCore(*process.loop);
}

}  // namespace VorselKelp::system
