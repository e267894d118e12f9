#pragma once

#include <unistd.h>

#include <utility>

namespace VorselKelp::linux_platform {

/// An open file of the system's, closed with the object. A negative number is none.
class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() { close(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  [[nodiscard]] int number() const { return number_; }
  /// Some file systems tell that the disk is full only here.
  bool close() {
    const int number = std::exchange(number_, -1);
    return number < 0 || ::close(number) == 0;
  }

 private:
  int number_;
};

}  // namespace VorselKelp::linux_platform
