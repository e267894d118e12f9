#include <utility>

#include "FaultyServices.h"

namespace VorselKelp::testing_platform {
namespace {

using platform::NotificationCategory;
using platform::NotificationSettings;
using platform::UniqueFunction;
using Authorization = UniqueFunction<void(bool, std::optional<Error>)>;

class FaultyCenter final : public platform::NotificationCenter {
 public:
  FaultyCenter(std::shared_ptr<platform::NotificationCenter> inner, Plan plan)
      : inner_(std::move(inner)), plan_(std::move(plan)) {}

  void requestAuthorization(unsigned options, Authorization answer) override {
    const auto fault = plan_->next(FaultPoint::permission);
    if (refused(fault)) return answer(false, plan_->error());
    auto shared =
        hold(fault, std::move(answer), [error = plan_->error()](auto& late) { late(false, error); });
    if (!shared) return;
    inner_->requestAuthorization(options,
                                 [plan = plan_, fault, shared](bool granted, std::optional<Error> error) {
                                   give(plan, fault, [shared, granted, error] { (*shared)(granted, error); });
                                 });
  }

  void getNotificationSettings(UniqueFunction<void(NotificationSettings)> answer) override {
    const auto fault = plan_->next(FaultPoint::permission);
    if (refused(fault)) return answer({});
    auto shared = hold(fault, std::move(answer), [](auto& late) { late({}); });
    if (!shared) return;
    inner_->getNotificationSettings([plan = plan_, fault, shared](NotificationSettings settings) {
      give(plan, fault, [shared, settings] { (*shared)(settings); });
    });
  }

  void getNotificationCategories(UniqueFunction<void(std::vector<NotificationCategory>)> answer) override {
    const auto fault = plan_->next(FaultPoint::categories);
    if (refused(fault)) return answer({});
    auto shared = hold(fault, std::move(answer), [](auto& late) { late({}); });
    if (!shared) return;
    inner_->getNotificationCategories([plan = plan_, fault, shared](std::vector<NotificationCategory> found) {
      give(plan, fault, [shared, found = std::move(found)] { (*shared)(found); });
    });
  }

  void setNotificationCategories(std::vector<NotificationCategory> categories) override {
    if (heard()) inner_->setNotificationCategories(std::move(categories));
  }
  void add(platform::NotificationRequest request) override {
    if (heard()) inner_->add(std::move(request));
  }
  void removePendingNotificationRequests(const std::vector<std::string>& identifiers) override {
    if (heard()) inner_->removePendingNotificationRequests(identifiers);
  }
  void removeDeliveredNotifications(const std::vector<std::string>& identifiers) override {
    if (heard()) inner_->removeDeliveredNotifications(identifiers);
  }

 private:
  static bool refused(std::optional<Fault> fault) {
    return fault == Fault::refusal || fault == Fault::errorAnswer;
  }

  /// Null when the question is not even asked; `refuse` then answers it at the end.
  template <class Answer, class Refuse>
  std::shared_ptr<Answer> hold(std::optional<Fault> fault, Answer answer, Refuse refuse) {
    if (fault == Fault::stop) return nullptr;
    auto shared = std::make_shared<Answer>(std::move(answer));
    if (fault != Fault::noAnswer) return shared;
    plan_->holdUnanswered([plan = plan_, shared = std::move(shared), refuse] {
      if (!plan->stopped()) refuse(*shared);
    });
    return nullptr;
  }

  static void give(const Plan& plan, std::optional<Fault> fault, std::function<void()> answer) {
    if (fault == Fault::lateAnswer) {
      plan->holdAnswer([plan, answer = std::move(answer)] { give(plan, std::nullopt, answer); });
    } else if (!plan->stopped()) {
      answer();
    }
  }

  bool heard() { return !plan_->next(FaultPoint::notification); }

  const std::shared_ptr<platform::NotificationCenter> inner_;
  const Plan plan_;
};

}  // namespace

std::shared_ptr<platform::NotificationCenter> faultyCenter(
    std::shared_ptr<platform::NotificationCenter> inner, Plan plan) {
  return std::make_shared<FaultyCenter>(std::move(inner), std::move(plan));
}

}  // namespace VorselKelp::testing_platform
