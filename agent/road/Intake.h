#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "VorselKelp/platform/Clock.h"
#include "VorselKelp/platform/MainQueue.h"
#include "state/StateThread.h"
#include "unifiedpush/Connector.h"
#include "unifiedpush/Registration.h"

namespace VorselKelp::agent {

/// Takes messages over from the distributor: each is written to the disk before it is acknowledged. What
/// can't be written is held and tried again for twenty seconds, then refused, so that the distributor keeps
/// it. Main thread.
class Intake : public std::enable_shared_from_this<Intake> {
 public:
  /// `ended` hears of each message that was answered: by its serial number when it waits to be shown.
  Intake(StateThread& state, const Registration& registration, std::shared_ptr<platform::MainQueue> mainQueue,
         std::shared_ptr<platform::Clock> clock,
         std::function<void(std::optional<std::int64_t> serial)> ended);

  /// Holds what comes until begin().
  void take(const std::string& sender, const std::string& token, std::string bytes, const std::string& id,
            ConnectorEvents::Acknowledge acknowledge);
  /// The state is open, and the registration knows its distributor.
  void begin();
  /// Whether every message that came was answered.
  [[nodiscard]] bool idle() const { return held_ == 0; }

 private:
  struct Arrival {
    std::string sender;
    std::string token;
    Message message;
    double time;  ///< of its arrival
    ConnectorEvents::Acknowledge acknowledge;
  };

  void judge(Arrival arrival);
  void keep(std::shared_ptr<Arrival> arrival);
  void answer(Arrival& arrival, const Status& status, std::optional<std::int64_t> serial = {});

  StateThread& state_;
  const Registration& registration_;
  const std::shared_ptr<platform::MainQueue> mainQueue_;
  const std::shared_ptr<platform::Clock> clock_;
  const std::function<void(std::optional<std::int64_t>)> ended_;
  bool begun_ = false;
  std::size_t held_ = 0;
  std::vector<Arrival> early_;
};

}  // namespace VorselKelp::agent
