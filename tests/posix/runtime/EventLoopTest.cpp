#include "VorselKelpPosix/EventLoop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <limits>
#include <thread>
#include <vector>

namespace VorselKelp::posix {
namespace {

EventLoop::Clock::time_point inSeconds(double seconds) {
  return EventLoop::Clock::now() + loopDuration(seconds);
}

TEST(EventLoop, RunsWorkInOrderAndNeverInsideAsync) {
  EventLoop loop;
  std::vector<int> order;
  loop.async([&] {
    order.push_back(1);
    loop.async([&] { order.push_back(3); });
    order.push_back(2);
  });
  EXPECT_TRUE(order.empty());
  EXPECT_TRUE(loop.run([] { return true; }, inSeconds(10)));
  EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
}

TEST(EventLoop, RunsTimersByTimeAndThoseOfOneTimeInOrder) {
  EventLoop loop;
  std::vector<int> order;
  loop.asyncAfter(0.02, [&] { order.push_back(3); });
  loop.asyncAfter(-1, [&] { order.push_back(1); });
  loop.asyncAfter(std::numeric_limits<double>::quiet_NaN(), [&] { order.push_back(2); });
  EXPECT_TRUE(loop.run([&] { return order.size() == 3; }, inSeconds(10)));
  EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
}

TEST(EventLoop, EndsAtTheDeadlineWhateverIsStillToCome) {
  EventLoop loop;
  bool ran = false;
  loop.asyncAfter(3600, [&] { ran = true; });
  EXPECT_FALSE(loop.run([] { return false; }, inSeconds(0.01)));
  // Work that keeps making work does not keep the process for ever either.
  std::function<void()> again = [&] { loop.async(again); };
  loop.async(again);
  EXPECT_FALSE(loop.run([] { return true; }, inSeconds(0.01)));
  EXPECT_FALSE(ran);
}

TEST(EventLoop, LooksAgainWhenAnotherThreadWakesItOrBringsWork) {
  EventLoop loop;
  std::atomic<bool> requestUnderWay = true;
  int answers = 0;
  std::thread network([&] {
    loop.async([&] { ++answers; });
    requestUnderWay = false;
    loop.wake();
  });
  EXPECT_TRUE(loop.run([&] { return !requestUnderWay; }, inSeconds(30)));
  network.join();
  // The work came before the request ended, so it was run although nothing else was left to wait for.
  EXPECT_EQ(answers, 1);
}

TEST(EventLoop, DropsWaitingWorkUnrunWhenItGoes) {
  auto held = std::make_shared<int>(0);
  {
    EventLoop loop;
    loop.async([held] { ++*held; });
    loop.asyncAfter(5, [held] { ++*held; });
  }
  EXPECT_EQ(held.use_count(), 1);

  // Or when nothing will run it any more; what it leaves behind on the loop goes as well.
  EventLoop loop;
  std::shared_ptr<void> goodbye(nullptr, [&, held](void*) { loop.async([held] { ++*held; }); });
  loop.async([held, last = std::move(goodbye)] { ++*held; });
  loop.discard();
  EXPECT_EQ(held.use_count(), 1);
  EXPECT_EQ(*held, 0);
}

}  // namespace
}  // namespace VorselKelp::posix
