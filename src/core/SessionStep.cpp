#include "core/SessionStep.h"

#include <limits>
#include <string_view>

#include "base/Date.h"
#include "base/FatalError.h"

namespace VorselKelp {
namespace {

std::string randomDigits(platform::Random& random) {
  constexpr std::string_view alphabet = "0123456789";
  std::string text;
  for (int i = 0; i < 10; ++i) text += alphabet[random.below(10)];
  return text;
}

std::string uniqueIdOf(const std::string& time, const std::string& digits) {
  return time + "." + digits;
}

void makeUniqueId(CoreContext& context, const std::string& time, const std::string& digits) {
  context.storage.set(StorageKey::uniqueSessionFirstTime, time);
  context.storage.set(StorageKey::uniqueSessionId, uniqueIdOf(time, digits));
}

}  // namespace

void runSessionStep(CoreContext& context) {
  const std::string digits = randomDigits(*context.services->random);
  const std::string now = std::to_string(wholeSeconds(context.services->clock->now()));
  auto& store = context.storage;
  store.transact([&] {
    const auto sessions = store.integer(StorageKey::sessionNumber).value_or(0);
    if (sessions == std::numeric_limits<std::int64_t>::max()) fatalError("the session counter overflows");
    store.set(StorageKey::sessionNumber, sessions + 1);
    store.synchronize();
    store.set(StorageKey::sessionId, now);
    store.set(StorageKey::visitedCount, std::int64_t{0});
    store.synchronize();
    const auto known = store.text(StorageKey::uniqueSessionId);
    if (!known) makeUniqueId(context, now, digits);
    context.state.setCountedSession({sessions + 1, now, 0, known.value_or(uniqueIdOf(now, digits))});
  });
}

std::optional<SessionValues> readSessionValues(CoreContext& context) {
  auto& store = context.storage;
  auto number = store.integer(StorageKey::sessionNumber);
  auto id = store.text(StorageKey::sessionId);
  auto visited = store.integer(StorageKey::visitedCount);
  auto uniqueId = store.text(StorageKey::uniqueSessionId);
  // They are stored in one step: where none of them is there, the store has refused it.
  if (!number && !id && !visited && !uniqueId) return context.state.countedSession();
  if (!number || !id || !visited || !uniqueId) return std::nullopt;
  return SessionValues{*number, std::move(*id), *visited, std::move(*uniqueId)};
}

}  // namespace VorselKelp
