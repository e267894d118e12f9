#pragma once

#include <chrono>
#include <memory>
#include <mutex>
#include <set>
#include <string>

#include "VorselKelp/platform/UserDefaults.h"
#include "store/DefaultsStore.h"
#include "store/Flusher.h"
#include "store/StoreFile.h"

namespace VorselKelp::posix {

/// One domain on one database. Without a database (it could not be opened) every read is absent and every
/// write is dropped; the line that says why has been written by then.
class SqliteDomain final : public platform::DefaultsDomain {
 public:
  /// When the store is opened, and made if it is missing: at once, or by the first use. By use, a store that
  /// is missing is not made for a reading.
  enum class Opening { now, byUse };

  /// `flusher` makes the log durable for a process that goes on; null in one that is short-lived, whose log
  /// becomes so when the domain is closed.
  SqliteDomain(StoreFile file, Opening opening, std::shared_ptr<Flusher> flusher);
  ~SqliteDomain() override;
  SqliteDomain(const SqliteDomain&) = delete;
  SqliteDomain& operator=(const SqliteDomain&) = delete;

  [[nodiscard]] bool isOpen() const { return store_.database != nullptr; }

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

 private:
  template <class Work>
  std::optional<platform::DefaultsValue> read(Work work);
  template <class Work>
  void write(Work work);
  bool ready(bool forWriting);
  void makeDurable();
  void settleLog();
  void replaceDamaged();
  void followFile();
  void noteError();
  void reportOnce(int code);
  bool endTransaction(bool begun);

  std::recursive_mutex mutex_;
  StoreFile file_;
  OpenStore store_;
  std::shared_ptr<Flusher> flusher_;
  bool opened_;
  bool unsynchronized_ = false;
  std::set<int> reported_;
  int depth_ = 0;
  bool dropping_ = false;
  bool synchronizeAfter_ = false;
  bool damaged_ = false;
  std::string damage_;
  int replacements_ = 0;
  std::chrono::steady_clock::time_point lastLook_ = std::chrono::steady_clock::now();
};

}  // namespace VorselKelp::posix
