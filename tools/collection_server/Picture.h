#pragma once

#include <string_view>

namespace collection_server {

/// One of a few small PNG pictures, a sun over water under skies of different colours; a name always has the
/// same.
std::string_view pictureFor(std::string_view name);

}  // namespace collection_server
