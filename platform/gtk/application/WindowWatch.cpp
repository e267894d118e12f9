#include "application/WindowWatch.h"

#include <algorithm>
#include <utility>

namespace VorselKelp::gtk {
namespace {

constexpr double longestPatience = 30;  // seconds
constexpr double lookPause = 0.25;      // seconds

}  // namespace

WindowWatch::WindowWatch(GtkApplication* application, system::RunningApplication& running,
                         std::shared_ptr<platform::MainQueue> mainQueue, std::function<bool()> idle)
    : application_(application), running_(running), mainQueue_(std::move(mainQueue)), idle_(std::move(idle)) {
  g_signal_connect(application_, "window-added", G_CALLBACK(&WindowWatch::onAdded), this);
  g_signal_connect(application_, "window-removed", G_CALLBACK(&WindowWatch::onRemoved), this);
  for (auto* each = gtk_application_get_windows(application_); each != nullptr; each = each->next)
    watch(GTK_WINDOW(each->data));
}

WindowWatch::~WindowWatch() {
  g_signal_handlers_disconnect_by_data(application_, this);
  for (auto* window : windows_) g_signal_handlers_disconnect_by_data(window, this);
}

void WindowWatch::watch(GtkWindow* window) {
  if (!windows_.insert(window).second) return;
  g_signal_connect(window, "map", G_CALLBACK(&WindowWatch::onMapped), this);
  g_signal_connect(window, "unmap", G_CALLBACK(&WindowWatch::onUnmapped), this);
  g_signal_connect(window, "notify::is-active", G_CALLBACK(&WindowWatch::onActive), this);
  if (gtk_widget_get_mapped(GTK_WIDGET(window))) onMapped(GTK_WIDGET(window), this);
}

void WindowWatch::onAdded(GtkApplication*, GtkWindow* window, WindowWatch* self) {
  self->watch(window);
}

void WindowWatch::onRemoved(GtkApplication*, GtkWindow* window, WindowWatch* self) {
  if (self->windows_.erase(window) == 0) return;
  g_signal_handlers_disconnect_by_data(window, self);
  onUnmapped(GTK_WIDGET(window), self);
}

void WindowWatch::onMapped(GtkWidget* window, WindowWatch* self) {
  self->patience_ = nullptr;
  if (self->mapped_.insert(window).second) self->running_.screenAppeared();
}

void WindowWatch::onUnmapped(GtkWidget* window, WindowWatch* self) {
  if (self->mapped_.erase(window) == 0) return;
  self->running_.screenDisappeared();
  if (!self->mapped_.empty()) return;
  if (std::exchange(self->active_, false)) self->running_.resignActive();
  self->patience_ = std::make_shared<int>();
  self->wait(longestPatience);
  self->running_.enterBackground();
}

void WindowWatch::wait(double patience) {
  mainQueue_->asyncAfter(lookPause, [this, patience, lasting = std::weak_ptr(patience_)] {
    if (lasting.expired()) return;  // and this object may be gone
    if (patience > lookPause && !idle_()) return wait(patience - lookPause);
    patience_ = nullptr;
    running_.expireBackgroundTasks();
  });
}

void WindowWatch::onActive(GtkWindow*, GParamSpec*, WindowWatch* self) {
  const bool active =
      std::ranges::any_of(self->windows_, [](auto* window) { return gtk_window_is_active(window) != FALSE; });
  if (std::exchange(self->active_, active) == active) return;
  active ? self->running_.becomeActive() : self->running_.resignActive();
}

}  // namespace VorselKelp::gtk
