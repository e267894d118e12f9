#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <variant>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/UserDefaults.h"

namespace VorselKelp::testing_platform {

/// A user-defaults domain in memory. Processes that share it hold the same object. Thread-safe; a transaction
/// of one thread keeps all others out until it ends.
class VORSELKELP_API MemoryDefaultsDomain final : public platform::DefaultsDomain {
 public:
  std::optional<platform::DefaultsValue> object(std::string_view key) override;
  void setObject(std::string_view key, platform::DefaultsValue value) override;
  void removeObject(std::string_view key) override;
  std::optional<platform::DefaultsValue> mapEntry(std::string_view key, platform::EntryPath path,
                                                  platform::MapKind kind) override;
  void setMapEntry(std::string_view key, platform::EntryPath path, platform::MapKind kind,
                   platform::DefaultsValue value) override;
  void removeMapEntry(std::string_view key, platform::EntryPath path, platform::MapKind kind) override;
  bool transact(platform::FunctionRef<void()> work) override;
  void synchronize() override;

  /// Drops every write from now on, as a store does that is read-only or on a full disk.
  void dropWrites(bool drop);
  /// How often synchronize() was called.
  [[nodiscard]] std::size_t synchronizations() const;
  /// Everything that is stored, by key.
  [[nodiscard]] platform::DefaultsValue::Map contents() const;

 private:
  // The entries beside a count of each entry type, so that "is this map of that kind" needs no walk over it.
  struct CountedMap {
    platform::DefaultsValue::Map entries;
    std::array<std::size_t, 5> counts{};
  };
  using Stored = std::variant<platform::DefaultsValue, CountedMap>;

  static std::size_t typeOf(const platform::DefaultsValue& value);
  static CountedMap counted(platform::DefaultsValue::Map entries);
  static platform::DefaultsValue plain(const Stored& stored);
  static void put(CountedMap& map, std::string_view entry, platform::DefaultsValue value);
  CountedMap* mapOfKind(std::string_view key, platform::MapKind kind);

  mutable std::recursive_mutex mutex_;
  std::map<std::string, Stored, std::less<>> values_;
  std::size_t synchronizations_ = 0;
  bool dropWrites_ = false;
};

/// The group stores of one device: which application groups it knows and what each holds. Thread-safe.
class VORSELKELP_API MemoryGroupStores {
 public:
  void add(std::string_view group);
  /// The group's store, by any process; null for a group that the device does not know.
  [[nodiscard]] std::shared_ptr<MemoryDefaultsDomain> find(std::string_view group) const;
  /// From now on suite(group) gives null in every process, as when the store can't be opened. The empty name
  /// refuses the domain of those who have no group.
  void refuse(std::string_view group);
  [[nodiscard]] bool refuses(std::string_view group) const;

 private:
  mutable std::mutex mutex_;
  std::map<std::string, std::shared_ptr<MemoryDefaultsDomain>, std::less<>> stores_;
  std::set<std::string, std::less<>> refused_;
};

/// One process's view: its own standard domain, and the device's groups.
class VORSELKELP_API MemoryUserDefaults final : public platform::UserDefaults {
 public:
  MemoryUserDefaults(std::shared_ptr<MemoryDefaultsDomain> standard,
                     std::shared_ptr<MemoryGroupStores> groups);

  std::shared_ptr<platform::DefaultsDomain> standard() override { return standard_; }
  std::shared_ptr<platform::DefaultsDomain> suite(std::string_view name) override;

 private:
  std::shared_ptr<MemoryDefaultsDomain> standard_;
  std::shared_ptr<MemoryGroupStores> groups_;
};

}  // namespace VorselKelp::testing_platform
