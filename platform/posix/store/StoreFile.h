#pragma once

#include <sys/types.h>

#include <chrono>
#include <memory>
#include <string>

#include "VorselKelpPosix/LineSink.h"
#include "store/Database.h"

namespace VorselKelp::posix {

/// Which file a path led to.
struct FileIdentity {
  dev_t device = 0;
  ino_t inode = 0;
  friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

/// An open database and which file it is: another process may have put a fresh one in its place since.
struct OpenStore {
  std::unique_ptr<Database> database{};
  /// Read without locks: what looks like damage may be another process at work.
  bool readOnly = false;
  FileIdentity identity{};
};

/// The file of one domain: how it comes into being, is opened, and gives way when it is damaged. Several
/// processes may do any of this at the same moment.
///
/// A store is made under another name and renamed, so that whatever stands under its own name was whole once:
/// what can't be read there is damaged and never a store that is still being made.
class StoreFile {
 public:
  /// A process that is `shortLived` uses a store as soon as it has opened it.
  StoreFile(std::string path, bool shortLived, std::chrono::milliseconds lockPatience, LineSink report)
      : path_(std::move(path)),
        shortLived_(shortLived),
        lockPatience_(lockPatience),
        report_(std::move(report)) {}

  [[nodiscard]] bool shortLived() const { return shortLived_; }

  /// Opens the store and makes it when it is missing; one that is damaged is moved aside, with a line that
  /// says so. Without a database when that fails, with a line that gives the reason. In a short-lived process
  /// the store comes with a transaction for reading open.
  [[nodiscard]] OpenStore open();
  /// Whether open() would make it.
  [[nodiscard]] bool isMissing() const;

  /// For a store that was found damaged after it was opened: moves it aside, unless another process has done
  /// so, and opens the one that then stands there. Close `damaged` first.
  [[nodiscard]] OpenStore replace(const OpenStore& damaged, const std::string& reason);

  /// False when the path leads to another file by now, or to none.
  [[nodiscard]] bool isCurrent(const OpenStore& store) const;

  [[nodiscard]] std::string logPath() const { return path_ + "-wal"; }
  void report(const std::string& what) const;

 private:
  enum class State { open, missing, damaged, failed };
  struct Attempt {
    State state;
    OpenStore store;
    std::string reason;
  };

  Attempt tryOpen() const;
  Attempt tryOpenOnce() const;
  Attempt tryOpenReadOnly(const std::string& reason) const;
  OpenStore openOrCreate(const OpenStore* damaged, std::string reason);
  bool moveAside(const std::string& reason) const;
  bool create() const;

  std::string path_;
  bool shortLived_;
  std::chrono::milliseconds lockPatience_;
  LineSink report_;
};

}  // namespace VorselKelp::posix
