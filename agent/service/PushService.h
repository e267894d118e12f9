#pragma once

#include <functional>
#include <string>
#include <vector>

#include "VorselKelp/Result.h"
#include "bus/Bus.h"
#include "unifiedpush/Registration.h"

namespace VorselKelp::agent {

/// What the application asks of its agent; see org.vorselkelp.PushAgent1.xml.
struct ServiceEvents {
  std::function<void()> registerIt;
  std::function<void()> unregisterIt;
  std::function<void()> look;
  std::function<void(const std::vector<std::string>& identifiers)> takeAway;
  std::function<Registration::Condition()> condition;
  std::string wanted;  ///< the distributor that the user or the description names; empty: none
};

/// The agent's own object on the bus. Main thread.
class PushService {
 public:
  explicit PushService(Bus& bus) : bus_(bus) {}

  /// Calls that come before begin() wait for it, a hundred of them.
  Status serve(ServiceEvents events);
  void begin();
  /// Tells whoever listens.
  void changed();
  /// Whether nobody waits for an answer.
  [[nodiscard]] bool idle() const { return early_.empty(); }

 private:
  void handle(Call& call);

  Bus& bus_;
  ServiceEvents events_;
  bool begun_ = false;
  std::vector<Call> early_;
};

}  // namespace VorselKelp::agent
