#pragma once

#include <chrono>
#include <string>

namespace phone {

/// Tells a person at a terminal that something takes its time: a line on standard error after two seconds,
/// counted on every second and wiped at the end. Silent when standard error is no terminal.
class Progress {
 public:
  /// `quiet`: silent in any case.
  explicit Progress(std::string what, bool quiet = false);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void tick();

 private:
  const std::string what_;
  const bool visible_;
  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  long shown_ = 1;
};

}  // namespace phone
