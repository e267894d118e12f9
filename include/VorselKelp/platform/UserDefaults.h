#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "VorselKelp/platform/FunctionRef.h"

namespace VorselKelp::platform {

using TextList = std::vector<std::string>;

/// One stored value. A value keeps its type: an integer 1, a real 1.0 and a true are three different things.
/// A map may nest maps one level deep; a deeper one, or a text that is not UTF-8, need not be storable.
struct DefaultsValue {
  using Map = std::map<std::string, DefaultsValue, std::less<>>;
  using Storage = std::variant<bool, std::int64_t, double, std::string, TextList, Map>;

  Storage value;

  template <class T>
  [[nodiscard]] const T* as() const {
    return std::get_if<T>(&value);
  }
  friend bool operator==(const DefaultsValue&, const DefaultsValue&) = default;
};

/// What all entries of a map are. A map whose entries are not all of one kind is of none: it reads as absent
/// through the entry operations. A stored empty map is of every kind.
enum class MapKind { textMap, realMap, listMap, textMapMap };

/// Names one entry of a map: the entry's own key, and for MapKind::textMapMap the key inside the inner map.
struct EntryPath {
  std::string_view entry;
  std::string_view inner{};
};

/// One user-defaults domain: a typed key-value store that several processes may have open at once.
///
/// Threads: every operation may be called from any thread, blocks only for the store itself, and is atomic on
/// its own; transact() makes several atomic together. What one process has written, every other one reads
/// from the moment the write returns.
///
/// Errors: a read that fails yields absent and a write that fails is dropped. The domain reports the reason
/// once in a line on standard error; its callers go on without the value. A killed process leaves the store
/// whole.
///
/// An implementation stores maps so that adding, reading or removing one entry does not depend on how many
/// entries there are.
class DefaultsDomain {
 public:
  virtual ~DefaultsDomain() = default;

  virtual std::optional<DefaultsValue> object(std::string_view key) = 0;
  /// Replaces whatever is there, a map with all its entries included.
  virtual void setObject(std::string_view key, DefaultsValue value) = 0;
  /// Removing what is absent does nothing.
  virtual void removeObject(std::string_view key) = 0;

  /// One entry of the map under `key`; for textMapMap with an empty `inner` the whole inner map. Absent when
  /// the map is absent, is not of this kind, or lacks the entry.
  virtual std::optional<DefaultsValue> mapEntry(std::string_view key, EntryPath path, MapKind kind) = 0;
  /// Sets one entry and creates the map, and the inner map, when missing. What stands under `key` and is not
  /// a map of this kind is replaced by a map with this one entry. `value` must be of the entry type of
  /// `kind`: a text for textMap and textMapMap, a real for realMap, a list for listMap.
  virtual void setMapEntry(std::string_view key, EntryPath path, MapKind kind, DefaultsValue value) = 0;
  /// Removes one entry (for textMapMap with an empty `inner`, the whole inner map). The map itself stays,
  /// empty if need be. Does nothing when the map is absent or not of this kind.
  virtual void removeMapEntry(std::string_view key, EntryPath path, MapKind kind) = 0;

  /// Runs `work` on the calling thread as one atomic step: other threads and processes see all of its writes
  /// or none, and nothing of theirs comes between its reads and its writes. Inside, `work` uses this same
  /// domain; it must not wait, call back into the application or start a request. Nested calls join the outer
  /// one. When the store cannot be locked for writing, `work` still runs once, against a domain whose writes
  /// are dropped. Answers whether all that was written is in the store now; of a nested call, whether nothing
  /// has been refused so far.
  virtual bool transact(FunctionRef<void()> work) = 0;

  /// Asks that everything written so far survive a power cut. Returns at once; the store is made durable soon
  /// after, and at the latest when the domain is closed in good order.
  virtual void synchronize() = 0;
};

/// The process's user-defaults database.
class UserDefaults {
 public:
  virtual ~UserDefaults() = default;

  /// The process's own domain, never shared with another process of the application. Never null.
  virtual std::shared_ptr<DefaultsDomain> standard() = 0;

  /// The domain that all processes of the application group `name` share. The empty name, and a group that
  /// the device does not know, give the very object of standard(). Null when the system refuses the domain (a
  /// folder that can't be made, a store that can't be opened); the reason is reported in a line on standard
  /// error.
  virtual std::shared_ptr<DefaultsDomain> suite(std::string_view name) = 0;
};

}  // namespace VorselKelp::platform
