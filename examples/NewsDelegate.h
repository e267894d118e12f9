#pragma once

#include "VorselKelp/VorselKellpDelegate.h"
#include "VorselKelpSimulator/ApplicationHost.h"

namespace news {

/// What the news application wants to hear from the library. A real one would show a page or update its
/// settings; this one tells whoever started it, so that brellixctl can show the calls.
class NewsDelegate final : public VorselKelp::VorselKellpDelegate {
 public:
  explicit NewsDelegate(VorselKelp::simulator::ApplicationProcess& process) : process_(process) {}

  void notificationTokenChanged(const std::string& token) override {
    process_.noteDelegateCall("notificationTokenChanged", {token});
  }
  void enteredGeofenceRegionWith(const std::string& id) override {
    process_.noteDelegateCall("enteredGeofenceRegionWith", {id});
  }
  void enteredBeaconRegionWith(const std::string& id) override {
    process_.noteDelegateCall("enteredBeaconRegionWith", {id});
  }
  void vorselInited(bool success) override { process_.noteDelegateCall("vorselInited", {success}); }
  void handleURL(const std::string& url) override { process_.noteDelegateCall("handleURL", {url}); }
  void locationChanged(double lat, double lng) override {
    process_.noteDelegateCall("locationChanged", {lat, lng});
  }
  void passLocation(const std::any&) override { process_.noteDelegateCall("passLocation", {}); }

 private:
  VorselKelp::simulator::ApplicationProcess& process_;
};

}  // namespace news
