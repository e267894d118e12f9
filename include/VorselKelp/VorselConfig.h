#pragma once

#include <memory>
#include <optional>
#include <string>

#include "VorselKelp/Export.h"

namespace VorselKelp {

class CoreContext;

/// What the application wants of the core. Setting a switch writes it into the shared store at once, where
/// the extensions, which never see this object, read it. An absent switch leaves the store as an earlier
/// launch left it: the last explicit choice holds. Used on one thread at a time; shared with the core, which
/// keeps the object that it was started with.
class VORSELKELP_API VorselConfig {
 public:
  /// Everything is stored, then the switches are written in the order of the arguments.
  VorselConfig(std::string apiKey, std::optional<std::string> appGroupId, std::optional<bool> crash,
               bool analytics, std::optional<bool> push, std::optional<bool> geofence,
               std::optional<bool> beacon, std::optional<bool> custom, std::optional<bool> location,
               bool schedule, bool adex, bool consent);

  [[nodiscard]] const std::string& apiKey() const { return _apiKey; }
  [[nodiscard]] const std::optional<std::string>& appGroupId() const { return _appGroupId; }

  [[nodiscard]] std::optional<bool> crash() const { return _crash; }
  [[nodiscard]] bool analytics() const { return _analytics; }
  [[nodiscard]] std::optional<bool> push() const { return _push; }
  [[nodiscard]] std::optional<bool> geofence() const { return _geofence; }
  [[nodiscard]] std::optional<bool> beacon() const { return _beacon; }
  [[nodiscard]] std::optional<bool> custom() const { return _custom; }
  [[nodiscard]] std::optional<bool> location() const { return _location; }

  void setCrash(std::optional<bool> value);
  void setAnalytics(bool value);
  void setPush(std::optional<bool> value);
  void setGeofence(std::optional<bool> value);
  void setBeacon(std::optional<bool> value);
  void setCustom(std::optional<bool> value);
  void setLocation(std::optional<bool> value);

  /// These three live in this object alone.
  bool schedule;
  bool adex;
  bool consent;

 private:
  std::shared_ptr<CoreContext> context_;
  std::string _apiKey;
  std::optional<std::string> _appGroupId;
  std::optional<bool> _crash;
  bool _analytics;
  std::optional<bool> _push;
  std::optional<bool> _geofence;
  std::optional<bool> _beacon;
  std::optional<bool> _custom;
  std::optional<bool> _location;
};

}  // namespace VorselKelp
