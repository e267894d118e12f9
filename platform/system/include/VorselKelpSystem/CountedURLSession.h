#pragma once

#include <functional>
#include <memory>
#include <mutex>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/MainQueue.h"
#include "VorselKelp/platform/URLSession.h"

namespace VorselKelp::system {

/// A URL session that knows how many of its requests are under way, and can be closed before the process
/// ends.
class VORSELKELP_API CountedURLSession final : public platform::URLSession {
 public:
  /// Hears of each request before it is sent, on the sender's thread; what it returns hears of the answer, on
  /// the answer's.
  using Answered = std::function<void(const platform::URLResult&)>;
  using Sending = std::function<Answered(const platform::URLRequest&)>;

  /// `changed` runs on any thread whenever a request has ended, its completion included.
  CountedURLSession(std::shared_ptr<platform::URLSession> session,
                    std::shared_ptr<platform::MainQueue> mainQueue, Sending sending,
                    std::function<void()> changed);

  void send(platform::URLRequest request, Completion completion) override;

  [[nodiscard]] bool idle() const;

  /// Cancels what is under way. Requests sent from now on are answered as cancelled, on the main queue.
  void close();

 private:
  struct Count;
  std::shared_ptr<Count> count_;
  std::shared_ptr<platform::MainQueue> mainQueue_;
  const Sending sending_;
  std::mutex mutex_;
  std::shared_ptr<platform::URLSession> session_;
};

}  // namespace VorselKelp::system
