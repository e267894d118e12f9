#pragma once

#include <cstdint>
#include <string>

namespace VorselKelp {

/// What every report carries of its session.
struct SessionValues {
  std::int64_t number = 0;
  std::string id;
  std::int64_t visitedCount = 0;
  std::string uniqueId;
};

}  // namespace VorselKelp
