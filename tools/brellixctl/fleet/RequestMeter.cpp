#include "brellixctl/fleet/RequestMeter.h"

#include <optional>

namespace brellixctl {

using VorselKelp::platform::URLRequest;
using VorselKelp::platform::URLResult;
using Clock = std::chrono::steady_clock;

namespace {

URLResult cancelled() {
  return {std::nullopt, std::nullopt, VorselKelp::Error{"cancelled", -999}};
}

/// A device registers and reports again until it is told 201.
bool isWanted(const std::string& kind, int status) {
  return kind == "activity" || kind == "users" ? status == 201 : status < 400;
}

/// The same for all requests that failed alike: without the time that each of them took.
std::string reasonOf(const URLResult& result) {
  if (result.response) return "status " + std::to_string(result.response->statusCode);
  auto reason = result.error ? result.error->description : "no answer";
  const auto begin = reason.find(" after ");
  const auto end = reason.find(" ms", begin);
  if (begin != std::string::npos && end != std::string::npos) reason.erase(begin, end + 3 - begin);
  return reason;
}

}  // namespace

std::size_t RequestFigures::failed() const {
  std::size_t sum = 0;
  for (const auto& [reason, count] : failures) sum += count;
  return sum;
}

RequestMeter::RequestMeter(std::shared_ptr<URLSession> session, std::size_t connections, Classify classify,
                           std::function<void()> answered)
    : connections_(connections),
      classify_(std::move(classify)),
      answeredHook_(std::move(answered)),
      session_(std::move(session)) {}

void RequestMeter::send(URLRequest request, Completion completion) {
  {
    const std::lock_guard lock(mutex_);
    if (session_ && active_ == connections_) {
      waiting_.emplace_back(std::move(request), std::move(completion));
      return;
    }
    ++active_;
  }
  start({std::move(request), std::move(completion)});
}

/// `active_` counts it already.
void RequestMeter::start(Held held) {
  URLSession* session = nullptr;
  {
    const std::lock_guard lock(mutex_);
    session = session_.get();
    if (session) ++sending_;
  }
  if (!session) {
    held.second(cancelled());
    finish();
    return;
  }
  auto kind = classify_(held.first);
  session->send(
      std::move(held.first), [self = shared_from_this(), kind = std::move(kind), sent = Clock::now(),
                              completion = std::move(held.second)](URLResult result) mutable {
        self->note(kind, result, std::chrono::duration<float, std::milli>(Clock::now() - sent).count());
        completion(std::move(result));
        self->finish();
      });
  const std::lock_guard lock(mutex_);
  --sending_;
  sent_.notify_all();
}

void RequestMeter::note(const std::string& kind, const URLResult& result, float milliseconds) {
  const std::lock_guard lock(mutex_);
  auto& figures = figures_[kind];
  if (result.response && isWanted(kind, result.response->statusCode)) {
    figures.latencies.push_back(milliseconds);
    return;
  }
  ++figures.failures[reasonOf(result)];
}

/// Gives the place of an answered request to the next that waits.
void RequestMeter::finish() {
  std::optional<Held> next;
  {
    const std::lock_guard lock(mutex_);
    ++answered_;
    if (waiting_.empty()) {
      --active_;
    } else {
      next = std::move(waiting_.front());
      waiting_.pop_front();
    }
  }
  if (next) start(*std::move(next));
  answeredHook_();
}

/// The session ends on this thread, and so not before all its answers have been worked on.
void RequestMeter::close() {
  std::deque<Held> waiting;
  std::shared_ptr<URLSession> session;
  {
    std::unique_lock lock(mutex_);
    waiting = std::exchange(waiting_, {});
    session = std::exchange(session_, nullptr);
    sent_.wait(lock, [this] { return sending_ == 0; });
  }
  session = nullptr;
  for (auto& held : waiting) held.second(cancelled());
}

std::size_t RequestMeter::load() const {
  const std::lock_guard lock(mutex_);
  return active_ + waiting_.size();
}

std::size_t RequestMeter::answered() const {
  const std::lock_guard lock(mutex_);
  return answered_;
}

RequestMeter::Figures RequestMeter::take() {
  const std::lock_guard lock(mutex_);
  answered_ = 0;
  return std::exchange(figures_, {});
}

}  // namespace brellixctl
