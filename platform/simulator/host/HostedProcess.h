#pragma once

#include <memory>

#include "VorselKelpPosix/EventLoop.h"
#include "VorselKelpSimulator/DeviceHome.h"
#include "VorselKelpSimulator/Manifest.h"
#include "VorselKelpSimulator/ProcessPlatform.h"
#include "VorselKelpSystem/CountedURLSession.h"
#include "VorselKelpSystem/EventChannel.h"
#include "host/ProcessOptions.h"

namespace VorselKelp::simulator {

/// What the three kinds of processes have in common: what they were told, their main queue, their network,
/// and the channel to whoever started them.
struct HostedProcess {
  /// `defaultTimeLimit`, in seconds, counts where the options name none. `waiter` may be null.
  HostedProcess(ProcessOptions given, Manifest application, double defaultTimeLimit,
                std::shared_ptr<posix::LoopWaiter> waiter = nullptr);

  /// The process's own services; the rest is for the caller to fill in.
  [[nodiscard]] ProcessServices services(const std::shared_ptr<SimulatedDevice>& device) const;
  /// The same for an extension, which has no application, asks the user nothing and opens no page.
  [[nodiscard]] ProcessServices extensionServices(const std::shared_ptr<SimulatedDevice>& device) const;

  const ProcessOptions options;
  const Manifest manifest;
  const posix::EventLoop::Clock::time_point deadline;
  const DeviceHome home;
  const std::shared_ptr<posix::EventLoop> loop;
  const std::shared_ptr<system::EventChannel> channel;
  const std::shared_ptr<system::CountedURLSession> session;
};

}  // namespace VorselKelp::simulator
