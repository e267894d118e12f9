#pragma once

#include <functional>
#include <memory>
#include <string>

#include "VorselKelp/platform/LocationManager.h"
#include "bus/Connection.h"

namespace VorselKelp::freedesktop {

/// Lets the first Bluetooth adapter look for beacons, for as long as this lives. Main thread; sightings come
/// as work of the main queue.
class BluezScanner : public std::enable_shared_from_this<BluezScanner> {
 public:
  using Seen = std::function<void(const platform::Beacon&)>;

  BluezScanner(std::shared_ptr<Connection> connection, Seen seen);

  /// Begins to look; the second call does nothing. Why it can't is a line on standard error; it begins by
  /// itself when an adapter comes, is switched on, or the Bluetooth service starts again.
  void start();
  [[nodiscard]] bool scanning() const { return scanning_; }

 private:
  void listen();
  void begin();
  void objectsKnown(GVariant* objects);
  void chooseAdapter(std::string path);
  void discover();
  void complain(const std::string& reason);
  /// `next` runs with the reply unless the looking has begun anew meanwhile.
  void ask(Method method, VariantPtr arguments, std::function<void(Result<VariantPtr>)> next);

  void interfacesAdded(GVariant* arguments);
  void interfacesRemoved(GVariant* arguments);
  void propertiesChanged(const std::string& path, GVariant* arguments);
  void serviceChanged(GVariant* arguments);
  void sight(GVariant* deviceProperties);

  const std::shared_ptr<Connection> connection_;
  const Seen seen_;
  bool started_ = false;
  bool scanning_ = false;
  unsigned beginnings_ = 0;
  std::string adapter_;  ///< the object's path; empty: none
  std::string complaint_;
};

}  // namespace VorselKelp::freedesktop
