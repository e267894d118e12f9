#pragma once

#include <memory>
#include <string>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"
#include "VorselKelp/platform/FunctionRef.h"
#include "VorselKelp/platform/Platform.h"
#include "VorselKelpPosix/EventLoop.h"
#include "VorselKelpSystem/CountedURLSession.h"
#include "VorselKelpSystem/EventChannel.h"
#include "VorselKelpSystem/ServiceExtension.h"

namespace VorselKelp::system {

/// What a service extension's process has besides its platform.
struct ServiceProcess {
  std::shared_ptr<posix::EventLoop> loop;
  std::shared_ptr<CountedURLSession> session;
  /// Hears "content" with what is to be shown, "contentAgain" when the handler was called once more,
  /// "timeLimit" when the time was over, and "ended" in the end.
  std::shared_ptr<EventChannel> channel;
  posix::EventLoop::Clock::time_point deadline;
  std::string temporaryFolder;  ///< the extension's own; what killed processes left in it is removed
};

/// The remote notification that the process was started for, as JSON text and as an object.
struct ServicePayload {
  std::string text;
  JSONAny json;
};

/// From the file `path`, or from standard input when it is empty. The error is a line that says why there is
/// none.
VORSELKELP_API Result<ServicePayload> readServicePayload(const std::string& path);

/// The life of a service extension: installs the platform in the library, calls `start`, hands the
/// notification to `extension`, and returns when the handler was called and the process's requests have
/// ended, or at the deadline. The library's core has gone then. Main thread, once in a process; `services` is
/// let go.
VORSELKELP_API void runService(const ServiceProcess& process, std::shared_ptr<platform::Platform> services,
                               const std::string& identifier, ServicePayload payload,
                               ServiceExtension& extension, platform::FunctionRef<void()> start);

}  // namespace VorselKelp::system
