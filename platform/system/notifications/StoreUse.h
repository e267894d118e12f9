#pragma once

#include <memory>
#include <utility>

#include "VorselKelp/platform/MainQueue.h"
#include "VorselKelpSystem/StoreWorker.h"

namespace VorselKelp::system {

/// The store as a process uses it: on its worker where it has one, else on the caller's thread.
class StoreUse {
 public:
  StoreUse(std::shared_ptr<NotificationStore> store, std::shared_ptr<StoreWorker> worker)
      : store_(std::move(store)), worker_(std::move(worker)) {}

  /// Any thread.
  void run(StoreWorker::Work work) const {
    if (worker_) return worker_->post(std::move(work));
    work(*store_);
  }

  /// What `read` answers goes to `use`: on the main thread where there is a worker, else at once.
  template <class Read, class Use>
  void read(const std::shared_ptr<platform::MainQueue>& mainQueue, Read read, Use use) const {
    if (worker_) return worker_->read(mainQueue, std::move(read), std::move(use));
    use(read(*store_));
  }

 private:
  const std::shared_ptr<NotificationStore> store_;
  const std::shared_ptr<StoreWorker> worker_;
};

}  // namespace VorselKelp::system
