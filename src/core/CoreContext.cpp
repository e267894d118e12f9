#include "core/CoreContext.h"

#include <mutex>
#include <string>
#include <utility>

#include "base/FatalError.h"
#include "core/CoreScope.h"

namespace VorselKelp {
namespace {

struct Process {
  std::mutex mutex;
  std::shared_ptr<CoreContext> context;
};

Process& process() {
  // Never destroyed: answers may still come while the process's statics go.
  static auto* const instance = new Process;
  return *instance;
}

}  // namespace

CoreContext::CoreContext(std::shared_ptr<platform::Platform> platformServices)
    : services(std::move(platformServices)), storage(*services, state) {}

std::shared_ptr<void> CoreContext::companionOf(std::type_index type,
                                               platform::FunctionRef<std::shared_ptr<void>()> make) {
  const std::lock_guard lock(companionsMutex_);
  auto& companion = companions_[type];
  if (!companion) companion = make();
  return companion;
}

std::shared_ptr<CoreContext> CoreContext::current(std::string_view caller) {
  if (auto scoped = CoreScope::innermost()) return scoped;
  const std::lock_guard lock(process().mutex);
  if (!process().context)
    fatalError(std::string(caller) + ": no platform is installed; call VorselKellp::install first");
  return process().context;
}

std::shared_ptr<CoreContext> CoreContext::installed() {
  const std::lock_guard lock(process().mutex);
  return process().context;
}

void CoreContext::setCurrent(std::shared_ptr<CoreContext> context) {
  const std::lock_guard lock(process().mutex);
  process().context.swap(context);
}

}  // namespace VorselKelp
