#pragma once

#include <cstdint>

namespace VorselKelp::system {

/// Shows the number on the application's icon; 0 shows none. Any thread.
class Badge {
 public:
  virtual ~Badge() = default;
  virtual void show(std::int64_t number) = 0;
};

}  // namespace VorselKelp::system
