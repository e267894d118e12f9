#include "state/StateThread.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "VorselKelpPosix/LineSink.h"

namespace VorselKelp::agent {
namespace {

/// Messages of one transaction: enough to share a wait for the disk, few enough to answer in time.
constexpr std::size_t together = 256;

}  // namespace

StateThread::~StateThread() {
  asking_ = nullptr;
  writeSoon();  // what could not be written before
  queue_.close();
}

void StateThread::open(const std::string& folder, Opened opened) {
  queue_.post([this, folder, opened = std::move(opened)]() mutable {
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
  writeSoon();
}

void StateThread::drop(std::int64_t serial) {
  {
    const std::lock_guard lock(mutex_);
    changes_.dropped.push_back(serial);
  }
  writeWithTheRest();
}

void StateThread::note(State::Shown shown) {
  {
    const std::lock_guard lock(mutex_);
    changes_.shown.push_back(std::move(shown));
  }
  writeWithTheRest();
}

/// A notification's number and the end of its message come in one turn: with one step for both, a kill can't
/// come between them.
void StateThread::writeWithTheRest() {
  if (asking_) return;
  asking_ = std::make_shared<StateThread*>(this);
  mainQueue_->async([weak = std::weak_ptr(asking_)] {
    const auto asking = weak.lock();
    if (!asking) return;
    (*asking)->asking_ = nullptr;
    (*asking)->writeSoon();
  });
}

/// Once for each thing to write; most find that an earlier one has written theirs.
void StateThread::writeSoon() {
  queue_.post([this] { writeAll(); });
}

void StateThread::writeAll() {
  std::vector<Keeping> batch;
  State::Changes changes;
  {
    const std::lock_guard lock(mutex_);
    const auto end = keeping_.begin() + static_cast<std::ptrdiff_t>(std::min(together, keeping_.size()));
    batch.assign(std::move_iterator(keeping_.begin()), std::move_iterator(end));
    keeping_.erase(keeping_.begin(), end);
    std::swap(changes, changes_);
  }
  if (!changes.dropped.empty() || !changes.shown.empty()) {
    if (const auto status = state_->apply(changes); !status) {
      posix::standardErrorLines()(status.error().description);
      putBack(std::move(changes));
    }
  }
  if (!batch.empty()) keepAll(std::move(batch));
}

/// They are written with what comes next, or else a message that was shown would be shown again.
void StateThread::putBack(State::Changes changes) {
  const std::lock_guard lock(mutex_);
  const auto prepend = [](auto& before, auto& behind) {
    before.insert(before.end(), std::move_iterator(behind.begin()), std::move_iterator(behind.end()));
    behind = std::move(before);
  };
  prepend(changes.dropped, changes_.dropped);
  prepend(changes.shown, changes_.shown);
}

void StateThread::keepAll(std::vector<Keeping> batch) {
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
