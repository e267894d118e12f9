#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "VorselKelp/platform/MainQueue.h"
#include "gateway/Notification.h"

namespace gateway {

/// Devices that live in this process, all with one application. A notification is answered as soon as its
/// device is known, or that too many wait to be received; one that expires while it waits is dropped.
class MemoryDevices final : public NextHop {
 public:
  /// A notification for device number `device`. On the queue, in order.
  using Receive = std::function<void(std::size_t device, Notification notification)>;

  /// `tokens`: 32 bytes each, one a device. `topic`: the application's identifier; empty: any. The queue must
  /// have run or dropped its work when what `receive` knows goes.
  MemoryDevices(const std::vector<std::string>& tokens, std::string topic,
                std::shared_ptr<VorselKelp::platform::MainQueue> queue, Receive receive);

  [[nodiscard]] bool takes(std::string_view device) const override;
  void deliver(Notification notification, Answered answered) override;

 private:
  std::unordered_map<std::string, std::size_t> numbers_;  ///< by token
  const std::string topic_;
  const std::shared_ptr<VorselKelp::platform::MainQueue> queue_;
  /// What the waiting notifications need, which may outlive this object.
  struct Waiting {
    Receive receive;
    std::atomic<std::size_t> count = 0;
  };
  const std::shared_ptr<Waiting> waiting_;
};

}  // namespace gateway
