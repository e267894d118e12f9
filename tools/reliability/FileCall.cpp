#include "FileCall.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <fstream>
#include <vector>

namespace {

using Kind = FileCall::Kind;

struct Entry {
  int number;
  const char* name;
  Kind kind;
  int descriptor;  ///< which argument is the file's, or the folder's that `path` is below; -1: none
  int path;        ///< which argument is the path; -1: none
  int flags;       ///< which argument holds the flags of an opening; -1: none
};

const std::vector<Entry>& entries() {
  static const std::vector<Entry> all{
      {SYS_write, "write", Kind::write, 0, -1, -1},
      {SYS_pwrite64, "pwrite64", Kind::write, 0, -1, -1},
      {SYS_writev, "writev", Kind::write, 0, -1, -1},
      {SYS_pwritev, "pwritev", Kind::write, 0, -1, -1},
      {SYS_ftruncate, "ftruncate", Kind::resize, 0, -1, -1},
      {SYS_fallocate, "fallocate", Kind::write, 0, -1, -1},
      {SYS_fsync, "fsync", Kind::sync, 0, -1, -1},
      {SYS_fdatasync, "fdatasync", Kind::sync, 0, -1, -1},
      {SYS_openat, "openat", Kind::open, 0, 1, 2},
      {SYS_mkdirat, "mkdirat", Kind::make, 0, 1, -1},
      {SYS_linkat, "linkat", Kind::make, 2, 3, -1},
      {SYS_symlinkat, "symlinkat", Kind::make, 1, 2, -1},
      {SYS_unlinkat, "unlinkat", Kind::remove, 0, 1, -1},
      {SYS_renameat2, "renameat2", Kind::rename, 0, 1, -1},
#ifdef SYS_renameat
      {SYS_renameat, "renameat", Kind::rename, 0, 1, -1},
#endif
#ifdef SYS_open  // older processors' calls without a folder
      {SYS_open, "open", Kind::open, -1, 0, 1},
      {SYS_mkdir, "mkdir", Kind::make, -1, 0, -1},
      {SYS_unlink, "unlink", Kind::remove, -1, 0, -1},
      {SYS_rmdir, "rmdir", Kind::remove, -1, 0, -1},
      {SYS_rename, "rename", Kind::rename, -1, 0, -1},
      {SYS_link, "link", Kind::make, -1, 1, -1},
#endif
  };
  return all;
}

std::string linkAt(const std::string& path) {
  std::array<char, PATH_MAX> target{};
  const auto size = ::readlink(path.c_str(), target.data(), target.size());
  return size > 0 ? std::string(target.data(), static_cast<std::size_t>(size)) : std::string();
}

std::string textAt(pid_t thread, std::uint64_t address) {
  std::ifstream memory("/proc/" + std::to_string(thread) + "/mem", std::ios::binary);
  memory.seekg(static_cast<std::streamoff>(address));
  std::string text;
  std::getline(memory, text, '\0');
  return text;
}

std::string pathOf(const Entry& entry, const WaitingCall& call) {
  const auto proc = "/proc/" + std::to_string(call.thread);
  const auto argument = [&](int index) { return call.arguments[static_cast<std::size_t>(index)]; };
  std::string path = entry.path >= 0 ? textAt(call.thread, argument(entry.path)) : std::string();
  if (path.starts_with('/')) return path;
  const int descriptor = entry.descriptor >= 0 ? static_cast<int>(argument(entry.descriptor)) : AT_FDCWD;
  const auto base =
      linkAt(descriptor == AT_FDCWD ? proc + "/cwd" : proc + "/fd/" + std::to_string(descriptor));
  return path.empty() ? base : base + "/" + path;
}

std::string bytesOf(const WaitingCall& call) {
  std::string bytes(call.arguments[2], '\0');
  std::ifstream memory("/proc/" + std::to_string(call.thread) + "/mem", std::ios::binary);
  memory.seekg(static_cast<std::streamoff>(call.arguments[1]));
  memory.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  return bytes;
}

/// Where a write without an offset goes. Nothing that is recorded opens a file to append.
std::uint64_t positionOf(const WaitingCall& call) {
  std::ifstream info("/proc/" + std::to_string(call.thread) + "/fdinfo/" +
                     std::to_string(static_cast<int>(call.arguments[0])));
  std::uint64_t position = 0;
  for (std::string word; info >> word;) {
    if (word == "pos:" && info >> position) break;
  }
  return position;
}

/// A rename's new name; absolute, or there is none.
std::string targetOf(const WaitingCall& call) {
#ifdef SYS_rename
  if (call.number == SYS_rename) return textAt(call.thread, call.arguments[1]);
#endif
  return textAt(call.thread, call.arguments[3]);
}

bool isFolder(const WaitingCall& call) {
#ifdef SYS_mkdir
  if (call.number == SYS_mkdir) return true;
#endif
  return call.number == SYS_mkdirat;
}

std::string programOf(pid_t thread) {
  // The thread's own name may be another.
  std::ifstream status("/proc/" + std::to_string(thread) + "/status");
  pid_t process = thread;
  for (std::string word; status >> word;) {
    if (word == "Tgid:" && status >> process) break;
  }
  std::string name;
  std::ifstream("/proc/" + std::to_string(process) + "/comm") >> name;
  return name;
}

}  // namespace

std::span<const int> FileCall::numbers() {
  static const std::vector<int> all = [] {
    std::vector<int> made;
    for (const auto& entry : entries()) made.push_back(entry.number);
    return made;
  }();
  return all;
}

std::optional<FileCall> FileCall::of(const WaitingCall& call) {
  for (const auto& entry : entries()) {
    if (entry.number != call.number) continue;
    FileCall made{entry.kind, entry.name, {}, false, false, {}};
    if (entry.flags >= 0) {
      const auto flags = static_cast<int>(call.arguments[static_cast<std::size_t>(entry.flags)]);
      if ((flags & (O_WRONLY | O_RDWR | O_CREAT | O_TRUNC)) == 0) return std::nullopt;
      made.creates = (flags & O_CREAT) != 0;
      made.truncates = (flags & O_TRUNC) != 0;
    }
    made.path = pathOf(entry, call);
    const bool there = ::access(made.path.c_str(), F_OK) == 0;
    if (entry.kind == Kind::make) made.creates = true;
    if (made.creates && there) made.creates = false;
    made.process = programOf(call.thread);
    return made;
  }
  return std::nullopt;
}

std::string FileCall::record(const WaitingCall& call) const {
  const auto line = [this](std::string_view effect, std::uint64_t offset = 0, const std::string& bytes = {}) {
    return std::string(effect) + " " + std::to_string(offset) + " " + std::to_string(bytes.size()) + " " +
           path + "\n" + bytes + "\n";
  };
  switch (kind) {
    case Kind::write:
      if (call.number == SYS_pwrite64) return line("write", call.arguments[3], bytesOf(call));
      return call.number == SYS_write ? line("write", positionOf(call), bytesOf(call)) : line(name);
    case Kind::resize:
      return line("resize", call.arguments[1]);
    case Kind::sync:
      return line("sync");
    case Kind::open:
      return creates ? line("make") : truncates ? line("resize") : std::string();
    case Kind::make:
      return isFolder(call) ? std::string() : line(name);
    case Kind::remove:
      return line("remove");
    case Kind::rename:
      return line("rename", 0, targetOf(call));
  }
  return {};
}

bool FileCall::refusedWith(int error) const {
  switch (kind) {
    case Kind::write:
    case Kind::resize:
      return error == ENOSPC || error == EROFS;
    case Kind::sync:
      return false;
    case Kind::make:
      return creates;
    case Kind::open:
      return creates || error != ENOSPC;
    case Kind::remove:
    case Kind::rename:
      if (error == EACCES) return ::access(path.c_str(), F_OK) == 0;
      return error == EROFS;
  }
  return false;
}
