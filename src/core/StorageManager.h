#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "VorselKelp/platform/Platform.h"
#include "core/StorageKeys.h"

namespace VorselKelp {

class CoreState;

/// The shared store: typed reading and writing of the keys. The suite is chosen once, at the first use, from
/// the application-group setting as it stands then. Without a domain every read is absent and every write is
/// skipped. A stored value of another type reads as absent. Any thread.
class StorageManager {
 public:
  using TextList = platform::TextList;
  using TextMap = std::map<std::string, std::string>;
  using RealMap = std::map<std::string, double>;

  /// Both outlive this object.
  StorageManager(const platform::Platform& services, const CoreState& coreState);

  [[nodiscard]] bool available();
  /// The suite's name, fixed by the first use.
  [[nodiscard]] const std::string& suiteName();

  [[nodiscard]] std::optional<bool> boolean(StorageKey key);
  /// False when absent.
  [[nodiscard]] bool flag(StorageKey key);
  [[nodiscard]] std::optional<std::int64_t> integer(StorageKey key);
  [[nodiscard]] std::optional<double> real(StorageKey key);
  [[nodiscard]] std::optional<std::string> text(StorageKey key);
  [[nodiscard]] std::optional<TextMap> textMap(StorageKey key);
  [[nodiscard]] std::optional<RealMap> realMap(StorageKey key);

  /// The click trackers stored for one notification.
  [[nodiscard]] std::optional<TextList> conversionTrackers(const std::string& notification);
  /// One notification's URLs by action identifier.
  [[nodiscard]] std::optional<TextMap> deepLinks(const std::string& notification);
  /// Unix seconds; the current time when none is stored.
  [[nodiscard]] double appOpenSavedAt();

  void set(StorageKey key, bool value);
  void set(StorageKey key, std::int64_t value);
  void set(StorageKey key, double value);
  void set(StorageKey key, std::string value);
  void set(StorageKey key, const char* value) { set(key, std::string(value)); }
  void set(StorageKey key, TextList value);
  void remove(StorageKey key);

  void set(StorageKey key, platform::DefaultsValue::Map value);

  /// One entry of a map; absent when the map is absent or one of its entries is of another type.
  [[nodiscard]] std::optional<std::string> textEntry(StorageKey key, const std::string& entry);
  [[nodiscard]] std::optional<TextList> listEntry(StorageKey key, const std::string& entry);
  void setTextEntry(StorageKey key, const std::string& entry, std::string value);
  void setListEntry(StorageKey key, const std::string& entry, TextList value);
  void removeTextEntry(StorageKey key, const std::string& entry);
  void setConversionTrackers(const std::string& notification, TextList trackers);
  void removeConversionTrackers(const std::string& notification);
  void setDeepLink(const std::string& notification, const std::string& action, std::string url);
  void removeDeepLinks(const std::string& notification);

  void synchronize();
  /// Runs `work` as one atomic step of the store; it must not wait, call back or start a request. Answers
  /// whether the store has taken what was written.
  bool transact(platform::FunctionRef<void()> work);

  /// The text of a date in the form of HTTP headers, GMT.
  [[nodiscard]] std::string formatDate(double secondsSince1970) const;

 private:
  template <class T>
  std::optional<T> typed(StorageKey key);
  template <class T>
  std::optional<T> typedEntry(StorageKey key, const std::string& entry, platform::MapKind kind);
  platform::DefaultsDomain* domain();

  const platform::Platform& services_;
  const CoreState& coreState_;
  std::once_flag opened_;
  std::string suiteName_;
  std::shared_ptr<platform::DefaultsDomain> defaultStorage_;
};

}  // namespace VorselKelp
