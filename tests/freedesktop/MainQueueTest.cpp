#include "VorselKelpFreedesktop/MainQueue.h"

#include <glib.h>
#include <gmock/gmock.h>

#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace VorselKelp::freedesktop {
namespace {

using testing::ElementsAre;

class MainQueueTest : public testing::Test {
 protected:
  ~MainQueueTest() override { releaseContext(); }
  void releaseContext() {
    if (context) g_main_context_unref(std::exchange(context, nullptr));
  }
  void runUntil(const bool& done) {
    while (!done) g_main_context_iteration(context, TRUE);
  }
  platform::UniqueFunction<void()> note(const std::string& what) {
    return [this, what] { ran.push_back(what); };
  }

  GMainContext* context = g_main_context_new();
  std::shared_ptr<GlibMainQueue> queue = makeMainQueue(context);
  std::vector<std::string> ran;
};

TEST_F(MainQueueTest, RunsInOrderWhoeverAppends) {
  constexpr int count = 2000;
  std::vector<int> last(2, -1);
  int left = 2 * count;
  bool done = false;
  std::vector<std::thread> threads;
  for (std::size_t who = 0; who < last.size(); ++who) {
    threads.emplace_back([&, who] {
      for (int i = 0; i < count; ++i) {
        queue->async([&, who, i, main = std::this_thread::get_id()] {
          EXPECT_NE(std::this_thread::get_id(), main);
          EXPECT_EQ(last[who], i - 1);
          last[who] = i;
          done = --left == 0;
        });
      }
    });
  }
  runUntil(done);
  for (auto& thread : threads) thread.join();
}

TEST_F(MainQueueTest, KeepsTimesAndNothingRunsInsideTheCall) {
  bool done = false;
  const auto start = g_get_monotonic_time();
  queue->asyncAfter(0.01, note("later"));
  queue->asyncAfter(0.02, [&] {
    EXPECT_GE(g_get_monotonic_time() - start, 20'000);
    done = true;
  });
  queue->asyncAfter(std::numeric_limits<double>::infinity(), note("never"));
  queue->asyncAfter(std::numeric_limits<double>::quiet_NaN(), note("no number"));
  queue->asyncAfter(-1, note("past"));
  queue->async(note("now"));
  EXPECT_THAT(ran, ElementsAre());
  runUntil(done);
  EXPECT_THAT(ran, ElementsAre("no number", "past", "now", "later"));
}

TEST_F(MainQueueTest, RunsInALoopWithinItsWork) {
  bool inner = false;
  bool outer = false;
  queue->async([&] {
    runUntil(inner);
    ran.emplace_back("outer ends");
    outer = true;
  });
  queue->async(note("between"));
  queue->async([&] { inner = true; });
  runUntil(outer);
  EXPECT_THAT(ran, ElementsAre("between", "outer ends"));
}

TEST_F(MainQueueTest, DropsWhatWaitsWhenItIsClosedOrGoesWithinItsWork) {
  const auto alive = std::make_shared<int>();
  queue->async([this] { queue->close(); });
  // What is dropped may hold the queue, and append to it when it goes.
  struct Goodbye {
    std::shared_ptr<GlibMainQueue> queue;
    std::shared_ptr<int> alive;
    ~Goodbye() {
      queue->async([alive = alive] { FAIL(); });
    }
  };
  const auto goodbye = [&] { return std::shared_ptr<Goodbye>(new Goodbye{queue, alive}); };
  queue->async([kept = goodbye()] { FAIL(); });
  queue->asyncAfter(1000, [kept = goodbye()] { FAIL(); });
  EXPECT_GT(alive.use_count(), 1);
  g_main_context_iteration(context, FALSE);
  queue->async([alive] { FAIL(); });
  EXPECT_EQ(alive.use_count(), 1);

  queue = makeMainQueue(context);
  queue->async([this, alive] { queue.reset(); });
  queue->async([alive] { FAIL(); });
  while (g_main_context_iteration(context, FALSE)) {
  }
  EXPECT_EQ(queue, nullptr);
  EXPECT_EQ(alive.use_count(), 1);
}

TEST_F(MainQueueTest, OutlivesTheContextsOwnerAndIsTheMainThreadsUnlessToldOtherwise) {
  const auto alive = std::make_shared<int>();
  queue->async([alive] { FAIL(); });
  releaseContext();
  queue->async([alive] { FAIL(); });
  queue.reset();
  EXPECT_EQ(alive.use_count(), 1);

  bool done = false;
  const auto mainQueue = makeMainQueue();
  mainQueue->async([&] { done = true; });
  runUntil(done);
}

}  // namespace
}  // namespace VorselKelp::freedesktop
