#pragma once

#include <utility>

namespace VorselKelp::ui {

/// What a property tells its owner, so that the one who shows the owner can show it anew.
class PropertyOwner {
 public:
  virtual void propertyChanged() = 0;

 protected:
  ~PropertyOwner() = default;
};

/// A value of a view. Assigning a value that differs tells the owner; assigning an equal one does nothing, so
/// that a layout pass may set everything again without causing another.
template <class T>
class Property {
 public:
  Property(PropertyOwner& owner, T value) : owner_(owner), value_(std::move(value)) {}
  Property(const Property&) = delete;
  Property& operator=(const Property&) = delete;
  ~Property() = default;

  Property& operator=(T value) {
    if (value_ == value) return *this;
    value_ = std::move(value);
    owner_.propertyChanged();
    return *this;
  }

  [[nodiscard]] const T& get() const { return value_; }
  operator const T&() const { return value_; }
  const T* operator->() const { return &value_; }

 private:
  PropertyOwner& owner_;
  T value_;
};

}  // namespace VorselKelp::ui
