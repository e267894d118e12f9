#pragma once

#include "VorselKelp/Export.h"

namespace VorselKelp::posix {

/// An open file of the system's, closed with the object. A negative number is none.
class VORSELKELP_API Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() { close(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  [[nodiscard]] int number() const { return number_; }
  /// Some file systems tell that the disk is full only here.
  bool close();

 private:
  int number_;
};

}  // namespace VorselKelp::posix
