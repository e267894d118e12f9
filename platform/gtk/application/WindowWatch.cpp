#include "application/WindowWatch.h"

#include <algorithm>
#include <utility>

namespace VorselKelp::gtk {
namespace {

constexpr guint patienceSeconds = 30;

}  // namespace

WindowWatch::WindowWatch(GtkApplication* application, system::RunningApplication& running)
    : application_(application), running_(running) {
  g_signal_connect(application_, "window-added", G_CALLBACK(&WindowWatch::onAdded), this);
  g_signal_connect(application_, "window-removed", G_CALLBACK(&WindowWatch::onRemoved), this);
  for (auto* each = gtk_application_get_windows(application_); each != nullptr; each = each->next)
    watch(GTK_WINDOW(each->data));
}

WindowWatch::~WindowWatch() {
  if (patience_ != 0) g_source_remove(patience_);
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
  if (self->patience_ != 0) g_source_remove(std::exchange(self->patience_, 0));
  if (self->mapped_.insert(window).second) self->running_.screenAppeared();
}

void WindowWatch::onUnmapped(GtkWidget* window, WindowWatch* self) {
  if (self->mapped_.erase(window) == 0) return;
  self->running_.screenDisappeared();
  if (!self->mapped_.empty()) return;
  if (std::exchange(self->active_, false)) self->running_.resignActive();
  self->patience_ = g_timeout_add_seconds(patienceSeconds, &WindowWatch::onPatienceOver, self);
  self->running_.enterBackground();
}

gboolean WindowWatch::onPatienceOver(gpointer self) {
  auto& watch = *static_cast<WindowWatch*>(self);
  watch.patience_ = 0;
  watch.running_.expireBackgroundTasks();
  return G_SOURCE_REMOVE;
}

void WindowWatch::onActive(GtkWindow*, GParamSpec*, WindowWatch* self) {
  const bool active =
      std::ranges::any_of(self->windows_, [](auto* window) { return gtk_window_is_active(window) != FALSE; });
  if (std::exchange(self->active_, active) == active) return;
  active ? self->running_.becomeActive() : self->running_.resignActive();
}

}  // namespace VorselKelp::gtk
