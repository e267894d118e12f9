#pragma once

#include <memory>
#include <string>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/Application.h"
#include "VorselKelpSystem/Badge.h"
#include "VorselKelpSystem/NotificationStore.h"
#include "VorselKelpSystem/StoreWorker.h"

namespace VorselKelp::system {

/// Gets the application its device token, which comes to the application by a way of its own.
class RemoteRegistration {
 public:
  virtual ~RemoteRegistration() = default;
  /// Main thread.
  virtual void begin() = 0;
  /// Any thread.
  virtual void end() = 0;
};

/// Opens an address in the application that the system has for it. Main thread; nothing answers.
class UrlOpener {
 public:
  virtual ~UrlOpener() = default;
  virtual void open(const std::string& url) = 0;
};

/// Keeps the process running while background tasks are at work. Any thread, in turn; it must not call back.
class BackgroundHold {
 public:
  virtual ~BackgroundHold() = default;
  /// The first task begins.
  virtual void hold() = 0;
  /// The last one has ended, or was told that the patience ends.
  virtual void release() = 0;
};

/// What a running application is made of.
struct ApplicationPorts {
  std::shared_ptr<NotificationStore> store;  ///< keeps the badge's number
  std::shared_ptr<RemoteRegistration> registration;
  std::shared_ptr<UrlOpener> urlOpener;
  std::shared_ptr<Badge> badge;                   ///< none: the number is kept, and shown nowhere
  std::shared_ptr<BackgroundHold> hold;           ///< none: whoever ends the process expires the tasks before
  std::shared_ptr<StoreWorker> worker = nullptr;  ///< none: the store is used on the caller's thread
};

/// The application object of one process, with the hands by which the system moves it. They are to be used on
/// the main thread.
class RunningApplication : public platform::Application {
 public:
  virtual void becomeActive() = 0;
  virtual void resignActive() = 0;
  virtual void enterBackground() = 0;
  virtual void terminate() = 0;
  /// The system's patience with background tasks ends.
  virtual void expireBackgroundTasks() = 0;
  virtual void screenAppeared() = 0;
  virtual void screenDisappeared() = 0;
};

VORSELKELP_API std::shared_ptr<RunningApplication> makeRunningApplication(ApplicationPorts ports);

}  // namespace VorselKelp::system
