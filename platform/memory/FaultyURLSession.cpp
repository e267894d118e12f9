#include <utility>

#include "FaultyServices.h"

namespace VorselKelp::testing_platform {
namespace {

using platform::URLRequest;
using platform::URLResult;

URLResult refused(const Error& error) {
  URLResult result;
  result.error = error;
  return result;
}

class FaultySession final : public platform::URLSession {
 public:
  FaultySession(std::shared_ptr<platform::URLSession> inner, Plan plan)
      : inner_(std::move(inner)), plan_(std::move(plan)) {}

  void send(URLRequest request, Completion completion) override {
    const auto fault = plan_->next(FaultPoint::request);
    auto shared = std::make_shared<Completion>(std::move(completion));
    if (fault == Fault::stop) return;
    if (fault == Fault::noAnswer) {
      plan_->holdUnanswered([plan = plan_, shared = std::move(shared)] {
        answer(plan, *shared, refused({"cancelled", -999}));
      });
      return;
    }
    // The server hears of it all the same; what it says is lost.
    if (fault == Fault::refusal || fault == Fault::errorAnswer) request.bodyConsumer = nullptr;
    if (request.bodyConsumer) {
      request.bodyConsumer = [plan = plan_,
                              consumer = std::move(request.bodyConsumer)](std::string_view piece) -> Status {
        if (plan->stopped()) return Done{};
        return consumer(piece);
      };
    }
    inner_->send(std::move(request), [plan = plan_, shared, fault](URLResult result) {
      if (fault == Fault::refusal) result = refused(plan->error());
      if (fault == Fault::errorAnswer && result.response) result = refusedByServer(std::move(result));
      if (fault != Fault::lateAnswer) return answer(plan, *shared, std::move(result));
      plan->holdAnswer([plan, shared, result = std::move(result)] { answer(plan, *shared, result); });
    });
  }

 private:
  static URLResult refusedByServer(URLResult result) {
    result.response->statusCode = 500;
    result.body = std::string();
    return result;
  }

  static void answer(const Plan& plan, Completion& completion, URLResult result) {
    if (!plan->stopped()) completion(std::move(result));
  }

  const std::shared_ptr<platform::URLSession> inner_;
  const Plan plan_;
};

}  // namespace

std::shared_ptr<platform::URLSession> faultySession(std::shared_ptr<platform::URLSession> inner, Plan plan) {
  return std::make_shared<FaultySession>(std::move(inner), std::move(plan));
}

}  // namespace VorselKelp::testing_platform
