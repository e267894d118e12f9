#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"
#include "VorselKelp/platform/FunctionRef.h"

namespace VorselKelp::simulator {

class DeviceFile;
class DeviceHome;

/// A remote notification that has come as far as the device.
struct Arrival {
  std::string identifier;  ///< the notification's; a later one takes the place of what is shown under it
  std::string payload;     ///< a JSON object
};

/// The pushes to one application that have come and are not delivered yet, as files below the device's home:
/// a killed process loses none, and one that dies while it delivers has it delivered again. To a device that
/// is on everything goes in the order in which it came; for one that is off the last push is kept until it is
/// on again or the push has expired on the device's clock. Several processes at once; any thread.
class VORSELKELP_API Arrivals {
 public:
  enum class Place {
    underWay,  ///< the device is on: deliver() hands it over
    kept,      ///< the device is off
    dropped    ///< the device is off, and the push would have expired before it is on
  };
  enum class Taken {
    forGood,  ///< delivered, or never to be
    notYet    ///< stays the first one
  };

  /// Touches no file.
  Arrivals(const DeviceHome& home, const std::string& application);
  ~Arrivals();

  /// `expiration`: seconds since 1970; from there on a device that comes on does not get it. Without one that
  /// is in 30 days, which is also the longest.
  Result<Place> put(const Arrival& push, std::optional<std::int64_t> expiration = {});

  /// Hands over what lies there, one after the other, also what comes meanwhile, until nothing is left, the
  /// device is off or `take` wants no more. Where another process does so already it is left to that one,
  /// which may take this one up to ten seconds to see. An error when the files can't be read.
  Status deliver(platform::FunctionRef<Taken(const Arrival&)> take);

  /// How many lie there.
  [[nodiscard]] std::size_t count() const;
  Status clear();

 private:
  enum class Step { handedOver, stopped };
  Result<Step> handOver(const std::string& name, platform::FunctionRef<Taken(const Arrival&)> take);

  const std::string folder_;
  const std::unique_ptr<DeviceFile> file_;
};

}  // namespace VorselKelp::simulator
