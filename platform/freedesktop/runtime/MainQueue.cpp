#include "VorselKelpFreedesktop/MainQueue.h"

#include <glib.h>

#include <algorithm>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <utility>

namespace VorselKelp::freedesktop {
namespace {

using Work = platform::UniqueFunction<void()>;
using Time = std::int64_t;  ///< microseconds of the monotonic clock

constexpr Time never = -1;
constexpr Time atOnce = 0;

Time timeIn(double seconds) {
  constexpr double century = 100.0 * 365 * 24 * 3600;
  return g_get_monotonic_time() + static_cast<Time>(std::min(seconds, century) * G_USEC_PER_SEC);
}

/// What waits, and the source by which the context learns of it. Whoever runs work holds it, so that the
/// queue may go meanwhile.
class Waiting {
 public:
  explicit Waiting(GSource* source) : source_(source) {}
  ~Waiting() { g_source_unref(source_); }
  Waiting(const Waiting&) = delete;
  Waiting& operator=(const Waiting&) = delete;

  void add(double seconds, Work work) {
    const std::lock_guard lock(mutex_);
    if (g_source_is_destroyed(source_)) return;
    if (seconds > 0) {
      timers_.emplace(timeIn(seconds), std::move(work));
    } else {
      due_.push_back(std::move(work));
    }
    arm();
  }

  void runOne() {
    Work work;
    {
      const std::lock_guard lock(mutex_);
      const auto end = timers_.upper_bound(g_get_monotonic_time());
      for (auto timer = timers_.begin(); timer != end; timer = timers_.erase(timer))
        due_.push_back(std::move(timer->second));
      if (!due_.empty()) {
        work = std::move(due_.front());
        due_.pop_front();
      }
      if (!g_source_is_destroyed(source_)) arm();
    }
    if (work) work();
  }

  void close() {
    // Work goes outside the lock: it may hold the last of something that says goodbye on this queue.
    std::deque<Work> due;
    std::multimap<Time, Work> timers;
    const std::lock_guard lock(mutex_);
    g_source_destroy(source_);
    due.swap(due_);
    timers.swap(timers_);
  }

 private:
  void arm() {
    const Time next = timers_.empty() ? never : timers_.begin()->first;
    g_source_set_ready_time(source_, due_.empty() ? next : atOnce);
  }

  GSource* const source_;
  std::mutex mutex_;
  std::deque<Work> due_;
  std::multimap<Time, Work> timers_;
};

gboolean dispatch(GSource*, GSourceFunc callback, gpointer data) {
  return callback(data);
}

gboolean runWaiting(gpointer data) {
  const auto waiting = *static_cast<std::shared_ptr<Waiting>*>(data);
  waiting->runOne();
  return G_SOURCE_CONTINUE;
}

/// A source that is ready when its time has come, and also in a loop within its own work.
std::shared_ptr<Waiting> attached(GMainContext* context) {
  static GSourceFuncs functions{nullptr, nullptr, dispatch, nullptr, nullptr, nullptr};
  GSource* source = g_source_new(&functions, sizeof(GSource));
  auto waiting = std::make_shared<Waiting>(source);
  g_source_set_can_recurse(source, TRUE);
  g_source_set_name(source, "VorselKelp");
  g_source_set_callback(source, runWaiting, new std::shared_ptr<Waiting>(waiting),
                        [](gpointer data) { delete static_cast<std::shared_ptr<Waiting>*>(data); });
  g_source_attach(source, context);
  return waiting;
}

class ContextQueue final : public GlibMainQueue {
 public:
  explicit ContextQueue(GMainContext* context)
      : context_(g_main_context_ref(context ? context : g_main_context_default())),
        waiting_(attached(context_)) {}
  ~ContextQueue() override {
    waiting_->close();
    g_main_context_unref(context_);
  }
  ContextQueue(const ContextQueue&) = delete;
  ContextQueue& operator=(const ContextQueue&) = delete;

  void async(Work work) override { waiting_->add(0, std::move(work)); }
  void asyncAfter(double seconds, Work work) override { waiting_->add(seconds, std::move(work)); }
  void close() override { waiting_->close(); }

 private:
  GMainContext* const context_;
  const std::shared_ptr<Waiting> waiting_;
};

}  // namespace

std::shared_ptr<GlibMainQueue> makeMainQueue(GMainContext* context) {
  return std::make_shared<ContextQueue>(context);
}

}  // namespace VorselKelp::freedesktop
