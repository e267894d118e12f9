#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "VorselKelp/platform/MainQueue.h"
#include "VorselKelpPosix/EventLoop.h"
#include "state/State.h"

namespace VorselKelp::agent {

/// Where the agent waits for its lock and for the disk, so that the bus never waits with it. What is asked
/// for is done in order; messages that come while others are being written are written together.
///
/// Main thread; answers come there, as work of the main queue, also after the object has gone.
class StateThread {
 public:
  using Kept = platform::UniqueFunction<void(Result<std::optional<std::int64_t>> serial)>;
  using Opened = platform::UniqueFunction<void(Status)>;

  explicit StateThread(std::shared_ptr<platform::MainQueue> mainQueue);
  /// Does all that was asked for before, and closes the state.
  ~StateThread();
  StateThread(const StateThread&) = delete;
  StateThread& operator=(const StateThread&) = delete;

  /// Opens the state; before `opened` nothing else may be asked for.
  void open(const std::string& folder, Opened opened);
  /// The state, for what is rare and small.
  [[nodiscard]] State& state() { return *state_; }

  void keep(Message message, double now, Kept kept);
  void drop(std::int64_t serial);

 private:
  struct Keeping {
    Message message;
    double now;
    Kept kept;
  };

  void writeAll();

  const std::shared_ptr<platform::MainQueue> mainQueue_;
  std::unique_ptr<State> state_;
  std::mutex mutex_;
  std::vector<Keeping> keeping_;
  std::vector<std::int64_t> dropping_;
  bool over_ = false;  // the thread's alone
  posix::EventLoop loop_;
  std::thread thread_;
};

}  // namespace VorselKelp::agent
