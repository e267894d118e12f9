#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "VorselKelp/Result.h"

namespace VorselKelp::platform {

/// Held while the object lives; given back when it is destroyed, and by the system when the process dies.
class FileLock {
 public:
  virtual ~FileLock() = default;
};

/// A file that is written in pieces: whole or not there. Until it is committed it lies under a passing name,
/// and destroying the writer removes it. Used on one thread at a time.
class FileWriter {
 public:
  virtual ~FileWriter() = default;

  /// Once this has failed, everything else fails with the same error.
  virtual Status append(std::string_view bytes) = 0;

  /// Of what was appended, the bytes from `offset` on, at most `limit` of them; empty past the end.
  virtual Result<std::string> read(std::size_t offset, std::size_t limit) = 0;

  /// Gives the file its name, replacing the file that had it; the last call to the writer. `path` is in the
  /// writer's folder or below it; missing folders are made, with access for the owner alone.
  virtual Status commit(const std::string& path) = 0;
};

/// Files of the process and of its application groups. Paths are absolute, UTF-8, with "/" between
/// components. All operations block for the file system, may be called from any thread, and never throw.
class FileManager {
 public:
  virtual ~FileManager() = default;

  /// The folder that the processes of application group `groupId` share; absent when the device does not know
  /// the group. An id never names a folder outside the place where containers live, whatever it holds.
  virtual std::optional<std::string> containerPath(std::string_view groupId) = 0;

  /// A folder of this process for files of passing use. It exists when this returns.
  virtual std::string temporaryDirectory() = 0;

  /// Writes the whole file or leaves none: a reader, or a next start after a kill, never finds half of it.
  /// Missing parent folders are made, with access for the owner alone.
  virtual Status writeFile(const std::string& path, std::string_view bytes) = 0;

  /// A writer for a file somewhere in `folder`, which is made when missing, as its parents are.
  virtual Result<std::unique_ptr<FileWriter>> makeWriter(const std::string& folder) = 0;

  /// The file's bytes; an error when it is missing, unreadable, or larger than `limit` bytes.
  virtual Result<std::string> readFile(const std::string& path, std::size_t limit) = 0;

  virtual bool fileExists(const std::string& path) = 0;

  /// Removes a file, or a folder with all that is in it. Removing what is not there succeeds.
  virtual Status removeItem(const std::string& path) = 0;

  /// Waits for and takes the lock named by the file `path`, which excludes every other thread and every other
  /// process that asks for the same path. The file is made when missing, with its folder, and stays. Null
  /// when it can't be made, and when another process has kept the lock for some seconds: one that hangs must
  /// not keep all others. A thread must not take one lock twice.
  virtual std::unique_ptr<FileLock> lock(const std::string& path) = 0;
};

}  // namespace VorselKelp::platform
