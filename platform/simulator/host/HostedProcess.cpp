#include "host/HostedProcess.h"

#include <atomic>
#include <cstdint>
#include <utility>

#include "VorselKelpPosix/CurlURLSession.h"
#include "VorselKelpSimulator/DeviceServices.h"
#include "VorselKelpSystem/UnavailableServices.h"

namespace VorselKelp::simulator {
namespace {

/// Whoever listens puts a request and its answer together by their number.
CountedURLSession::Sending tellingTo(std::shared_ptr<EventChannel> channel) {
  return
      [channel = std::move(channel), count = std::make_shared<std::atomic<std::int64_t>>(
                                         0)](const platform::
                                                 URLRequest& request) -> CountedURLSession::
                                                                          Answered {
                                                                            const JSONAny number = (*count)++;
                                                                            channel->send(
                                                                                "request",
                                                                                JSONAny::Dictionary{
                                                                                    {"number", number},
                                                                                    {"method",
                                                                                     request.method},
                                                                                    {"url", request.url}});
                                                                            return
                                                                                [channel, number](
                                                                                    const platform::URLResult&
                                                                                        result) {
                                                                                  auto answer = result.error      ? JSONAny::Member{"error", result.error->description}
                    : result.response ? JSONAny::Member{"status", result.response->statusCode}
                                      : JSONAny::Member{"error", "no answer"};
                                                                                  channel->send(
                                                                                      "answer",
                                                                                      JSONAny::Dictionary{
                                                                                          {"number", number},
                                                                                          std::move(answer)});
                                                                                };
                                                                          };
}

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
      session(std::make_shared<CountedURLSession>(posix::makeURLSession(), loop, tellingTo(channel),
                                                  [loop = loop] { loop->wake(); })) {}

ProcessServices HostedProcess::services(const std::shared_ptr<SimulatedDevice>& device) const {
  ProcessServices services;
  services.device = device;
  services.mainQueue = loop;
  services.console = makeChannelConsole(channel);
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
