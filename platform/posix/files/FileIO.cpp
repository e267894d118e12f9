#include "VorselKelpPosix/FileIO.h"

#include <fcntl.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "VorselKelpPosix/Descriptor.h"

namespace VorselKelp::posix {

Error systemError(const std::string& path) {
  return {path + ": " + std::strerror(errno), errno};
}

Status checkPath(const std::string& path) {
  if (path.empty() || path.front() != '/') return Error{"not an absolute path: \"" + path + "\""};
  if (path.find('\0') != std::string::npos) return Error{"a path with a NUL byte"};
  return Done{};
}

std::string parentOf(const std::string& path) {
  return path.substr(0, std::max<std::size_t>(path.rfind('/'), 1));
}

Status makeFolders(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) return Done{};
  for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
    const std::string folder = path.substr(0, end);
    if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST && errno != EISDIR) return systemError(folder);
    if (end == std::string::npos) break;
  }
  if (::stat(path.c_str(), &status) != 0) return systemError(path);
  if (!S_ISDIR(status.st_mode)) return Error{path + ": not a folder", ENOTDIR};
  return Done{};
}

Result<std::string> readWholeFile(const std::string& path, std::size_t limit) {
  // Without O_NONBLOCK a pipe of that name would keep the caller for ever.
  const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat status {};
  if (file.number() < 0 || ::fstat(file.number(), &status) != 0) return systemError(path);
  if (!S_ISREG(status.st_mode)) return Error{path + ": not a file"};
  const auto tooLarge = [&] { return Error{path + ": larger than " + std::to_string(limit) + " bytes"}; };
  const auto size = static_cast<std::size_t>(status.st_size);
  if (size > limit) return tooLarge();

  // One byte more than it seems to have, and on from there: the file may grow while it is read.
  std::string bytes;
  std::size_t filled = 0;
  for (bool more = true; more;) {
    bytes.resize(std::max(size + 1, filled + (std::size_t{64} << 10)));
    const auto got = ::read(file.number(), bytes.data() + filled, bytes.size() - filled);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return systemError(path);
    filled += static_cast<std::size_t>(got);
    if (filled > limit) return tooLarge();
    // What is there, with room left for more, is all of it.
    more = got > 0 && (filled < size || filled == bytes.size());
  }
  bytes.resize(filled);
  return bytes;
}

Status copyFile(const std::string& source, const std::string& target) {
  const Descriptor from(::open(source.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat status {};
  if (from.number() < 0 || ::fstat(from.number(), &status) != 0) return systemError(source);
  if (!S_ISREG(status.st_mode)) return Error{source + ": not a file"};
  const Descriptor to(::open(target.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (to.number() < 0) return systemError(target);
  for (ssize_t sent = 1; sent != 0;) {
    sent = ::sendfile(to.number(), from.number(), nullptr, std::size_t{1} << 20);
    if (sent >= 0 || errno == EINTR) continue;
    auto error = systemError(target);
    ::unlink(target.c_str());
    return error;
  }
  return Done{};
}

void syncFile(const std::string& path) {
  const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (file.number() >= 0) ::fdatasync(file.number());
}

void syncFolder(const std::string& path) {
  const Descriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder.number() >= 0) ::fsync(folder.number());
}

}  // namespace VorselKelp::posix
