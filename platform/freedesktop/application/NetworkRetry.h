#pragma once

#include <gio/gio.h>

#include "glib/Pointers.h"

namespace VorselKelp::freedesktop {

/// Asks for the remote configuration again, for as long as the core is not up: when the network changes for
/// the better, and after 10 seconds, 20, 40, and so on up to ten minutes, each time a little sooner or later,
/// so that many machines do not ask at once. Main thread.
class NetworkRetry {
 public:
  NetworkRetry();
  NetworkRetry(const NetworkRetry&) = delete;
  NetworkRetry& operator=(const NetworkRetry&) = delete;
  ~NetworkRetry();

  /// The core is up: nothing is asked for any more.
  void end();

 private:
  static void onNetwork(GNetworkMonitor*, gboolean available, NetworkRetry* self);
  static gboolean onTime(gpointer self);
  void wait();

  GNetworkMonitor* monitor_;  ///< GLib's own
  double seconds_ = 10;
  guint timer_ = 0;
};

}  // namespace VorselKelp::freedesktop
