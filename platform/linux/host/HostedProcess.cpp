#include "host/HostedProcess.h"

#include <utility>

#include "VorselKelpLinux/CurlURLSession.h"
#include "VorselKelpLinux/DeviceServices.h"

namespace VorselKelp::linux_platform {

HostedProcess::HostedProcess(ProcessOptions given, Manifest application, double defaultTimeLimit,
                             std::shared_ptr<LoopWaiter> waiter)
    : options(std::move(given)),
      manifest(std::move(application)),
      deadline(EventLoop::Clock::now() + loopDuration(options.timeLimit.value_or(defaultTimeLimit))),
      home(options.home),
      loop(std::make_shared<EventLoop>(std::move(waiter))),
      channel(std::make_shared<EventChannel>(options.channel)),
      session(std::make_shared<CountedURLSession>(makeURLSession(), loop, [loop = loop] { loop->wake(); })) {}

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
  own.notificationCenter = makeNotificationCenter(device, loop, DialogAnswer::none);
  own.application = makeUnavailableApplication();
  own.inAppBrowser = makeUnavailableBrowser();
  return own;
}

}  // namespace VorselKelp::linux_platform
