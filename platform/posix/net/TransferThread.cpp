#include "net/TransferThread.h"

#include <algorithm>
#include <utility>

#include "net/RequestCheck.h"
#include "support/BackgroundThread.h"

namespace VorselKelp::posix {
namespace {

/// By default libcurl keeps four times as many as there are transfers at the moment, and so closes most of
/// them whenever a burst of short ones is answered.
constexpr long mostConnections = 128;
constexpr int idleMilliseconds = 60'000;

Error cancelled() {
  return {"cancelled", -999};
}

platform::URLResult failed(Error error) {
  return {std::nullopt, std::nullopt, std::move(error)};
}

}  // namespace

TransferThread::TransferThread(URLSessionOptions options, SerialQueue& delegate)
    : options_(std::move(options)), delegate_(delegate) {}

void TransferThread::add(platform::URLRequest request, platform::URLSession::Completion completion) {
  const std::lock_guard lock(mutex_);
  if (stopping_) {
    refuse({std::move(request), std::move(completion)}, cancelled());
    return;
  }
  incoming_.push_back({std::move(request), std::move(completion)});
  if (!thread_.joinable()) thread_ = startBackgroundThread([this] { run(); });
  if (multi_) curl_->multiWakeUp(multi_);
  changed_.notify_one();
}

void TransferThread::stop() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
    if (multi_) curl_->multiWakeUp(multi_);
  }
  changed_.notify_one();
  if (thread_.joinable()) thread_.join();
}

void TransferThread::run() {
  const CurlLibrary curl(options_.libraryName);
  CURLM* multi = curl.error().empty() ? curl.multiInit() : nullptr;
  if (!multi) {
    refuseAll(curl.error().empty() ? "libcurl has no memory" : "libcurl can't be loaded: " + curl.error());
    return;
  }
  curl.multiSetOption(multi, CURLMOPT_MAXCONNECTS, mostConnections);
  if (options_.connectionsToServer != 0)
    curl.multiSetOption(multi, CURLMOPT_MAX_HOST_CONNECTIONS,
                        static_cast<long>(options_.connectionsToServer));
  {
    const std::lock_guard lock(mutex_);
    curl_ = &curl;
    multi_ = multi;
  }
  transfer(curl);
  {
    const std::lock_guard lock(mutex_);
    multi_ = nullptr;
  }
  while (!active_.empty()) {
    auto& transfer = *active_.begin()->second;
    curl.multiRemove(multi, transfer.handle());
    answer(transfer, failed(cancelled()));
    active_.erase(active_.begin());
  }
  for (auto& pending : std::exchange(waiting_, {})) refuse(std::move(pending), cancelled());
  curl.multiCleanup(multi);
}

void TransferThread::refuseAll(const std::string& reason) {
  std::unique_lock lock(mutex_);
  while (!stopping_ || !incoming_.empty()) {
    for (auto& pending : std::exchange(incoming_, {}))
      refuse(std::move(pending), stopping_ ? cancelled() : Error{reason});
    changed_.wait(lock, [this] { return stopping_ || !incoming_.empty(); });
  }
}

/// Answers are collected before anybody is found overdue: what came while the thread was held up still
/// counts.
void TransferThread::transfer(const CurlLibrary& curl) {
  while (takePending()) {
    startTransfers(curl);
    int running = 0;
    curl.multiPerform(multi_, &running);
    const auto before = active_.size();
    collectAnswers(curl);
    endOverdue(curl);
    // Also when some have ended: libcurl gives their connections to those that wait for one, and may then not
    // say that there is something to do at once.
    const bool more =
        active_.size() < before || (!waiting_.empty() && active_.size() < options_.requestsAtOnce);
    curl.multiPoll(multi_, nullptr, 0, more ? 0 : waitingTime(), nullptr);
  }
}

/// False when the thread has to stop.
bool TransferThread::takePending() {
  const std::lock_guard lock(mutex_);
  std::ranges::move(incoming_, std::back_inserter(waiting_));
  incoming_.clear();
  return !stopping_;
}

void TransferThread::startTransfers(const CurlLibrary& curl) {
  while (!waiting_.empty() && active_.size() < options_.requestsAtOnce) {
    Pending pending = std::move(waiting_.front());
    waiting_.pop_front();
    start(curl, std::move(pending));
  }
}

void TransferThread::start(const CurlLibrary& curl, Pending pending) {
  if (auto problem = problemOf(pending.request)) {
    refuse(std::move(pending), std::move(*problem));
    return;
  }
  const auto& certificates =
      options_.certificateFile.empty() ? curl.certificateFile : options_.certificateFile;
  auto transfer =
      std::make_unique<Transfer>(curl, options_, std::move(pending.request), std::move(pending.completion));
  if (!transfer->prepare(certificates) || curl.multiAdd(multi_, transfer->handle()) != CURLM_OK) {
    answer(*transfer, transfer->finished(CURLE_OUT_OF_MEMORY));
    return;
  }
  CURL* handle = transfer->handle();
  active_.emplace(handle, std::move(transfer));
}

void TransferThread::collectAnswers(const CurlLibrary& curl) {
  int left = 0;
  while (const CURLMsg* message = curl.multiMessage(multi_, &left)) {
    if (message->msg == CURLMSG_DONE) end(curl, message->easy_handle, message->data.result);
  }
}

void TransferThread::endOverdue(const CurlLibrary& curl) {
  const auto now = Transfer::Clock::now();
  for (auto next = active_.begin(); next != active_.end();) {
    const auto current = next++;
    if (current->second->deadline() <= now) end(curl, current->first, CURLE_OPERATION_TIMEDOUT);
  }
}

void TransferThread::end(const CurlLibrary& curl, CURL* handle, CURLcode code) {
  const auto found = active_.find(handle);
  if (found == active_.end()) return;
  const auto transfer = std::move(found->second);
  active_.erase(found);
  auto result = transfer->finished(code);
  curl.multiRemove(multi_, handle);
  answer(*transfer, std::move(result));
}

/// Milliseconds until the first deadline.
int TransferThread::waitingTime() const {
  if (active_.empty()) return idleMilliseconds;
  auto first = Transfer::Clock::time_point::max();
  for (const auto& [handle, transfer] : active_) first = std::min(first, transfer->deadline());
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(first - Transfer::Clock::now()).count();
  return static_cast<int>(std::clamp<std::int64_t>(left, 0, idleMilliseconds));
}

void TransferThread::answer(Transfer& transfer, platform::URLResult result) {
  answer(transfer.takeCompletion(), transfer.takeConsumer(), std::move(result));
}

void TransferThread::refuse(Pending pending, Error error) {
  answer(std::move(pending.completion), std::move(pending.request.bodyConsumer), failed(std::move(error)));
}

/// What the consumer holds is the completion's alone once that runs.
void TransferThread::answer(platform::URLSession::Completion completion, platform::BodyConsumer consumer,
                            platform::URLResult result) {
  delegate_.post([completion = std::move(completion), consumer = std::move(consumer),
                  result = std::move(result)]() mutable {
    consumer = nullptr;
    completion(std::move(result));
  });
}

}  // namespace VorselKelp::posix
