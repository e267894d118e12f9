#pragma once

#include <memory>
#include <string>

#include "VorselKelp/Result.h"
#include "VorselKelp/platform/UniqueFunction.h"
#include "bus/Bus.h"

namespace VorselKelp::agent {

/// How the agent reaches its application: by the actions that it exports on the bus, which starts it where it
/// does not run. Main thread.
class ApplicationDoor {
 public:
  using Reached = platform::UniqueFunction<void(Status)>;

  /// `identifier` is the application's name on the bus.
  ApplicationDoor(Bus& bus, std::string identifier);

  /// The user has opened a notification. `activationToken` lets the application's window come to the front;
  /// empty: the desktop gave none.
  void respond(const std::string& notification, const std::string& action, const std::string& activationToken,
               Reached reached);
  /// A notification that is for the application alone.
  void push(const std::string& payload, Reached reached);

 private:
  void activate(const char* action, GVariant* target, const std::string& activationToken, Reached reached);

  Bus& bus_;
  const std::string identifier_;
  const std::string path_;
};

}  // namespace VorselKelp::agent
