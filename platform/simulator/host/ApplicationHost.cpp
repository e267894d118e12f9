#include "VorselKelpSimulator/ApplicationHost.h"

#include "host/ApplicationRun.h"
#include "host/ExitStatus.h"

namespace VorselKelp::simulator {
namespace {

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
  if (!options) return exitWith(options.error().description, 2);
  auto calls = prepareCalls(*options, operations);
  if (!calls) return exitWith(calls.error().description, 2);
  auto manifest = loadManifest(options->manifest);
  if (!manifest) return exitWith(manifest.error().description, 1);
  if (!options->scriptHost.empty()) manifest->endpoints.script = options->scriptHost;
  ApplicationRun run(std::move(*options), std::move(*manifest), application, screen);
  return run.run(*calls);
}

}  // namespace VorselKelp::simulator
