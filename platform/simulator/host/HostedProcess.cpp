#include "host/HostedProcess.h"

#include <atomic>
#include <cstdint>
#include <utility>

#include "VorselKelpPosix/CurlURLSession.h"
#include "VorselKelpSimulator/DeviceServices.h"
#include "VorselKelpSystem/UnavailableServices.h"

namespace VorselKelp::simulator {
namespace {

using system::CountedURLSession;
using system::EventChannel;

/// Whoever listens puts a request and its answer together by their number.
class RequestTeller {
 public:
  explicit RequestTeller(std::shared_ptr<EventChannel> channel) : channel_(std::move(channel)) {}

  CountedURLSession::Answered operator()(const platform::URLRequest& request) const {
    const JSONAny number = (*count_)++;
    channel_->send("request",
                   JSONAny::Dictionary{{"number", number}, {"method", request.method}, {"url", request.url}});
    return [channel = channel_, number](const platform::URLResult& result) {
      channel->send("answer", JSONAny::Dictionary{{"number", number}, answerOf(result)});
    };
  }

 private:
  static JSONAny::Member answerOf(const platform::URLResult& result) {
    if (result.error) return {"error", result.error->description};
    if (result.response) return {"status", result.response->statusCode};
    return {"error", "no answer"};
  }

  std::shared_ptr<EventChannel> channel_;
  std::shared_ptr<std::atomic<std::int64_t>> count_ = std::make_shared<std::atomic<std::int64_t>>(0);
};

}  // namespace

HostedProcess::HostedProcess(ProcessOptions given, Manifest application, double defaultTimeLimit,
                             std::shared_ptr<posix::LoopWaiter> waiter)
    : options(std::move(given)),
      manifest(std::move(application)),
      deadline(posix::EventLoop::Clock::now() +
               posix::loopDuration(options.timeLimit.value_or(defaultTimeLimit))),
      home(options.home),
      loop(std::make_shared<posix::EventLoop>(std::move(waiter))),
      channel(std::make_shared<EventChannel>(options.channel)),
      session(std::make_shared<CountedURLSession>(posix::makeURLSession(), loop, RequestTeller(channel),
                                                  [loop = loop] { loop->wake(); })) {}

ProcessServices HostedProcess::services(const std::shared_ptr<SimulatedDevice>& device) const {
  ProcessServices services;
  services.device = device;
  services.mainQueue = loop;
  services.console = system::makeChannelConsole(channel);
  services.urlSession = session;
  return services;
}

ProcessServices HostedProcess::extensionServices(const std::shared_ptr<SimulatedDevice>& device) const {
  auto own = services(device);
  own.notificationCenter = makeNotificationCenter(device, loop, makeSimulatedUser(DialogAnswer::none));
  own.application = system::makeUnavailableApplication();
  own.inAppBrowser = system::makeUnavailableBrowser();
  return own;
}

}  // namespace VorselKelp::simulator
