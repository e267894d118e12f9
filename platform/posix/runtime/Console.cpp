#include <unistd.h>

#include <cerrno>
#include <mutex>

#include "VorselKelpPosix/DescriptorWriter.h"
#include "VorselKelpPosix/Services.h"

namespace VorselKelp::posix {
namespace {

class DescriptorConsole final : public platform::Console {
 public:
  explicit DescriptorConsole(int descriptor) : descriptor_(descriptor) {}

  void print(std::string_view text) override {
    std::string line(text);
    line += '\n';
    const std::lock_guard lock(mutex_);
    writeAll(descriptor_, line);
  }

 private:
  const int descriptor_;
  std::mutex mutex_;
};

}  // namespace

bool writeAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const auto written = ::write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

std::shared_ptr<platform::Console> makeConsole(int descriptor) {
  return std::make_shared<DescriptorConsole>(descriptor);
}

}  // namespace VorselKelp::posix
