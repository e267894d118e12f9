#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "VorselKelp/platform/MainQueue.h"
#include "VorselKelpPosix/SerialQueue.h"
#include "state/State.h"

namespace VorselKelp::agent {

/// Where the agent waits for its lock and for the disk, so that the bus never waits with it. What is asked
/// for is done in order; what comes while something is being written is written together.
///
/// Main thread; answers come there, as work of the main queue, also after the object has gone.
class StateThread {
 public:
  using Kept = platform::UniqueFunction<void(Result<std::optional<std::int64_t>> serial)>;
  using Opened = platform::UniqueFunction<void(Status)>;

  explicit StateThread(std::shared_ptr<platform::MainQueue> mainQueue) : mainQueue_(std::move(mainQueue)) {}
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
  void note(State::Shown shown);

 private:
  struct Keeping {
    Message message;
    double now;
    Kept kept;
  };

  void writeWithTheRest();
  void writeSoon();
  void writeAll();
  void putBack(State::Changes changes);
  void keepAll(std::vector<Keeping> batch);

  const std::shared_ptr<platform::MainQueue> mainQueue_;
  std::unique_ptr<State> state_;
  std::mutex mutex_;
  std::vector<Keeping> keeping_;
  State::Changes changes_;
  /// Set while a task of the main queue is to have it all written; null: there is none.
  std::shared_ptr<StateThread*> asking_;
  posix::SerialQueue queue_;
};

}  // namespace VorselKelp::agent
