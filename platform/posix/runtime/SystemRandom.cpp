#include "VorselKelpPosix/SystemRandom.h"

#include <sys/random.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>

#include "VorselKelpPosix/Services.h"

namespace VorselKelp::posix {
namespace {

void fillRandom(void* target, std::size_t count) {
  auto* bytes = static_cast<char*>(target);
  while (count > 0) {
    const auto got = ::getrandom(bytes, count, 0);
    if (got < 0) {
      if (errno == EINTR) continue;
      std::abort();
    }
    bytes += got;
    count -= static_cast<std::size_t>(got);
  }
}

class SystemRandom final : public platform::Random {
 public:
  std::uint32_t below(std::uint32_t bound) override {
    // Values of the incomplete last stretch are thrown away, or the low ones would come more often.
    const std::uint64_t range = std::uint64_t{1} << 32;
    const std::uint64_t whole = range - range % bound;
    std::uint32_t value = 0;
    do {
      fillRandom(&value, sizeof value);
    } while (value >= whole);
    return value % bound;
  }
};

}  // namespace

std::string randomBytes(std::size_t count) {
  std::string bytes(count, '\0');
  fillRandom(bytes.data(), count);
  return bytes;
}

std::shared_ptr<platform::Random> makeRandom() {
  return std::make_shared<SystemRandom>();
}

}  // namespace VorselKelp::posix
