#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "VorselKelpTesting/MemoryPlatform.h"
#include "core/CoreContext.h"
#include "core/CoreScope.h"

namespace VorselKelp {

/// A core's context on a device of its own, which knows one group; this thread's core while it lives.
struct TestCore {
  static constexpr const char* group = "group.example";

  TestCore() { app.device->addGroup(group); }

  [[nodiscard]] std::shared_ptr<testing_platform::MemoryDefaultsDomain> groupStore() const {
    return app.device->groupStores->find(group);
  }
  template <class T>
  [[nodiscard]] std::optional<T> stored(const char* key) const {
    const auto value = app.standardDomain->object(key);
    const T* typed = value ? value->as<T>() : nullptr;
    return typed ? std::optional<T>(*typed) : std::nullopt;
  }
  [[nodiscard]] std::optional<std::string> text(const char* key) const { return stored<std::string>(key); }
  [[nodiscard]] std::optional<std::int64_t> integer(const char* key) const {
    return stored<std::int64_t>(key);
  }

  testing_platform::MemoryPlatform app;
  std::shared_ptr<CoreContext> context = std::make_shared<CoreContext>(app.platform());
  const CoreScope scope{context};
};

}  // namespace VorselKelp
