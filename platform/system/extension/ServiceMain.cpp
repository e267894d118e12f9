#include "VorselKelpSystem/ServiceMain.h"

#include <fcntl.h>
#include <unistd.h>

#include "VorselKelpSystem/ServiceRun.h"
#include "VorselKelpSystem/ShortLife.h"
#include "extension/ExtensionPlatform.h"

namespace VorselKelp::system {
namespace {

constexpr double serviceTimeLimit = 30;  // seconds

/// Takes standard output for the channel alone: what the extension prints there would be read as events.
int takeOutput() {
  const int channel = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  ::dup2(STDERR_FILENO, STDOUT_FILENO);
  return channel;
}

ServiceProcess makeProcess(const ExtensionOptions& options, const ExtensionDescription& description) {
  ServiceProcess process;
  process.loop = std::make_shared<posix::EventLoop>();
  process.session = makeExtensionSession(process.loop);
  process.channel = std::make_shared<EventChannel>(takeOutput());
  process.deadline =
      posix::EventLoop::Clock::now() + posix::loopDuration(options.timeLimit.value_or(serviceTimeLimit));
  process.temporaryFolder = temporaryFolderOf(description);
  return process;
}

}  // namespace

int runServiceMain(int argc, const char* const* argv, const ExtensionDescription& description,
                   ServiceExtension& extension) {
  prepareShortLife();
  const auto options = readExtensionOptions(argc, argv);
  if (!options) return endWith(options.error(), 2);
  auto payload = readServicePayload("");
  if (!payload) return endWith(payload.error(), 1);
  const auto process = makeProcess(*options, description);
  runService(
      process,
      makeExtensionPlatform(description, process.loop, process.session, makeChannelConsole(process.channel)),
      options->identifier, *std::move(payload), extension, [] {});
  return 0;
}

}  // namespace VorselKelp::system
