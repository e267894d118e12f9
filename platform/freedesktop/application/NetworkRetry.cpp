#include "application/NetworkRetry.h"

#include <algorithm>
#include <utility>

#include "VorselKelp/VorselKellp.h"

namespace VorselKelp::freedesktop {
namespace {

constexpr double longest = 600;  // seconds

}  // namespace

NetworkRetry::NetworkRetry() : monitor_(g_network_monitor_get_default()) {
  // Never asked whether there is a network: a machine of which GLib sees the loopback alone may reach a
  // server there.
  g_signal_connect(monitor_, "network-changed", G_CALLBACK(&NetworkRetry::onNetwork), this);
  wait();
}

NetworkRetry::~NetworkRetry() {
  end();
}

void NetworkRetry::end() {
  g_signal_handlers_disconnect_by_data(monitor_, this);
  if (timer_ != 0) g_source_remove(std::exchange(timer_, 0));
}

void NetworkRetry::wait() {
  timer_ = g_timeout_add(static_cast<guint>(seconds_ * g_random_double_range(0.8, 1.2) * 1000),
                         &NetworkRetry::onTime, this);
  seconds_ = std::min(2 * seconds_, longest);
}

gboolean NetworkRetry::onTime(gpointer self) {
  auto& retry = *static_cast<NetworkRetry*>(self);
  VorselKellp::repeatConfiguration();
  retry.wait();
  return G_SOURCE_REMOVE;
}

void NetworkRetry::onNetwork(GNetworkMonitor*, gboolean available, NetworkRetry*) {
  if (available) VorselKellp::repeatConfiguration();
}

}  // namespace VorselKelp::freedesktop
