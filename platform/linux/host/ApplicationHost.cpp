#include "VorselKelpLinux/ApplicationHost.h"

#include "VorselKelpLinux/LineSink.h"
#include "host/ApplicationRun.h"

namespace VorselKelp::linux_platform {
namespace {

int fail(const std::string& line, int status) {
  standardErrorLines()(line);
  return status;
}

Result<std::vector<PreparedCall>> prepareCalls(const ProcessOptions& options,
                                               const OperationTable& operations) {
  std::vector<PreparedCall> calls;
  for (const auto& [name, text] : options.calls) {
    const auto* operation = operations.find(name);
    if (operation == nullptr) {
      return Error{"There is no operation " + name + " to call; there are: " + operations.names()};
    }
    auto json = JSONAny::decode(text);
    auto* arguments = json ? std::get_if<JSONAny::List>(&json->value) : nullptr;
    if (arguments == nullptr) {
      return Error{"The arguments of " + name + " must be a JSON list, such as --call '" + name + "=[]'"};
    }
    if (const auto status = OperationTable::check(*operation, *arguments); !status) return status.error();
    calls.push_back({operation, std::move(*arguments)});
  }
  return calls;
}

}  // namespace

int runApplication(int argc, const char* const* argv, ApplicationDelegate& application,
                   const OperationTable& operations) {
  return runApplication(argc, argv, application, operations, *headlessScreen());
}

int runApplication(int argc, const char* const* argv, ApplicationDelegate& application,
                   const OperationTable& operations, ProcessScreen& screen) {
  auto options = readOptions(argc, argv);
  if (!options) return fail(options.error().description, 2);
  auto calls = prepareCalls(*options, operations);
  if (!calls) return fail(calls.error().description, 2);
  auto manifest = loadManifest(options->manifest);
  if (!manifest) return fail(manifest.error().description, 1);
  if (!options->scriptHost.empty()) manifest->endpoints.script = options->scriptHost;
  ApplicationRun run(std::move(*options), std::move(*manifest), application, screen);
  return run.run(*calls);
}

}  // namespace VorselKelp::linux_platform
