#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "VorselKelp/JSONAny.h"
#include "collection_server/CollectionServer.h"

namespace brellixctl {

/// Who does something on the road of a notification.
enum class Lane { user, application, serviceExtension, contentExtension, server };
inline constexpr std::size_t laneCount = 5;

/// One thing that happened.
struct Happening {
  Lane lane;
  std::optional<Lane> to;  ///< where it went to; absent for what stays where it is
  std::string title;
  std::string detail;
  std::string text;                   ///< as it was written or sent; shown word for word
  std::vector<std::string> pictures;  ///< PNG files' bytes
  bool ok = true;
  double time = 0;  ///< seconds since 1970; set when it is added, unless it is known
};

/// Everything that happened on the road, in order. Any thread.
class JourneyRecord {
 public:
  /// Requests that come from now on are this one's.
  void setActor(Lane lane);
  void add(Happening happening);
  void noteRequest(const collection_server::ReceivedRequest& request);
  /// Notes what has changed in the store since the last call.
  void noteStore(Lane lane, const VorselKelp::JSONAny& values);
  /// Notes what a process wrote on its console, if anything.
  void noteConsole(Lane lane, const std::vector<VorselKelp::JSONAny>& console);
  /// Notes the pictures that a process took: events with "name" and "file".
  void notePictures(Lane lane, const std::vector<VorselKelp::JSONAny>& pictures);

  /// In the order of their times.
  [[nodiscard]] std::vector<Happening> happenings() const;

 private:
  mutable std::mutex mutex_;
  Lane actor_ = Lane::application;
  std::vector<Happening> happenings_;
  VorselKelp::JSONAny::Dictionary stored_;
};

}  // namespace brellixctl
