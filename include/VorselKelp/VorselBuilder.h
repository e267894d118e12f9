#pragma once

#include <memory>
#include <optional>
#include <string>

#include "VorselKelp/Export.h"
#include "VorselKelp/VorselConfig.h"

namespace VorselKelp {

/// Describes, call by call, what the application wants of the core:
///   VorselKellp::initialize(VorselBuilder("key", "group.com.example.news").push().build());
/// Constructing one decides which store the core uses: make it before any call that uses the store. Used on
/// one thread.
class VORSELKELP_API VorselBuilder {
 public:
  /// Without a key, the main bundle's text "VorselKellpApiKey" is the key; a bundle without that text stops
  /// the process. An empty key passes here and is reported by VorselKellp::initialize. `appGroupId` names the
  /// application group whose store the application shares with its extensions.
  VorselBuilder(std::optional<std::string> apiKey, std::optional<std::string> appGroupId);
  /// Not a way to make a builder: stops the process.
  [[noreturn]] VorselBuilder();

  VorselBuilder& crash();
  VorselBuilder& adex();
  VorselBuilder& push();
  /// The same as customNotificationHandling().
  VorselBuilder& custom();
  VorselBuilder& customNotificationHandling();
  VorselBuilder& analytics(bool enabled);
  VorselBuilder& geofence(bool enabled);
  VorselBuilder& beacon(bool enabled);
  VorselBuilder& locationTracking(bool enabled);
  /// Stores the interval of the re-engagement notification in seconds, at once; VorselKellp::updateScheduler
  /// schedules it.
  VorselBuilder& scheduleNotifications(double interval);

  /// Makes the configuration, which writes its switches into the store.
  [[nodiscard]] std::shared_ptr<VorselConfig> build() const;

 private:
  std::shared_ptr<CoreContext> context_;
  std::string _apiKey;
  std::optional<std::string> _appGroupId;
  std::optional<bool> _crash;
  bool _analytics = true;
  std::optional<bool> _push;
  std::optional<bool> _geofence;
  std::optional<bool> _beacon;
  std::optional<bool> _custom;
  std::optional<bool> _location;
  bool _schedulerEnabled = false;
  bool _adex = false;
  bool _consent = false;
};

}  // namespace VorselKelp
