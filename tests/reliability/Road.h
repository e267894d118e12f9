#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "VorselKelp/VorselKellp.h"
#include "VorselKelpTesting/FaultyPlatform.h"
#include "VorselKelpTesting/MemoryPlatform.h"

namespace VorselKelp::reliability {

/// What a notification of the road is to do.
struct Message {
  const char* identifier;
  bool image = true;
  bool ad = false;

  [[nodiscard]] std::string payload() const;
  [[nodiscard]] std::vector<std::string> trackers() const;
  /// What a tap on the notification itself opens.
  [[nodiscard]] std::string link() const;
};

/// One device on which an application and its extensions live, one process after the other, the way a user
/// goes with them. A plan disturbs them all; from the process on that comes after a killed one they are
/// healthy again.
class Road {
 public:
  static constexpr const char* group = "group.example";

  explicit Road(std::shared_ptr<testing_platform::FaultPlan> plan);

  /// The application is installed and used, four notifications come, it is started and two of them are
  /// tapped.
  void walk();
  /// Nothing is disturbed any more.
  void heal() { plan_ = std::make_shared<testing_platform::FaultPlan>(); }

  void launch();
  void push(const Message& message);
  void showCampaign();
  void tap(const Message& message, const std::string& action);

  /// What happened; the calls on its behalf of a killed process do not count.
  struct Seen {
    int handlerCalls = 0;
    bool stopped = false;  ///< the process was killed
    std::string title;     ///< what is shown in the end
  };
  std::vector<Seen> deliveries;
  int launches = 0;
  int initialised = 0;
  int opensAsked = 0;                ///< opens that were to be reported
  int opensAccepted = 0;             ///< those that the server has
  std::vector<std::string> opened;   ///< pages and deep links
  std::vector<std::string> clicked;  ///< click trackers that the server has

  const std::shared_ptr<testing_platform::MemoryDevice> device =
      std::make_shared<testing_platform::MemoryDevice>();
  [[nodiscard]] testing_platform::MemoryDefaultsDomain& store() const {
    return *device->groupStores->find(group);
  }

 private:
  class Process;
  std::shared_ptr<testing_platform::FaultPlan> plan_;
  std::vector<std::shared_ptr<testing_platform::FaultPlan>> used_;  ///< as long as what they have disturbed
};

inline constexpr Message first{"first"}, second{"second"}, plain{"plain", false}, advert{"ad", true, true};

}  // namespace VorselKelp::reliability
