#pragma once

#include <memory>
#include <string>

#include "VorselKelpFreedesktop/BusNotifications.h"
#include "VorselKelpFreedesktop/MainQueue.h"
#include "VorselKelpSystem/Delivery.h"
#include "VorselKelpSystem/Description.h"
#include "VorselKelpSystem/NotificationCenter.h"
#include "bus/Bus.h"
#include "program/Autostart.h"
#include "program/QuietTime.h"
#include "road/ApplicationDoor.h"
#include "road/DesktopNumbers.h"
#include "road/Intake.h"
#include "road/Road.h"
#include "road/Taps.h"
#include "service/PushService.h"
#include "state/StateThread.h"
#include "unifiedpush/Registration.h"

namespace VorselKelp::agent {

struct AgentOptions {
  std::string descriptionFile;  ///< absolute
  std::string busAddress;       ///< empty: the session's
  double idleSeconds = 10;      ///< how long the agent stays when nothing is left to wait for
};

/// The push agent of one application: it gets its messages, shows its notifications, wakes for its reminders,
/// and hands it what the user does. Main thread.
class Agent {
 public:
  Agent(system::Description description, AgentOptions options);
  ~Agent();
  Agent(const Agent&) = delete;
  Agent& operator=(const Agent&) = delete;

  /// Runs until nothing is left to wait for, the bus goes, or the process is told to end. Answers the exit
  /// status.
  int run();

 private:
  Status start();
  void owned();
  void stateOpened();
  void begin();
  void makeServices();
  void makeAutostart();
  void watchOthers();
  [[nodiscard]] ServiceEvents serviceEvents();
  [[nodiscard]] ConnectorEvents connectorEvents();
  [[nodiscard]] system::ServiceProgram serviceProgram() const;

  bool pending();
  [[nodiscard]] bool busy() const;
  [[nodiscard]] bool waits();
  void lookSoon();
  void look();
  void leave();
  void left();
  void fail(const Error& error);
  void end(int status);

  const system::Description description_;
  const AgentOptions options_;
  const std::string name_;  ///< on the bus
  const system::Folders folders_;
  GMainLoop* const loop_;
  const std::shared_ptr<freedesktop::GlibMainQueue> queue_;
  const std::shared_ptr<system::NotificationStore> store_;
  QuietTime quiet_;
  int exitStatus_ = 0;
  bool begun_ = false;
  bool leaving_ = false;
  bool told_ = false;  ///< to end

  std::unique_ptr<Bus> bus_;
  std::unique_ptr<StateThread> state_;
  std::unique_ptr<DesktopNumbers> numbers_;
  std::unique_ptr<Registration> registration_;
  std::unique_ptr<PushService> service_;
  std::unique_ptr<Autostart> autostart_;
  std::unique_ptr<ApplicationDoor> application_;
  std::unique_ptr<Taps> taps_;
  std::shared_ptr<freedesktop::BusNotifications> notifications_;
  std::shared_ptr<system::NotificationCenter> center_;
  std::shared_ptr<Road> road_;
  std::shared_ptr<Intake> intake_;
};

}  // namespace VorselKelp::agent
