#include "VorselKelpFreedesktop/HostConsole.h"

#include <fcntl.h>
#include <glib.h>
#include <sys/stat.h>
#include <unistd.h>

#include "VorselKelpPosix/Descriptor.h"
#include "VorselKelpPosix/FileIO.h"
#include "VorselKelpPosix/Services.h"
#include "bus/BusText.h"
#include "runtime/SecretsCut.h"

namespace VorselKelp::freedesktop {
namespace {

constexpr mode_t ownersAlone = 0600;

class DebugConsole final : public platform::Console {
 public:
  void print(std::string_view text) override {
    const auto shown = secretsCut(text);
    g_log_structured("VorselKelp", G_LOG_LEVEL_DEBUG, "MESSAGE", "%s", busText(shown, shown.size()).c_str());
  }
};

class FileConsole final : public platform::Console {
 public:
  explicit FileConsole(int descriptor) : file_(descriptor) {}

  [[nodiscard]] Status check(const std::string& path) const {
    struct stat status {};
    if (file_.number() < 0 || ::fstat(file_.number(), &status) != 0) return posix::systemError(path);
    if (!S_ISREG(status.st_mode) || status.st_uid != ::geteuid())
      return Error{path + ": not a file of this user's"};
    if (::fchmod(file_.number(), ownersAlone) != 0) return posix::systemError(path);
    return Done{};
  }
  void print(std::string_view text) override { lines_->print(secretsCut(text)); }

 private:
  const posix::Descriptor file_;
  const std::shared_ptr<platform::Console> lines_ = posix::makeConsole(file_.number());
};

}  // namespace

std::shared_ptr<platform::Console> makeDebugConsole() {
  return std::make_shared<DebugConsole>();
}

Result<std::shared_ptr<platform::Console>> makeFileConsole(const std::string& path) {
  if (const auto usable = posix::checkPath(path); !usable) return usable.error();
  constexpr int flags = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
  const auto console = std::make_shared<FileConsole>(::open(path.c_str(), flags, ownersAlone));
  if (const auto usable = console->check(path); !usable) return usable.error();
  return std::shared_ptr<platform::Console>(console);
}

}  // namespace VorselKelp::freedesktop
