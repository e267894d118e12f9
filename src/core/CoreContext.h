#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string_view>
#include <typeindex>

#include "VorselKelp/platform/Platform.h"
#include "core/CoreState.h"
#include "core/StorageManager.h"

namespace VorselKelp {

/// What the parts of one core share: its system, its memory and its store. Parts hold it by shared pointer,
/// so that an answer that comes late still finds it.
///
/// A configuration that the state keeps refers back to this context; the core breaks that circle when it
/// goes.
class CoreContext {
 public:
  explicit CoreContext(std::shared_ptr<platform::Platform> services);

  void print(std::string_view text) const { services->console->print(text); }

  /// The context of the process's installed core, or of this thread's CoreScope; stops the process, naming
  /// `caller`, when there is neither. Only the classes that an application constructs itself ask for it.
  static std::shared_ptr<CoreContext> current(std::string_view caller);
  /// The same, null when none is installed.
  static std::shared_ptr<CoreContext> installed();
  static void setCurrent(std::shared_ptr<CoreContext> context);

  /// What a folder above keeps for this core, one object of each type; `make` makes it at the first call and
  /// must not ask for another one. It goes with the context.
  template <class T>
  std::shared_ptr<T> companion(platform::FunctionRef<std::shared_ptr<T>()> make) {
    return std::static_pointer_cast<T>(
        companionOf(typeid(T), [&]() -> std::shared_ptr<void> { return make(); }));
  }

  const std::shared_ptr<platform::Platform> services;
  CoreState state;
  StorageManager storage;

 private:
  std::shared_ptr<void> companionOf(std::type_index type,
                                    platform::FunctionRef<std::shared_ptr<void>()> make);

  std::mutex companionsMutex_;
  std::map<std::type_index, std::shared_ptr<void>> companions_;
};

}  // namespace VorselKelp
