#include "files/DiskFileWriter.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <utility>

#include "VorselKelpPosix/Descriptor.h"
#include "VorselKelpPosix/FileIO.h"

namespace VorselKelp::posix {
namespace {

class DiskFileWriter final : public platform::FileWriter {
 public:
  DiskFileWriter(int descriptor, std::string path) : file_(descriptor), path_(std::move(path)) {}
  ~DiskFileWriter() override {
    if (!path_.empty()) ::unlink(path_.c_str());
  }
  DiskFileWriter(const DiskFileWriter&) = delete;
  DiskFileWriter& operator=(const DiskFileWriter&) = delete;

  Status append(std::string_view bytes) override {
    if (failure_) return *failure_;
    while (!bytes.empty()) {
      const auto written = ::write(file_.number(), bytes.data(), bytes.size());
      if (written < 0 && errno == EINTR) continue;
      if (written < 0) return failed(parentOf(path_));
      bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return Done{};
  }

  Result<std::string> read(std::size_t offset, std::size_t limit) override {
    if (failure_) return *failure_;
    struct stat status {};
    if (::fstat(file_.number(), &status) != 0) return failed(parentOf(path_)).error();
    const auto size = static_cast<std::size_t>(status.st_size);
    std::string bytes(std::min(limit, size - std::min(offset, size)), '\0');
    for (std::size_t filled = 0; filled < bytes.size();) {
      const auto got = ::pread(file_.number(), bytes.data() + filled, bytes.size() - filled,
                               static_cast<off_t>(offset + filled));
      if (got < 0 && errno == EINTR) continue;
      if (got < 0) return failed(parentOf(path_)).error();
      if (got == 0) bytes.resize(filled);
      filled += static_cast<std::size_t>(got);
    }
    return bytes;
  }

  Status commit(const std::string& path) override {
    if (failure_) return *failure_;
    if (const auto checked = checkPath(path); !checked) return checked;
    if (const auto folder = parentOf(path); folder != parentOf(path_)) {
      if (const auto made = makeFolders(folder); !made) return made;
    }
    if (!file_.close() || ::rename(path_.c_str(), path.c_str()) != 0) return failed(path);
    path_.clear();
    return Done{};
  }

 private:
  Status failed(const std::string& path) {
    failure_ = systemError(path);
    return *failure_;
  }

  Descriptor file_;
  std::string path_;  // empty once the file has its own name
  std::optional<Error> failure_;
};

}  // namespace

Result<std::unique_ptr<platform::FileWriter>> makeDiskWriter(const std::string& folder) {
  if (const auto made = makeFolders(folder); !made) return made.error();
  std::string path = folder + "/.writing-XXXXXX";
  const int descriptor = ::mkostemp(path.data(), O_CLOEXEC);
  if (descriptor < 0) return systemError(folder);
  return std::unique_ptr<platform::FileWriter>(std::make_unique<DiskFileWriter>(descriptor, std::move(path)));
}

}  // namespace VorselKelp::posix
