#pragma once

#include <memory>
#include <utility>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/MainQueue.h"
#include "VorselKelp/platform/UniqueFunction.h"
#include "VorselKelpPosix/SerialQueue.h"
#include "VorselKelpSystem/NotificationStore.h"

namespace VorselKelp::system {

/// A thread on which a process uses its notification store, so that no other of its threads waits for a disk
/// or for what another process keeps locked. It starts with the first piece of work. Any thread.
class VORSELKELP_API StoreWorker {
 public:
  using Work = platform::UniqueFunction<void(NotificationStore&)>;

  explicit StoreWorker(std::shared_ptr<NotificationStore> store) : store_(std::move(store)) {}
  ~StoreWorker() { end(); }
  StoreWorker(const StoreWorker&) = delete;
  StoreWorker& operator=(const StoreWorker&) = delete;

  /// One piece after the other, as they were asked for; after the end at once, on the caller's thread.
  void post(Work work) {
    queue_.post([store = store_, work = std::move(work)]() mutable { work(*store); });
  }

  /// What `read` answers goes to `use`, on the main thread.
  template <class Read, class Use>
  void read(const std::shared_ptr<platform::MainQueue>& mainQueue, Read read, Use use) {
    post([mainQueue, read = std::move(read), use = std::move(use)](NotificationStore& store) mutable {
      mainQueue->async([use = std::move(use), answer = read(store)]() mutable { use(std::move(answer)); });
    });
  }

  /// Whether nothing is left to be done.
  [[nodiscard]] bool idle() const { return queue_.idle(); }

  /// Returns when everything is done. The store waits for no other process any more: what is locked now
  /// fails, with the line that says so.
  void end() {
    store_->stopWaiting();
    queue_.close();
  }

 private:
  const std::shared_ptr<NotificationStore> store_;
  posix::SerialQueue queue_;
};

}  // namespace VorselKelp::system
