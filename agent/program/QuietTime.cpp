#include "program/QuietTime.h"

#include <glib.h>

namespace VorselKelp::agent {
namespace {

double monotonicTime() {
  return static_cast<double>(g_get_monotonic_time()) / G_USEC_PER_SEC;
}

}  // namespace

/// One timer for all that happens: a burst would leave thousands.
void QuietTime::begin(double seconds) {
  end_ = monotonicTime() + seconds;
  if (!std::exchange(waiting_, true)) wait(seconds);
}

void QuietTime::wait(double seconds) {
  mainQueue_->asyncAfter(seconds, [this] {
    if (const double left = end_ - monotonicTime(); left > 0) return wait(left);
    waiting_ = false;
    over_();
  });
}

}  // namespace VorselKelp::agent
