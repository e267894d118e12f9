#pragma once

#include <optional>

#include "VorselKelp/platform/URLSession.h"

namespace VorselKelp::posix {

/// Why a request can't be sent; absent when it can. Nothing that passes can smuggle a line into the request's
/// head.
[[nodiscard]] std::optional<Error> problemOf(const platform::URLRequest& request);

}  // namespace VorselKelp::posix
