#include "gateway/provider/DevicePath.h"

#include <cstddef>

namespace gateway {
namespace {

constexpr std::string_view folder = "/3/device";

// Push services' addresses have 1,000 bytes at most, and stand in a token with their keys.
constexpr std::size_t longestDevice = 1400;  // bytes

int digit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

std::variant<std::string, Answer> deviceOf(std::string_view path) {
  if (!path.starts_with(folder)) return Answer{404, "BadPath"};
  path.remove_prefix(folder.size());
  if (path.empty() || path == "/") return Answer{400, "MissingDeviceToken"};
  if (path.front() != '/') return Answer{404, "BadPath"};
  path.remove_prefix(1);
  const Answer bad{400, "BadDeviceToken"};
  if (path.size() % 2 != 0 || path.size() > 2 * longestDevice) return bad;
  std::string bytes;
  bytes.reserve(path.size() / 2);
  for (std::size_t i = 0; i < path.size(); i += 2) {
    const int high = digit(path[i]);
    const int low = digit(path[i + 1]);
    if (high < 0 || low < 0) return bad;
    bytes += static_cast<char>(high * 16 + low);
  }
  return bytes;
}

}  // namespace gateway
