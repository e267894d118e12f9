#pragma once

#include <memory>
#include <string>
#include <vector>

#include "brellixctl/Operations.h"
#include "brellixctl/demo/JourneyRecord.h"
#include "brellixctl/demo/RequestWatch.h"

namespace brellixctl {

/// Where a journey goes, and how.
struct JourneyPlan {
  Target target;
  Target facade;  ///< the same application through the publisher's facade
  std::string push;
  std::string carousel;
  std::shared_ptr<Display> display;  ///< null: no windows
  std::string pictures;              ///< a folder for their pictures
  bool json = false;
};

/// Leads a user, an application and its extensions down the whole road of a notification, and says of every
/// step whether it came to what it should.
class Journey {
 public:
  Journey(JourneyPlan plan, RequestWatch& watch, JourneyRecord& record)
      : plan_(std::move(plan)), watch_(watch), record_(record) {}

  /// False when a step failed; the steps after it are not taken.
  bool run();

 private:
  /// What one step came to.
  struct Step {
    std::string name;
    bool ok;
    std::string detail;
  };

  bool start();
  bool deliver();
  bool open();
  bool browse();
  bool lookAround();
  bool advertise();
  bool publish();

  LaunchRequest launchRequest() const;
  void begin(Lane lane, const std::string& what);
  template <class Outcome>
  void end(Lane lane, const Outcome& outcome);
  void noteShown(const PushOutcome& outcome);
  bool waits(const std::string& identifier);
  bool expect(const char* step, const char* method, const std::string& path, const std::string& what);
  bool expectBody(const char* step, const std::string& path, const std::string& text,
                  const std::string& what);
  bool note(std::string name, bool ok, std::string detail);
  void printSteps() const;

  const JourneyPlan plan_;
  RequestWatch& watch_;
  JourneyRecord& record_;
  std::vector<Step> steps_;
};

}  // namespace brellixctl
