#include "push/CategoryHelper.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <mutex>
#include <unordered_set>
#include <utility>

#include "push/DeliveryPlan.h"

namespace VorselKelp {
namespace {

using platform::NotificationCategory;

constexpr std::size_t rememberedLimit = 128;
constexpr double answerTimeout = 5;

/// The answer may come after its reader has gone: both hold this.
struct CategoryAnswer {
  explicit CategoryAnswer(std::shared_ptr<platform::Semaphore> semaphore) : arrived(std::move(semaphore)) {}
  std::shared_ptr<platform::Semaphore> arrived;
  std::mutex mutex;
  std::vector<NotificationCategory> categories;
};

NotificationCategory makeCategory(std::string identifier, const std::vector<Action>& actions) {
  NotificationCategory category{std::move(identifier), {}, true};
  for (const Action& action : actions) {
    category.actions.push_back({action.action, action.title, optionOf(action)});
  }
  return category;
}

void insert(std::vector<NotificationCategory>& categories, NotificationCategory category) {
  const auto same = std::ranges::find(categories, category.identifier, &NotificationCategory::identifier);
  if (same == categories.end()) {
    categories.push_back(std::move(category));
  } else {
    *same = std::move(category);
  }
}

/// Drops the oldest identifiers beyond the limit, and their categories with them.
void prune(std::vector<NotificationCategory>& categories, std::vector<std::string>& identifiers) {
  if (identifiers.size() <= rememberedLimit) return;
  const auto firstKept = identifiers.end() - static_cast<std::ptrdiff_t>(rememberedLimit);
  const std::unordered_set<std::string> dropped(identifiers.begin(), firstKept);
  std::erase_if(categories, [&](const auto& category) { return dropped.contains(category.identifier); });
  identifiers.erase(identifiers.begin(), firstKept);
}

}  // namespace

CategoryHelper::Registration CategoryHelper::add(const std::vector<Action>& actions,
                                                 const std::string& requestIdentifier) {
  Registration registration;
  registration.identifier = categoryIdentifier(requestIdentifier);
  registration.lock = lockCategories();
  auto categories = currentCategories();
  registration.remembered = storedIdentifiers();
  insert(categories, makeCategory(registration.identifier, actions));
  // One that comes again is the newest once more.
  std::erase(registration.remembered, registration.identifier);
  registration.remembered.push_back(registration.identifier);
  prune(categories, registration.remembered);
  context_->services->notificationCenter->setNotificationCategories(std::move(categories));
  return registration;
}

void CategoryHelper::save(const Registration& registration) {
  context_->storage.set(StorageKey::category, registration.remembered);
}

std::vector<NotificationCategory> CategoryHelper::currentCategories() {
  const auto answer = std::make_shared<CategoryAnswer>(context_->services->clock->makeSemaphore());
  context_->services->notificationCenter->getNotificationCategories(
      [answer](std::vector<NotificationCategory> categories) {
        {
          const std::lock_guard lock(answer->mutex);
          answer->categories = std::move(categories);
        }
        answer->arrived->signal();
      });
  if (!answer->arrived->wait(answerTimeout)) return {};
  const std::lock_guard lock(answer->mutex);
  return std::move(answer->categories);
}

std::vector<std::string> CategoryHelper::storedIdentifiers() {
  const auto standard = context_->services->userDefaults->standard();
  const auto stored = standard->object(keyText(StorageKey::category));
  if (!stored) return {};
  if (const auto* list = stored->as<platform::TextList>()) return *list;
  standard->setObject(keyText(StorageKey::category), {platform::TextList{}});
  return {};
}

std::unique_ptr<platform::FileLock> CategoryHelper::lockCategories() {
  // The notification centre has no operation that adds one category: reading and replacing the set is one
  // step only while nobody else does the same.
  auto& files = *context_->services->fileManager;
  const auto container = files.containerPath(context_->storage.suiteName());
  return files.lock((container ? *container : files.temporaryDirectory()) + "/vorsel.categories.lock");
}

}  // namespace VorselKelp
