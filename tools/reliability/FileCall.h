#pragma once

#include <optional>
#include <span>
#include <string>

#include "Listener.h"

/// A call that changes a file system, or asks for a file to change it later.
struct FileCall {
  enum class Kind { write, sync, open, make, remove, rename, resize };

  Kind kind = Kind::write;
  const char* name = "";
  std::string path;        ///< of the file; for a rename the old one
  bool creates = false;    ///< the file is not there yet
  bool truncates = false;  ///< the file loses its content
  std::string process{};   ///< the caller's program, as the kernel shortens it

  /// The system calls that may be one.
  static std::span<const int> numbers();
  /// Absent for a call that changes nothing, such as opening a file for reading.
  static std::optional<FileCall> of(const WaitingCall& call);

  /// What the call does, as "write", "resize", "sync", "make", "remove" or "rename" (another one by its own
  /// name), with offset, number of bytes and path, and behind a line's end the bytes: those that are written,
  /// or a file's new name. Empty when it changes no file, as with a folder that is made.
  [[nodiscard]] std::string record(const WaitingCall& call) const;

  /// Whether a file system in this condition (ENOSPC: full, EROFS: read-only, EACCES: not permitted) refuses
  /// it.
  [[nodiscard]] bool refusedWith(int error) const;
};
