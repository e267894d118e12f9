#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "VorselKelp/platform/URLSession.h"

namespace brellixctl {

/// What the requests of one kind came to.
struct RequestFigures {
  /// How often each transport error came, and each status that is none for this kind ("status 500"): from 400
  /// on, and for reports of activity and users all but 201.
  std::map<std::string, std::size_t> failures;
  std::vector<float> latencies;  ///< milliseconds from sending until this process came to the answer
  [[nodiscard]] std::size_t failed() const;
  [[nodiscard]] std::size_t count() const { return failed() + latencies.size(); }
};

/// The one session of a whole fleet: holds back what is more than `connections` at a time, as a real fleet's
/// network would not, but as one machine must, and measures each request. Thread-safe.
class RequestMeter final : public VorselKelp::platform::URLSession,
                           public std::enable_shared_from_this<RequestMeter> {
 public:
  using Figures = std::map<std::string, RequestFigures>;
  /// Names a request's kind. Any thread.
  using Classify = std::function<std::string(const VorselKelp::platform::URLRequest&)>;

  /// `answered` runs after each answer has been worked on, on the session's queue.
  RequestMeter(std::shared_ptr<URLSession> session, std::size_t connections, Classify classify,
               std::function<void()> answered);

  void send(VorselKelp::platform::URLRequest request, Completion completion) override;

  /// Answers what waits and what is under way as cancelled, before it returns. What is sent later is answered
  /// so inside send(). Not on the session's queue.
  void close();

  /// Requests that wait or are under way.
  [[nodiscard]] std::size_t load() const;
  /// Answered ones since the last take().
  [[nodiscard]] std::size_t answered() const;
  /// Hands the figures over and starts afresh.
  Figures take();

 private:
  using Held = std::pair<VorselKelp::platform::URLRequest, Completion>;
  void start(Held held);
  void note(const std::string& kind, const VorselKelp::platform::URLResult& result, float milliseconds);
  void finish();

  const std::size_t connections_;
  const Classify classify_;
  const std::function<void()> answeredHook_;
  mutable std::mutex mutex_;
  std::condition_variable sent_;
  std::shared_ptr<URLSession> session_;  ///< null once closed
  std::size_t sending_ = 0;              ///< threads that are inside the session's send()
  std::deque<Held> waiting_;
  std::size_t active_ = 0;
  std::size_t answered_ = 0;
  Figures figures_;
};

}  // namespace brellixctl
