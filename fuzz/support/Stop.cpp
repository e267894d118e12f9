#include "support/Stop.h"

#include "base/FatalError.h"

namespace VorselKelp {

// Takes the place of the library's own, which the linker then leaves in the archive. A stop that is meant
// must not end the fuzzer, and one that is not must be told from it.
void fatalError(std::string_view message) {
  throw fuzz::Stop{std::string(message)};
}

}  // namespace VorselKelp
