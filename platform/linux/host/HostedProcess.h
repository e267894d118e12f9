#pragma once

#include <memory>

#include "VorselKelpLinux/DeviceHome.h"
#include "VorselKelpLinux/EventLoop.h"
#include "VorselKelpLinux/Manifest.h"
#include "VorselKelpLinux/ProcessPlatform.h"
#include "host/CountedURLSession.h"
#include "host/EventChannel.h"
#include "host/ProcessOptions.h"

namespace VorselKelp::linux_platform {

/// What the three kinds of processes have in common: what they were told, their main queue, their network,
/// and the channel to whoever started them.
struct HostedProcess {
  /// `defaultTimeLimit`, in seconds, counts where the options name none. `waiter` may be null.
  HostedProcess(ProcessOptions given, Manifest application, double defaultTimeLimit,
                std::shared_ptr<LoopWaiter> waiter = nullptr);

  /// The process's own services; the rest is for the caller to fill in.
  [[nodiscard]] ProcessServices services(const std::shared_ptr<SimulatedDevice>& device) const;
  /// The same for an extension, which has no application, asks the user nothing and opens no page.
  [[nodiscard]] ProcessServices extensionServices(const std::shared_ptr<SimulatedDevice>& device) const;

  const ProcessOptions options;
  const Manifest manifest;
  const EventLoop::Clock::time_point deadline;
  const DeviceHome home;
  const std::shared_ptr<EventLoop> loop;
  const std::shared_ptr<EventChannel> channel;
  const std::shared_ptr<CountedURLSession> session;
};

}  // namespace VorselKelp::linux_platform
