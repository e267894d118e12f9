#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <utility>

namespace gateway {

/// What all requests together hold, in bytes. Any thread.
class Budget {
 public:
  explicit Budget(std::size_t most) : most_(most) {}
  [[nodiscard]] bool take(std::size_t bytes) {
    if (held_.fetch_add(bytes) + bytes <= most_) return true;
    held_ -= bytes;
    return false;
  }
  void giveBack(std::size_t bytes) { held_ -= bytes; }

 private:
  const std::size_t most_;
  std::atomic<std::size_t> held_ = 0;
};

/// One request's part of it, given back when it goes.
class Load {
 public:
  explicit Load(std::shared_ptr<Budget> budget) : budget_(std::move(budget)) {}
  Load(Load&& other) noexcept : budget_(std::move(other.budget_)), bytes_(std::exchange(other.bytes_, 0)) {}
  Load& operator=(Load&&) = delete;
  ~Load() {
    if (budget_) budget_->giveBack(bytes_);
  }
  /// False when there is no room for more.
  [[nodiscard]] bool add(std::size_t bytes) {
    if (!budget_->take(bytes)) return false;
    bytes_ += bytes;
    return true;
  }

 private:
  std::shared_ptr<Budget> budget_;
  std::size_t bytes_ = 0;
};

}  // namespace gateway
