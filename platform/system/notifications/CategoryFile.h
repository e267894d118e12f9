#pragma once

#include <sys/types.h>

#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "VorselKelp/Result.h"
#include "VorselKelp/platform/NotificationCenter.h"
#include "VorselKelpPosix/Descriptor.h"
#include "notifications/CategoryCoding.h"
#include "notifications/Patience.h"

namespace VorselKelp::system {

/// One application's notification categories, as a file of the changes to them, one behind the other: every
/// extension reads the set and adds to it, and a database, or a file that takes another's place, is dear for
/// that. A file that has become much longer than its categories is written anew. Several processes at once;
/// any thread. What a killed process has half written does not count.
class CategoryFile {
 public:
  /// `path` is absolute. The file and its folder are made by the first change.
  CategoryFile(std::string path, const Patience& patience) : path_(std::move(path)), patience_(patience) {}

  /// In the order in which they were written.
  Result<std::vector<platform::NotificationCategory>> read();
  /// The one of this name, if there is one.
  Result<std::optional<platform::NotificationCategory>> find(const std::string& identifier);
  /// Removes some categories and writes others (new or changed) in one step; all others stay as they are, but
  /// for the oldest of too many passing ones.
  Status change(const std::vector<std::string>& removed,
                const std::vector<platform::NotificationCategory>& written, bool passing);

 private:
  Status look();
  Status readNew(std::unique_ptr<posix::Descriptor> file);
  std::size_t apply(std::string_view changes);
  Status append(int file, const std::string& changes);
  Status replace();
  void forget();

  const std::string path_;
  const Patience& patience_;
  std::mutex mutex_;
  /// The file that was read last; kept open, so that no other can get its number. Null: none.
  std::unique_ptr<posix::Descriptor> seen_;
  ino_t inode_ = 0;
  /// How much of that file was read, and what came of it.
  std::size_t length_ = 0;
  std::size_t changes_ = 0;
  CategorySet categories_;
  /// Whether more stands behind it that makes no sense.
  bool torn_ = false;
};

}  // namespace VorselKelp::system
