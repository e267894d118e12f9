#include "ads/AdRecords.h"

#include <atomic>

#include "base/FatalError.h"

namespace VorselKelp {

std::string newViewId() {
  static std::atomic<std::uint64_t> last = 0;
  return "vorsel-ad-" + std::to_string(++last);
}

std::optional<std::string> AdexObject::getImageUrl() const {
  if (!items) return std::nullopt;
  if (items->empty()) fatalError("getImageUrl: the ad feed answered with an empty list of items");
  const Md* md = creative();
  return md ? md->img : std::nullopt;
}

}  // namespace VorselKelp
