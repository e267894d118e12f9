#include "gif/GifManager.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "VorselKelpTesting/MemoryPlatform.h"

namespace VorselKelp::gif {
namespace {

using namespace testing_platform;

/// Counts the frames that are read from files.
class CountingDecoder final : public platform::ImageDecoder {
 public:
  Result<platform::ImageInfo> inspect(std::string_view bytes, std::int64_t limit) override {
    return frames.inspect(bytes, limit);
  }
  Result<ui::ImagePtr> decode(std::string_view bytes, std::int64_t limit) override {
    return frames.decode(bytes, limit);
  }
  Result<std::unique_ptr<platform::GifReader>> openGif(std::shared_ptr<const std::string> bytes,
                                                       std::int64_t limit) override {
    ++opened;
    auto reader = frames.openGif(std::move(bytes), limit);
    if (!reader) return reader.error();
    return std::unique_ptr<platform::GifReader>(std::make_unique<Reader>(*this, *std::move(reader)));
  }

  HeaderImageDecoder frames;
  int opened = 0;
  int read = 0;

 private:
  struct Reader final : platform::GifReader {
    Reader(CountingDecoder& counter, std::unique_ptr<GifReader> given)
        : decoder(counter), reader(std::move(given)) {}
    [[nodiscard]] int width() const override { return reader->width(); }
    [[nodiscard]] int height() const override { return reader->height(); }
    [[nodiscard]] std::optional<int> loopCount() const override { return reader->loopCount(); }
    const platform::GifFrame* next() override {
      const auto* frame = reader->next();
      if (frame) ++decoder.read;
      return frame;
    }
    void rewind() override { reader->rewind(); }
    CountingDecoder& decoder;
    std::unique_ptr<GifReader> reader;
  };
};

class GifManagerTest : public testing::Test {
 protected:
  /// Frame `n` colours the whole canvas with red `n`+1; delays are in hundredths of a second.
  ui::ImagePtr animation(const std::vector<int>& delays, std::optional<int> loops, unsigned side = 1) {
    std::vector<HeaderImageDecoder::Frame> frames;
    for (std::size_t i = 0; i < delays.size(); ++i) {
      const int size = static_cast<int>(side);
      frames.push_back({0,
                        0,
                        size,
                        size,
                        std::vector<std::uint8_t>(side * side),
                        {{static_cast<std::uint8_t>(i + 1), 0, 0}},
                        {},
                        {},
                        delays[i]});
    }
    decoder_->frames.setFrames(frames, loops);
    return std::make_shared<ui::Image>(1, 1, std::vector<std::uint8_t>(4),
                                       std::make_shared<const std::string>(gifBeginning(side, side)));
  }

  static int shown(const ui::ImageView& view) {
    return view.image.get() ? view.image.get()->pixels()[0] : -1;
  }
  int shown() const { return shown(*view_); }
  /// What is shown at each of the refreshes.
  std::vector<int> play(double from, double step, int refreshes) {
    std::vector<int> frames;
    for (int i = 0; i < refreshes; ++i) {
      screen_->refresh(from + step * i);
      frames.push_back(shown());
    }
    return frames;
  }
  std::size_t running() const { return screen_->runningLinks(); }

  const std::shared_ptr<SettableScreen> screen_ = std::make_shared<SettableScreen>();
  const std::shared_ptr<CountingDecoder> decoder_ = std::make_shared<CountingDecoder>();
  std::unique_ptr<GifManager> manager_ = std::make_unique<GifManager>(screen_, decoder_);
  std::shared_ptr<ui::ImageView> view_ = std::make_shared<ui::ImageView>();
};

TEST_F(GifManagerTest, FramesLastAsLongAsTheyAskAndTheShortestLonger) {
  // 100, 20, 20 and 30 ms; refreshed every 10 ms, halfway between.
  manager_->show(view_, animation({0, 1, 2, 3}, 0));
  EXPECT_EQ(shown(), 0) << "the given picture until the first refresh";
  screen_->refresh(50);
  EXPECT_EQ(shown(), 1);
  EXPECT_EQ(play(50.005, 0.01, 19),
            (std::vector<int>{1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 2, 2, 3, 3, 4, 4, 4, 1, 1}));
}

TEST_F(GifManagerTest, PlaysAsOftenAsTheFileSays) {
  const struct {
    std::optional<int> loops;
    int rounds;
  } cases[] = {{std::nullopt, 1}, {1, 2}, {3, 4}};
  for (const auto& each : cases) {
    manager_->show(view_, animation({10, 10}, each.loops));
    std::vector<int> expected;
    for (int i = 0; i < each.rounds; ++i) expected.insert(expected.end(), {1, 2});
    EXPECT_EQ(play(0, 0.1001, each.rounds * 2), expected);
    EXPECT_TRUE(manager_->isAnimating(*view_));
    EXPECT_EQ(play(5, 0.1001, 3), (std::vector<int>{2, 2, 2})) << "the last frame stays";
    EXPECT_FALSE(manager_->isAnimating(*view_));
    EXPECT_EQ(running(), 0U);
  }
  manager_->show(view_, animation({10, 10}, 0));
  (void)play(0, 0.10001, 1001);
  EXPECT_EQ(shown(), 1);
  EXPECT_TRUE(manager_->isAnimating(*view_));
}

TEST_F(GifManagerTest, WhatCantBePlayedKeepsItsPicture) {
  for (const auto& delays : {std::vector<int>{}, std::vector<int>{5}}) {
    manager_->show(view_, animation(delays, 0));
    (void)play(0, 1, 3);
    EXPECT_EQ(shown(), static_cast<int>(delays.size()));
    EXPECT_FALSE(manager_->isAnimating(*view_));
  }
  const auto noGif = std::make_shared<ui::Image>(1, 1, std::vector<std::uint8_t>(4, 9),
                                                 std::make_shared<const std::string>("no GIF"));
  manager_->show(view_, noGif);
  screen_->refresh(9);
  EXPECT_EQ(view_->image.get(), noGif);
  EXPECT_EQ(running(), 0U);
}

TEST_F(GifManagerTest, OneLinkServesAllViewsAndPausesWhenNonePlays) {
  const auto other = std::make_shared<ui::ImageView>();
  EXPECT_EQ(running(), 0U);
  manager_->show(view_, std::make_shared<ui::Image>(1, 1, std::vector<std::uint8_t>(4)));
  EXPECT_EQ(running(), 0U) << "a still picture needs none";
  manager_->show(view_, animation({10, 10}, 0));
  screen_->refresh(0);
  manager_->show(other, animation({10, 10, 10}, 0));
  EXPECT_EQ(running(), 1U);
  (void)play(0, 0.1001, 3);
  EXPECT_EQ(shown(), 1);
  EXPECT_EQ(shown(*other), 3);
  manager_->stop(*other);
  EXPECT_EQ(running(), 1U);
  manager_->remove(*view_);
  EXPECT_EQ(running(), 0U);
  EXPECT_FALSE(manager_->isAnimating(*other));
  EXPECT_EQ(shown(), 1) << "the frame stays";
  manager_->show(view_, animation({10, 10}, 0));
  EXPECT_EQ(running(), 1U);
  manager_->show(view_, nullptr);
  EXPECT_EQ(running(), 0U);
  EXPECT_FALSE(view_->image.get());
}

TEST_F(GifManagerTest, ViewsAreHeldWeaklyAndMayOutliveTheManager) {
  manager_->show(view_, animation({10, 10}, 0));
  screen_->refresh(0);
  const std::weak_ptr<const ui::Image> frame = view_->image.get();
  view_.reset();
  EXPECT_TRUE(frame.lock()) << "kept for the animation";
  screen_->refresh(0.05);
  EXPECT_FALSE(frame.lock());
  EXPECT_EQ(running(), 0U);
  view_ = std::make_shared<ui::ImageView>();
  manager_->show(view_, animation({10, 10}, 0));
  manager_.reset();
  EXPECT_EQ(running(), 0U);
  screen_->refresh(1);
}

TEST_F(GifManagerTest, TheSamePictureAgainGoesOnWhereItIs) {
  const auto image = animation({10, 10, 10}, std::nullopt);
  manager_->show(view_, image);
  EXPECT_EQ(play(0, 0.1001, 2), (std::vector<int>{1, 2}));
  manager_->show(view_, image);
  manager_->stop(*view_);
  EXPECT_EQ(play(0.25, 1, 3), (std::vector<int>{2, 2, 2}));
  manager_->show(view_, image);
  EXPECT_EQ(play(9, 0.09, 3), (std::vector<int>{2, 2, 3})) << "its time stood still";
  (void)play(10, 1, 3);
  manager_->show(view_, image);
  EXPECT_FALSE(manager_->isAnimating(*view_)) << "it is over";
  manager_->remove(*view_);
  manager_->show(view_, image);
  EXPECT_EQ(play(20, 0.1001, 2), (std::vector<int>{1, 2}));
}

TEST_F(GifManagerTest, MissedRefreshesAreCaughtUpWithBoundedWork) {
  manager_->show(view_, animation(std::vector<int>(200, 2), 0));
  screen_->refresh(0);
  screen_->refresh(0.0601);
  EXPECT_EQ(shown(), 4) << "60 ms are three frames";
  decoder_->read = 0;
  screen_->refresh(3000);
  EXPECT_LE(decoder_->read, 4);
  const int after = shown();
  screen_->refresh(3000.019);
  EXPECT_EQ(shown(), after) << "and time goes on from there";
  screen_->refresh(3000.021);
  EXPECT_EQ(shown(), after + 1);
}

TEST_F(GifManagerTest, AViewMayChangeWhatIsShownWhileItIsTold) {
  struct Observer final : ui::ViewObserver {
    void propertiesChanged(ui::View&) override {
      if (std::exchange(armed, false)) manager->reset();
    }
    void structureChanged(ui::View&) override {}
    void layoutNeeded(ui::View&) override {}
    std::unique_ptr<GifManager>* manager = nullptr;
    bool armed = true;
  };
  const auto observer = std::make_shared<Observer>();
  observer->manager = &manager_;
  manager_->show(view_, animation({10, 10}, 0));
  view_->setObserver(observer);
  screen_->refresh(0);
  EXPECT_FALSE(manager_);
  EXPECT_EQ(running(), 0U);
}

class GifBudgetTest : public GifManagerTest {
 protected:
  /// The most bytes that frames took at any refresh: all those that ever were in the view and still live.
  std::size_t playWithin(std::size_t budget, std::size_t frames, unsigned side) {
    manager_ = std::make_unique<GifManager>(screen_, decoder_, budget);
    manager_->show(view_, animation(std::vector<int>(frames, 10), 0, side));
    decoder_->read = 0;
    std::vector<std::weak_ptr<const ui::Image>> seen;
    std::size_t most = 0;
    for (std::size_t i = 0; i < frames * 3; ++i) {
      screen_->refresh(static_cast<double>(i) * 0.1001);
      EXPECT_EQ(shown(), static_cast<int>(i % frames) + 1);
      seen.push_back(view_->image.get());
      std::set<std::shared_ptr<const ui::Image>> alive;
      for (const auto& image : seen) alive.insert(image.lock());
      std::size_t bytes = 0;
      for (const auto& image : alive) bytes += image ? image->pixels().size() : 0;
      most = std::max(most, bytes);
    }
    return most;
  }
};

TEST_F(GifBudgetTest, FramesThatAllFitAreDecodedOnce) {
  EXPECT_EQ(playWithin(GifManager::defaultFrameBudget, 20, 100), 20U * 40'000);
  EXPECT_EQ(decoder_->read, 20);
}

TEST_F(GifBudgetTest, FramesThatDontFitAreDecodedAgain) {
  const std::size_t budget = 500'000;
  EXPECT_LE(playWithin(budget, 20, 100), budget);
  EXPECT_EQ(decoder_->read, 60);
  EXPECT_EQ(view_->image.get()->width(), 100);
}

TEST_F(GifBudgetTest, WhatIsTooLargeForTheBudgetIsShownInFewerPixels) {
  const std::size_t budget = 500'000;
  EXPECT_LE(playWithin(budget, 3, 300), budget);
  EXPECT_EQ(view_->image.get()->width(), 172);
  manager_->show(view_, animation({10, 10}, 0, 570), GifManager::defaultFrameBudget);
  screen_->refresh(5);
  EXPECT_EQ(view_->image.get()->width(), 563);
  for (const auto& [side, room] : {std::pair{400U, 500'000U}, {1000U, 500'000U}}) {
    manager_->show(view_, animation({10, 10}, 0, side), room);
    screen_->refresh(1);
    EXPECT_FALSE(manager_->isAnimating(*view_)) << "less than half is no picture any more";
  }
  manager_->show(view_, animation({10, 10}, 0, 1000), GifManager::applicationFrameBudget);
  screen_->refresh(2);
  EXPECT_EQ(view_->image.get()->width(), 1000);
}

TEST(GifManagerOfCoreTest, IsOneForEachCore) {
  MemoryPlatform memory;
  CoreContext context(memory.platform());
  const auto manager = GifManager::of(context);
  EXPECT_TRUE(manager);
  EXPECT_EQ(GifManager::of(context), manager);
}

}  // namespace
}  // namespace VorselKelp::gif
