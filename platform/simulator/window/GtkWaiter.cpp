#include "window/GtkWaiter.h"

#include <algorithm>

namespace VorselKelp::simulator {

void GtkWaiter::wait(std::chrono::steady_clock::time_point until) {
  constexpr long long longest = 60'000;  // milliseconds; the loop asks again
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
  const auto timeout = static_cast<guint>(std::clamp<long long>(left.count(), 0, longest));
  bool over = false;
  const auto timer = g_timeout_add(
      timeout,
      [](gpointer flag) -> gboolean {
        *static_cast<bool*>(flag) = true;
        return G_SOURCE_REMOVE;
      },
      &over);
  g_main_context_iteration(nullptr, TRUE);
  if (!over) g_source_remove(timer);
}

}  // namespace VorselKelp::simulator
