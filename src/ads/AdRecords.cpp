#include "ads/AdRecords.h"

#include "base/FatalError.h"

namespace VorselKelp {

std::optional<std::string> AdexObject::getImageUrl() const {
  if (!items) return std::nullopt;
  if (items->empty()) fatalError("getImageUrl: the ad feed answered with an empty list of items");
  const Md* md = creative();
  return md ? md->img : std::nullopt;
}

}  // namespace VorselKelp
