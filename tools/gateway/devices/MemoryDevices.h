#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "gateway/Notification.h"

namespace gateway {

/// Devices that live in this process, all with one application. A notification is answered as soon as its
/// device is known and it waits in the queue, from which whoever has the devices takes it. Any thread.
class MemoryDevices final : public NextHop {
 public:
  struct Arrived {
    std::size_t device;  ///< its number
    Notification notification;
    std::chrono::steady_clock::time_point time;  ///< when it came
  };

  /// `tokens`: 32 bytes each, one a device. `topic`: the application's identifier; empty: any. `wake` runs on
  /// the gateway's thread whenever something came; may be empty.
  MemoryDevices(const std::vector<std::string>& tokens, std::string topic, std::function<void()> wake = {});

  [[nodiscard]] bool takes(std::string_view device) const override;
  void deliver(Notification notification, Answered answered) override;

  /// The oldest one that waits. One that expired while it waited is dropped.
  std::optional<Arrived> next();
  /// How many were dropped.
  [[nodiscard]] std::size_t expired() const;

 private:
  bool queue(Arrived arrived);

  std::unordered_map<std::string, std::size_t> numbers_;  ///< by token
  const std::string topic_;
  const std::function<void()> wake_;
  mutable std::mutex mutex_;
  std::deque<Arrived> waiting_;
  std::size_t expired_ = 0;
};

}  // namespace gateway
