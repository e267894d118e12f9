#include "phone/ChildProcess.h"

#include <sys/eventfd.h>

#include <filesystem>

#include "VorselKelpPosix/Descriptor.h"
#include "phone/Progress.h"

namespace phone {

std::string pathOf(const std::string& program) {
  if (program.starts_with('/')) return program;
  std::error_code error;
  const auto self = std::filesystem::read_symlink("/proc/self/exe", error);
  return error ? program : (self.parent_path() / program).string();
}

VorselKelp::Error startFailure(const std::string& program, const VorselKelp::Error& reason) {
  if (reason.code == 0) return reason;
  return {reason.description + (program.starts_with('/')
                                    ? "; see \"programs\" of the manifest"
                                    : "; the example application is built beside brellixctl")};
}

VorselKelp::Result<ChildOutcome> runProcess(ChildCommand command, bool quiet, const std::stop_token& stop) {
  Progress progress(command.program + " is still at work", quiet);
  const VorselKelp::posix::Descriptor stopped(stop.stop_possible() ? ::eventfd(0, EFD_CLOEXEC) : -1);
  const std::stop_callback tell(stop, [&stopped] { ::eventfd_write(stopped.number(), 1); });
  const auto program = std::exchange(command.program, pathOf(command.program));
  command.channel = channelDescriptor;
  command.arguments.insert(command.arguments.end(), {"--channel", std::to_string(channelDescriptor)});
  auto outcome = VorselKelp::system::runChild(command, {nullptr, [&] { progress.tick(); }, stopped.number()});
  if (!outcome) return startFailure(program, outcome.error());
  return outcome;
}

}  // namespace phone
