#pragma once

#include <string>
#include <string_view>

namespace collection_server {

/// A small PNG picture: a sun over water, in colours that follow from `name`.
std::string drawPicture(std::string_view name);

}  // namespace collection_server
