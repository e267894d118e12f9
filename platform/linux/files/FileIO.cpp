#include "files/FileIO.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace VorselKelp::linux_platform {
namespace {

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() { close(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  [[nodiscard]] int number() const { return number_; }
  /// Some file systems tell that the disk is full only here.
  bool close() {
    const int number = number_;
    number_ = -1;
    return number < 0 || ::close(number) == 0;
  }

 private:
  int number_;
};

Error systemError(const std::string& path) {
  return {path + ": " + std::strerror(errno), errno};
}

bool writeAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const auto written = ::write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

}  // namespace

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

Status replaceFile(const std::string& path, std::string_view bytes) {
  std::string passing = path.substr(0, path.rfind('/') + 1) + ".writing-XXXXXX";
  Descriptor file(::mkostemp(passing.data(), O_CLOEXEC));
  if (file.number() < 0) return systemError(path);
  if (writeAll(file.number(), bytes) && file.close() && ::rename(passing.c_str(), path.c_str()) == 0)
    return Done{};
  const auto error = systemError(path);
  ::unlink(passing.c_str());
  return error;
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
  for (;;) {
    bytes.resize(std::max(size + 1, filled + (std::size_t{64} << 10)));
    const auto got = ::read(file.number(), bytes.data() + filled, bytes.size() - filled);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return systemError(path);
    if (got == 0) break;
    filled += static_cast<std::size_t>(got);
    if (filled > limit) return tooLarge();
  }
  bytes.resize(filled);
  return bytes;
}

void syncFolder(const std::string& path) {
  const Descriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder.number() >= 0) ::fsync(folder.number());
}

}  // namespace VorselKelp::linux_platform
