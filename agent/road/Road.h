#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>

#include "VorselKelp/platform/Clock.h"
#include "VorselKelp/platform/MainQueue.h"
#include "VorselKelpSystem/Delivery.h"
#include "VorselKelpSystem/NotificationCenter.h"
#include "road/ApplicationDoor.h"
#include "state/StateThread.h"

namespace VorselKelp::agent {

struct RoadOptions {
  bool plaintext = false;  ///< payloads may come unencrypted
};

/// What a message's road leads over.
struct RoadParts {
  StateThread* state = nullptr;
  ApplicationDoor* application = nullptr;
  std::shared_ptr<platform::MainQueue> mainQueue;
  std::shared_ptr<platform::Clock> clock;
  std::shared_ptr<system::NotificationStore> store;
  std::shared_ptr<system::NotificationCenter> center;
  std::shared_ptr<system::Delivery> delivery;
  std::function<void()> ended;  ///< a message has left the road
};

/// Takes messages from where they wait to the user: decrypts them, has the service extension change them, and
/// shows them; what is silent goes to the application. A message waits until it was shown: when nobody shows
/// it, or it can't be read from the disk, the road stands still, until tryAgain() or a minute has passed.
/// Main thread.
class Road : public std::enable_shared_from_this<Road> {
 public:
  Road(RoadParts parts, RoadOptions options);

  /// Appends a message that waits.
  void add(std::int64_t serial);
  /// Somebody shows notifications now.
  void tryAgain();
  /// The application runs now.
  void applicationRuns();
  [[nodiscard]] bool idle() const { return waiting_.empty() && underWay_ == 0 && silent_.empty(); }

 private:
  struct Silent {
    std::int64_t serial;
    std::string payload;
  };

  void go();
  void begin(std::int64_t serial);
  void changed(std::int64_t serial, const std::string& payload, system::PushResult result);
  void show(std::int64_t serial, platform::NotificationRequest request);
  void refused(std::int64_t serial, platform::NotificationRequest request, const Error& reason);
  void dropReplaced(std::int64_t serial, const std::string& identifier);
  void later(std::int64_t serial, const Error& reason);
  void stand(const Error& reason);
  void hand(Silent silent);
  void leave();
  void leave(std::int64_t serial);
  void drop(std::int64_t serial, const std::string& reason);

  const RoadParts parts_;
  const RoadOptions options_;
  std::deque<std::int64_t> waiting_;
  std::size_t underWay_ = 0;
  bool going_ = false;
  bool standing_ = false;
  unsigned tries_ = 0;  ///< counts the times when it may have become worth a try
  std::map<std::int64_t, platform::NotificationRequest> unshown_;  ///< under way as well
  std::deque<Silent> silent_;                                      ///< for the application's next start
};

}  // namespace VorselKelp::agent
