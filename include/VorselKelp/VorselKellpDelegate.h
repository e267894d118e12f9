#pragma once

#include <any>
#include <string>

namespace VorselKelp {

/// Hears what happens in the core. Every operation has an empty default. The core holds its delegate weakly:
/// the application keeps it alive. Calls come on whatever thread the event happened on, network and system
/// threads included.
class VorselKellpDelegate {
 public:
  virtual ~VorselKellpDelegate() = default;

  /// The device's push token changed; lower-case hexadecimal.
  virtual void notificationTokenChanged(const std::string& token) { (void)token; }
  virtual void enteredGeofenceRegionWith(const std::string& id) { (void)id; }
  virtual void enteredBeaconRegionWith(const std::string& id) { (void)id; }
  /// The registration of the device with the server ended; true when the server accepted the token.
  virtual void vorselInited(bool success) { (void)success; }
  /// A notification was opened whose URL is no web page: the application's own deep link, percent-encoded
  /// where it was sent in other characters than those of URLs.
  virtual void handleURL(const std::string& url) { (void)url; }
  virtual void locationChanged(double lat, double lng) { (void)lat, (void)lng; }
  virtual void passLocation(const std::any& location) { (void)location; }
};

}  // namespace VorselKelp
