#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace fuzz {

/// One input, taken apart from its front. What is taken beyond its end is zero or empty, so that every input
/// means something.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : rest_(reinterpret_cast<const char*>(data), size) {}

  [[nodiscard]] bool empty() const { return rest_.empty(); }

  std::uint8_t byte() {
    if (rest_.empty()) return 0;
    const auto taken = static_cast<std::uint8_t>(rest_.front());
    rest_.remove_prefix(1);
    return taken;
  }
  /// A choice that an editor can write: '0' is 0, and so on.
  unsigned choice() { return static_cast<unsigned>(byte() - '0') & 0xFFU; }
  bool flag() { return (byte() & 1U) != 0; }

  template <class T>
  T number() {
    T value{};
    const auto taken = upTo(sizeof value);
    if (!taken.empty()) std::memcpy(&value, taken.data(), taken.size());
    return value;
  }
  /// As many bytes as the next one says.
  std::string text() { return std::string(upTo(byte())); }
  /// Everything until the next NUL, which is taken off too.
  std::string untilNul() {
    const auto end = rest_.find('\0');
    std::string taken(rest_.substr(0, end));
    rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
    return taken;
  }
  std::string all() { return std::string(upTo(rest_.size())); }

 private:
  std::string_view upTo(std::size_t size) {
    const auto taken = rest_.substr(0, size);
    rest_.remove_prefix(taken.size());
    return taken;
  }

  std::string_view rest_;
};

}  // namespace fuzz
