#pragma once

#include <gio/gio.h>

#include <functional>
#include <memory>

#include "VorselKelp/platform/MainQueue.h"

namespace VorselKelp::freedesktop {

/// Asks for the remote configuration again, for as long as the core is not up: when the network changes for
/// the better, and after 10 seconds, 20, 40, and so on up to ten minutes, each time a little sooner or later,
/// so that many machines do not ask at once. Main thread, whose time is the main queue's.
class NetworkRetry {
 public:
  /// `repeat` asks, on the main thread. GLib's default main context tells of the network.
  NetworkRetry(std::shared_ptr<platform::MainQueue> mainQueue, std::function<void()> repeat);
  NetworkRetry(const NetworkRetry&) = delete;
  NetworkRetry& operator=(const NetworkRetry&) = delete;
  ~NetworkRetry();

  /// The core is up: nothing is asked for any more.
  void end();

 private:
  using Weak = std::weak_ptr<NetworkRetry*>;

  static void onMonitor(GObject*, GAsyncResult* found, gpointer weak);
  static void onNetwork(GNetworkMonitor*, gboolean available, NetworkRetry* self);
  void findMonitor();
  void wait();

  const std::shared_ptr<platform::MainQueue> mainQueue_;
  const std::function<void()> repeat_;
  std::shared_ptr<NetworkRetry*> self_ = std::make_shared<NetworkRetry*>(this);  ///< null once it has ended
  GNetworkMonitor* monitor_ = nullptr;  ///< GLib's own; null until it is found
  double seconds_ = 10;
};

}  // namespace VorselKelp::freedesktop
