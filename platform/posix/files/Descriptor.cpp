#include "VorselKelpPosix/Descriptor.h"

#include <unistd.h>

#include <utility>

namespace VorselKelp::posix {

bool Descriptor::close() {
  const int number = std::exchange(number_, -1);
  return number < 0 || ::close(number) == 0;
}

}  // namespace VorselKelp::posix
