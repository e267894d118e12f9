#include "VorselKelpSystem/Input.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace VorselKelp::system {
namespace {

constexpr std::size_t inputLimit = std::size_t{64} << 20;

Result<std::string> readAll(int descriptor, const std::string& name) {
  std::string bytes;
  std::size_t size = 0;
  while (true) {
    bytes.resize(size + std::size_t{16} * 1024);
    const auto got = ::read(descriptor, bytes.data() + size, bytes.size() - size);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return Error{"Cannot read " + name + ": " + std::strerror(errno), errno};
    if (got == 0) break;
    size += static_cast<std::size_t>(got);
    if (size > inputLimit) {
      return Error{"Cannot read " + name + ": it is larger than 64 MiB; no server sends such a payload"};
    }
  }
  bytes.resize(size);
  return bytes;
}

}  // namespace

Result<std::string> readInput(const std::string& path) {
  const int descriptor = path.empty() ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) return Error{"Cannot read " + path + ": " + std::strerror(errno), errno};
  auto bytes = readAll(descriptor, path.empty() ? "the payload" : path);
  if (!path.empty()) ::close(descriptor);
  return bytes;
}

}  // namespace VorselKelp::system
