#pragma once

#include <string>
#include <string_view>
#include <utility>

namespace VorselKelp::system {

/// One end of a pipe to a child, which changes hands.
class PipeEnd {
 public:
  explicit PipeEnd(int number = -1) : number_(number) {}
  PipeEnd(PipeEnd&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  PipeEnd& operator=(PipeEnd&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~PipeEnd() { close(); }
  void close();
  [[nodiscard]] int number() const { return number_; }

 private:
  int number_;
};

struct Pipe {
  PipeEnd read, write;
};

/// The ends are negative when there is none to be had. Low numbers are kept free for the child's own.
Pipe makePipe();
/// A file that a child reads `bytes` from; negative when there is none to be had.
PipeEnd makeInput(std::string_view bytes);

/// Collects bytes and gives them out line by line. A line that grows beyond all measure is left out.
class Lines {
 public:
  static constexpr std::size_t longest = std::size_t{64} << 20;

  template <class Take>
  void add(std::string_view bytes, Take&& take) {
    pending_ += bytes;
    std::size_t start = 0;
    for (auto end = pending_.find('\n', searched_); end != std::string::npos;
         end = pending_.find('\n', start)) {
      if (!std::exchange(skipping_, false)) take(pending_.substr(start, end - start));
      start = end + 1;
    }
    pending_.erase(0, start);
    if (skipping_ || pending_.size() > longest) {
      leftOut_ = skipping_ = true;
      pending_.clear();
    }
    searched_ = pending_.size();
  }
  [[nodiscard]] bool leftOut() const { return leftOut_; }
  [[nodiscard]] const std::string& rest() const { return pending_; }

 private:
  std::string pending_;
  std::size_t searched_ = 0;
  bool skipping_ = false;
  bool leftOut_ = false;
};

}  // namespace VorselKelp::system
