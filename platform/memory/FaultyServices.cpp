#include "FaultyServices.h"

#include <utility>

namespace VorselKelp::testing_platform {
namespace {

using platform::UniqueFunction;

class FaultyDecoder final : public platform::ImageDecoder {
 public:
  FaultyDecoder(std::shared_ptr<platform::ImageDecoder> inner, Plan plan)
      : inner_(std::move(inner)), plan_(std::move(plan)) {}

  Result<platform::ImageInfo> inspect(std::string_view bytes, std::int64_t pixelLimit) override {
    if (plan_->next(FaultPoint::picture)) return plan_->error();
    return inner_->inspect(bytes, pixelLimit);
  }
  Result<platform::ImageInfo> inspectPieces(platform::FunctionRef<std::string_view()> next,
                                            std::int64_t pixelLimit) override {
    if (plan_->next(FaultPoint::picture)) return plan_->error();
    return inner_->inspectPieces(next, pixelLimit);
  }
  Result<ui::ImagePtr> decode(std::string_view bytes, std::int64_t pixelLimit) override {
    if (plan_->next(FaultPoint::picture)) return plan_->error();
    return inner_->decode(bytes, pixelLimit);
  }
  Result<std::unique_ptr<platform::GifReader>> openGif(std::shared_ptr<const std::string> bytes,
                                                       std::int64_t pixelLimit) override {
    if (plan_->next(FaultPoint::picture)) return plan_->error();
    return inner_->openGif(std::move(bytes), pixelLimit);
  }

 private:
  const std::shared_ptr<platform::ImageDecoder> inner_;
  const Plan plan_;
};

class MutedApplication final : public platform::Application {
 public:
  MutedApplication(std::shared_ptr<platform::Application> inner, Plan plan)
      : inner_(std::move(inner)), plan_(std::move(plan)) {}

  void registerForRemoteNotifications() override {
    if (!plan_->stopped()) inner_->registerForRemoteNotifications();
  }
  void unregisterForRemoteNotifications() override {
    if (!plan_->stopped()) inner_->unregisterForRemoteNotifications();
  }
  void setBadge(std::int64_t value) override {
    if (!plan_->stopped()) inner_->setBadge(value);
  }
  void openURL(const std::string& url) override {
    if (!plan_->stopped()) inner_->openURL(url);
  }
  platform::BackgroundTask beginBackgroundTask(const std::string& name,
                                               UniqueFunction<void()> expired) override {
    return inner_->beginBackgroundTask(name, std::move(expired));
  }
  void endBackgroundTask(platform::BackgroundTask task) override { inner_->endBackgroundTask(task); }
  void addObserver(std::weak_ptr<platform::LifeCycleObserver> observer) override {
    inner_->addObserver(std::move(observer));
  }
  void addObserver(std::weak_ptr<platform::ScreenObserver> observer) override {
    inner_->addObserver(std::move(observer));
  }
  void removeObserver(const std::weak_ptr<platform::ScreenObserver>& observer) override {
    inner_->removeObserver(observer);
  }

 private:
  const std::shared_ptr<platform::Application> inner_;
  const Plan plan_;
};

class MutedQueue final : public platform::MainQueue {
 public:
  MutedQueue(std::shared_ptr<platform::MainQueue> inner, Plan plan)
      : inner_(std::move(inner)), plan_(std::move(plan)) {}

  void async(UniqueFunction<void()> work) override { inner_->async(living(std::move(work))); }
  void asyncAfter(double seconds, UniqueFunction<void()> work) override {
    inner_->asyncAfter(seconds, living(std::move(work)));
  }

 private:
  UniqueFunction<void()> living(UniqueFunction<void()> work) {
    return [plan = plan_, work = std::move(work)]() mutable {
      if (!plan->stopped()) work();
    };
  }

  const std::shared_ptr<platform::MainQueue> inner_;
  const Plan plan_;
};

class MutedConsole final : public platform::Console {
 public:
  MutedConsole(std::shared_ptr<platform::Console> inner, Plan plan)
      : inner_(std::move(inner)), plan_(std::move(plan)) {}
  void print(std::string_view text) override {
    if (!plan_->stopped()) inner_->print(text);
  }

 private:
  const std::shared_ptr<platform::Console> inner_;
  const Plan plan_;
};

class MutedBrowser final : public platform::InAppBrowser {
 public:
  MutedBrowser(std::shared_ptr<platform::InAppBrowser> inner, Plan plan)
      : inner_(std::move(inner)), plan_(std::move(plan)) {}
  void present(const std::string& url) override {
    if (!plan_->stopped()) inner_->present(url);
  }

 private:
  const std::shared_ptr<platform::InAppBrowser> inner_;
  const Plan plan_;
};

}  // namespace

std::shared_ptr<platform::ImageDecoder> faultyDecoder(std::shared_ptr<platform::ImageDecoder> inner,
                                                      Plan plan) {
  return std::make_shared<FaultyDecoder>(std::move(inner), std::move(plan));
}
std::shared_ptr<platform::Application> mutedApplication(std::shared_ptr<platform::Application> inner,
                                                        Plan plan) {
  return std::make_shared<MutedApplication>(std::move(inner), std::move(plan));
}
std::shared_ptr<platform::MainQueue> mutedQueue(std::shared_ptr<platform::MainQueue> inner, Plan plan) {
  return std::make_shared<MutedQueue>(std::move(inner), std::move(plan));
}
std::shared_ptr<platform::Console> mutedConsole(std::shared_ptr<platform::Console> inner, Plan plan) {
  return std::make_shared<MutedConsole>(std::move(inner), std::move(plan));
}
std::shared_ptr<platform::InAppBrowser> mutedBrowser(std::shared_ptr<platform::InAppBrowser> inner,
                                                     Plan plan) {
  return std::make_shared<MutedBrowser>(std::move(inner), std::move(plan));
}

}  // namespace VorselKelp::testing_platform
