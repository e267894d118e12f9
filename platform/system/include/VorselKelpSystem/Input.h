#pragma once

#include <string>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"

namespace VorselKelp::system {

/// Standard input, or the file `path` unless it is empty: at most 64 MiB.
VORSELKELP_API Result<std::string> readInput(const std::string& path);

}  // namespace VorselKelp::system
