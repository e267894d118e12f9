#include "application/NetworkRetry.h"

#include <algorithm>
#include <utility>

#include "glib/Pointers.h"

namespace VorselKelp::freedesktop {
namespace {

constexpr double longest = 600;  // seconds

}  // namespace

NetworkRetry::NetworkRetry(std::shared_ptr<platform::MainQueue> mainQueue, std::function<void()> repeat)
    : mainQueue_(std::move(mainQueue)), repeat_(std::move(repeat)) {
  findMonitor();
  wait();
}

NetworkRetry::~NetworkRetry() {
  end();
}

void NetworkRetry::end() {
  self_ = nullptr;
  if (monitor_ != nullptr) g_signal_handlers_disconnect_by_data(std::exchange(monitor_, nullptr), this);
}

/// Whoever wants the monitor first waits for the system's bus, which may not answer.
void NetworkRetry::findMonitor() {
  const ObjectPtr<GTask> task(g_task_new(nullptr, nullptr, &NetworkRetry::onMonitor, new Weak(self_)));
  g_task_run_in_thread(task.get(), [](GTask* found, gpointer, gpointer, GCancellable*) {
    g_task_return_pointer(found, g_network_monitor_get_default(), nullptr);
  });
}

void NetworkRetry::onMonitor(GObject*, GAsyncResult* found, gpointer weak) {
  const std::unique_ptr<Weak> owned(static_cast<Weak*>(weak));
  const auto self = owned->lock();
  if (!self) return;
  auto& retry = **self;
  retry.monitor_ = G_NETWORK_MONITOR(g_task_propagate_pointer(G_TASK(found), nullptr));
  // Never asked whether there is a network: a machine of which GLib sees the loopback alone may reach a
  // server there.
  g_signal_connect(retry.monitor_, "network-changed", G_CALLBACK(&NetworkRetry::onNetwork), &retry);
}

void NetworkRetry::wait() {
  mainQueue_->asyncAfter(seconds_ * g_random_double_range(0.8, 1.2), [weak = Weak(self_)] {
    const auto self = weak.lock();
    if (!self) return;
    auto& retry = **self;
    retry.wait();
    retry.repeat_();  // which may end it, and with it this object
  });
  seconds_ = std::min(2 * seconds_, longest);
}

void NetworkRetry::onNetwork(GNetworkMonitor*, gboolean available, NetworkRetry* self) {
  if (available) self->repeat_();
}

}  // namespace VorselKelp::freedesktop
