#include "VorselKelpSystem/CountedURLSession.h"

#include <atomic>

namespace VorselKelp::system {

/// Outlives the session for the sake of completions that are still running.
struct CountedURLSession::Count {
  std::atomic<int> requests = 0;
  std::function<void()> changed;
};

CountedURLSession::CountedURLSession(std::shared_ptr<platform::URLSession> session,
                                     std::shared_ptr<platform::MainQueue> mainQueue, Sending sending,
                                     std::function<void()> changed)
    : count_(std::make_shared<Count>()),
      mainQueue_(std::move(mainQueue)),
      sending_(std::move(sending)),
      session_(std::move(session)) {
  count_->changed = std::move(changed);
}

bool CountedURLSession::idle() const {
  return count_->requests == 0;
}

void CountedURLSession::send(platform::URLRequest request, Completion completion) {
  std::shared_ptr<platform::URLSession> session;
  {
    const std::lock_guard lock(mutex_);
    session = session_;
  }
  ++count_->requests;
  auto counted = [count = count_, answered = sending_(request),
                  completion = std::move(completion)](platform::URLResult result) mutable {
    answered(result);
    completion(std::move(result));
    // What the completion holds must be gone too before the process may count as idle.
    completion = nullptr;
    --count->requests;
    count->changed();
  };
  if (session != nullptr) {
    session->send(std::move(request), std::move(counted));
    return;
  }
  mainQueue_->async([counted = std::move(counted)]() mutable {
    counted({std::nullopt, std::nullopt, Error{"cancelled", -999}});
  });
}

void CountedURLSession::close() {
  // Destroyed outside the lock: that answers what is under way, and the answers may send again.
  std::shared_ptr<platform::URLSession> session;
  const std::lock_guard lock(mutex_);
  session = std::move(session_);
}

}  // namespace VorselKelp::system
