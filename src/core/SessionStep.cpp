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

std::string secondsText(platform::Clock& clock) {
  return std::to_string(wholeSeconds(clock.now()));
}

}  // namespace

void runSessionStep(CoreContext& context, platform::FunctionRef<void()> rest) {
  const std::string digits = randomDigits(*context.services->random);
  const std::string now = secondsText(*context.services->clock);
  const std::string firstTime = secondsText(*context.services->clock);  // of an installation that is new
  auto& store = context.storage;
  store.transact([&] {
    const auto sessions = store.integer(StorageKey::sessionNumber).value_or(0);
    if (sessions == std::numeric_limits<std::int64_t>::max()) fatalError("the session counter overflows");
    store.set(StorageKey::sessionNumber, sessions + 1);
    store.synchronize();
    store.set(StorageKey::sessionId, now);
    store.set(StorageKey::visitedCount, std::int64_t{0});
    store.synchronize();
    auto unique = store.text(StorageKey::uniqueSessionId);
    if (!unique) {
      unique = firstTime + "." + digits;
      store.set(StorageKey::uniqueSessionFirstTime, firstTime);
      store.set(StorageKey::uniqueSessionId, *unique);
    }
    context.state.setCountedSession({sessions + 1, now, 0, *std::move(unique)});
    rest();
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
