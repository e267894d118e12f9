#include "core/PropertyList.h"

#include <utility>

#include "base/FatalError.h"

namespace VorselKelp {

std::string requiredApiKey(const CoreContext& context, std::string_view caller) {
  auto key = context.services->bundle->mainBundleText("VorselKellpApiKey");
  if (!key)
    fatalError(std::string(caller) +
               ": no API key was given and the main bundle has no text VorselKellpApiKey");
  return *std::move(key);
}

}  // namespace VorselKelp
