#include "state/StateThread.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "VorselKelpPosix/LineSink.h"

namespace VorselKelp::agent {
namespace {

using Loop = posix::EventLoop;

/// Messages of one transaction: enough to share a wait for the disk, few enough to answer in time.
constexpr std::size_t together = 256;

}  // namespace

StateThread::StateThread(std::shared_ptr<platform::MainQueue> mainQueue)
    : mainQueue_(std::move(mainQueue)), thread_([this] {
        while (!loop_.run([this] { return over_; }, Loop::Clock::now() + posix::loopDuration(3600))) {
        }
      }) {}

StateThread::~StateThread() {
  loop_.async([this] { over_ = true; });
  thread_.join();
}

void StateThread::open(const std::string& folder, Opened opened) {
  loop_.async([this, folder, opened = std::move(opened)]() mutable {
    auto state = State::open(folder);
    mainQueue_->async([this, opened = std::move(opened), state = std::move(state)]() mutable {
      if (!state) return opened(state.error());
      state_ = *std::move(state);
      opened(Done{});
    });
  });
}

void StateThread::keep(Message message, double now, Kept kept) {
  {
    const std::lock_guard lock(mutex_);
    keeping_.push_back({std::move(message), now, std::move(kept)});
  }
  loop_.async([this] { writeAll(); });
}

void StateThread::drop(std::int64_t serial) {
  {
    const std::lock_guard lock(mutex_);
    dropping_.push_back(serial);
  }
  loop_.async([this] { writeAll(); });
}

void StateThread::writeAll() {
  std::vector<Keeping> batch;
  std::vector<std::int64_t> dropped;
  {
    const std::lock_guard lock(mutex_);
    const auto end = keeping_.begin() + static_cast<std::ptrdiff_t>(std::min(together, keeping_.size()));
    batch.assign(std::move_iterator(keeping_.begin()), std::move_iterator(end));
    keeping_.erase(keeping_.begin(), end);
    dropped.swap(dropping_);
  }
  if (!dropped.empty()) {
    if (const auto status = state_->drop(dropped); !status)
      posix::standardErrorLines()(status.error().description);
  }
  if (batch.empty()) return;
  std::vector<Message> messages;
  for (auto& each : batch) messages.push_back(std::move(each.message));
  auto serials = state_->keep(messages, batch.back().now);
  for (std::size_t i = 0; i < batch.size(); ++i) {
    auto serial = serials ? Result<std::optional<std::int64_t>>((*serials)[i])
                          : Result<std::optional<std::int64_t>>(serials.error());
    mainQueue_->async(
        [kept = std::move(batch[i].kept), serial = std::move(serial)]() mutable { kept(std::move(serial)); });
  }
}

}  // namespace VorselKelp::agent
