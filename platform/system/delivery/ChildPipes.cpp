#include "delivery/ChildPipes.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>

namespace VorselKelp::system {
namespace {

/// The numbers that the child gets are kept free, so that none of its descriptors is copied onto itself.
PipeEnd raised(int number) {
  PipeEnd original(number);
  return PipeEnd(::fcntl(number, F_DUPFD_CLOEXEC, 10));
}

}  // namespace

void PipeEnd::close() {
  if (number_ >= 0) ::close(std::exchange(number_, -1));
}

Pipe makePipe() {
  std::array<int, 2> ends{-1, -1};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return {PipeEnd(), PipeEnd()};
  return {raised(ends[0]), raised(ends[1])};
}

PipeEnd makeInput(std::string_view rest) {
  PipeEnd file(::memfd_create("input", MFD_CLOEXEC));
  while (!rest.empty()) {
    const auto written = ::write(file.number(), rest.data(), rest.size());
    if (written <= 0) return PipeEnd();
    rest.remove_prefix(static_cast<std::size_t>(written));
  }
  ::lseek(file.number(), 0, SEEK_SET);
  return PipeEnd(::fcntl(file.number(), F_DUPFD_CLOEXEC, 10));
}

}  // namespace VorselKelp::system
