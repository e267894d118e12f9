#include "VorselKelpSystem/NotificationStore.h"

#include <cmath>

#include "VorselKelpPosix/LineSink.h"
#include "VorselKelpPosix/SafeName.h"
#include "VorselKelpSystem/NotificationRecords.h"
#include "notifications/CategoryFile.h"
#include "notifications/NotificationDatabase.h"
#include "notifications/NotificationShelf.h"
#include "notifications/Patience.h"
#include "notifications/ResponseShelf.h"

namespace VorselKelp::system {
namespace {

using State = NotificationShelf::State;

void ensureApplication(Connection& database, const std::string& application) {
  Statement(database, "INSERT OR IGNORE INTO application(identifier) VALUES(?1)").bind(1, application).run();
}

/// What a phone takes; anything else would never come, or come without an end.
bool isPossible(const platform::TimeIntervalTrigger& trigger) {
  return std::isfinite(trigger.seconds) && trigger.seconds > 0 && (!trigger.repeats || trigger.seconds >= 60);
}

Error notKept(const platform::NotificationRequest& request, const Error& error) {
  return {"The notification \"" + request.identifier + "\" is not kept. " + error.description, error.code};
}

Error unusableCategories(const Error& error) {
  return {"Cannot use the notification categories " + error.description, error.code};
}

/// Tells what was lost to a failure that nobody else will tell.
void report(const std::string& loss, const Status& status) {
  if (!status) posix::standardErrorLines()(loss + ". " + status.error().description);
}

}  // namespace

NotificationStore::NotificationStore(const std::string& folder, std::string application,
                                     std::shared_ptr<platform::Clock> clock)
    : application_(std::move(application)),
      clock_(std::move(clock)),
      patience_(std::make_unique<Patience>()),
      database_(std::make_unique<NotificationDatabase>(folder + "/notifications.sqlite", *patience_)),
      categories_(std::make_unique<CategoryFile>(folder + "/" + posix::safeName(application_) + ".categories",
                                                 *patience_)),
      shelf_(std::make_unique<NotificationShelf>(application_, folder + "/attachments")),
      responses_(std::make_unique<ResponseShelf>(application_)) {}

NotificationStore::~NotificationStore() = default;

Status NotificationStore::open() {
  return database_->open();
}

void NotificationStore::stopWaiting() {
  patience_->end();
}

platform::AuthorizationStatus NotificationStore::authorization() {
  auto status = platform::AuthorizationStatus::notDetermined;
  use("The user's permission is not known", [&](Connection& database) {
    Statement row(database, "SELECT authorization FROM application WHERE identifier = ?1");
    if (row.bind(1, application_).step()) status = static_cast<platform::AuthorizationStatus>(row.integer(0));
  });
  return status;
}

void NotificationStore::setAuthorization(platform::AuthorizationStatus status) {
  transact("The user's permission is not kept", [&](Connection& database) {
    ensureApplication(database, application_);
    Statement(database, "UPDATE application SET authorization = ?2 WHERE identifier = ?1")
        .bind(1, application_)
        .bind(2, static_cast<std::int64_t>(status))
        .run();
  });
}

std::vector<platform::NotificationCategory> NotificationStore::categories() {
  auto read = categories_->read();
  if (read) return *std::move(read);
  report("The buttons of the notifications are not known", unusableCategories(read.error()));
  return {};
}

platform::NotificationCategory NotificationStore::category(const std::string& identifier) {
  auto found = categories_->find(identifier);
  if (found && *found) return **std::move(found);
  if (!found) report("The buttons of a notification are not known", unusableCategories(found.error()));
  return {identifier, {}, false};
}

std::vector<platform::NotificationAction> NotificationStore::actionsOf(const std::string& category) {
  return this->category(category).actions;
}

void NotificationStore::changeCategories(const std::vector<std::string>& removed,
                                         const std::vector<platform::NotificationCategory>& written,
                                         bool passing) {
  if (removed.empty() && written.empty()) return;
  const auto changed = categories_->change(removed, written, passing);
  if (!changed) report("The buttons of the notifications are not kept", unusableCategories(changed.error()));
}

Result<platform::NotificationRequest> NotificationStore::deliver(platform::NotificationRequest request) {
  return deliver(std::move(request), false);
}

Result<platform::NotificationRequest> NotificationStore::deliver(platform::NotificationRequest request,
                                                                 bool unshown) {
  const auto taken = shelf_->takeFiles(request.content);
  std::vector<platform::NotificationAttachment> used;
  const double time = clock_->now();
  const auto status = changeShelf([&](Connection& database) {
    shelf_->put(database, request, State::delivered, time, unshown);
    if (request.content.badge) writeBadge(database, application_, *request.content.badge);
    if (!taken.empty()) used = shelf_->filesInUse(database);
  });
  // Not with every notification: those without a picture are many, and have no part in it.
  if (status && !taken.empty()) shelf_->removeForgottenFiles(used);
  if (status) return request;
  shelf_->removeFiles(taken);
  return notKept(request, status.error());
}

Status NotificationStore::schedule(platform::NotificationRequest request) {
  if (!request.trigger) {
    bool shown = false;
    const auto read =
        database_->use([&](Connection& database) { shown = mayNotify(database, application_); });
    if (!read) return notKept(request, read.error());
    if (!shown) return Done{};
    const auto delivered = deliver(std::move(request), true);
    return delivered ? Status(Done{}) : delivered.error();
  }
  const double seconds = request.trigger->seconds;
  if (!isPossible(*request.trigger)) {
    return Error{"The notification \"" + request.identifier + "\" can't be scheduled in " +
                 std::to_string(seconds) + " seconds" +
                 (request.trigger->repeats ? " repeatedly; at least 60 are needed" : "")};
  }
  const auto taken = shelf_->takeFiles(request.content);
  const double time = clock_->now();
  const auto status = changeShelf(
      [&](Connection& database) { shelf_->put(database, request, State::pending, time + seconds); });
  if (status) return status;
  shelf_->removeFiles(taken);
  return notKept(request, status.error());
}

void NotificationStore::removePending(const std::vector<std::string>& identifiers) {
  const double time = clock_->now();
  changeOrReport("No notification is removed", [&](Connection& database) {
    shelf_->deliverDue(database, time);
    for (const auto& identifier : identifiers) shelf_->remove(database, identifier, State::pending);
  });
}

void NotificationStore::removeDelivered(const std::vector<std::string>& identifiers) {
  const double time = clock_->now();
  changeOrReport("No notification is removed", [&](Connection& database) {
    shelf_->deliverDue(database, time);
    for (const auto& identifier : identifiers) shelf_->remove(database, identifier, State::delivered);
  });
}

std::vector<HeldNotification> NotificationStore::delivered() {
  std::vector<HeldNotification> found;
  const double time = clock_->now();
  changeOrReport("The notifications are not known", [&](Connection& database) {
    shelf_->deliverDue(database, time);
    found = shelf_->list(database, State::delivered);
  });
  return found;
}

std::vector<HeldNotification> NotificationStore::pending() {
  std::vector<HeldNotification> found;
  const double time = clock_->now();
  changeOrReport("The notifications are not known", [&](Connection& database) {
    shelf_->deliverDue(database, time);
    found = shelf_->list(database, State::pending);
  });
  return found;
}

std::optional<platform::NotificationRequest> NotificationStore::tappable(const std::string& identifier) {
  std::optional<HeldNotification> held;
  const double time = clock_->now();
  changeOrReport("The notification \"" + identifier + "\" is not known", [&](Connection& database) {
    shelf_->deliverDue(database, time);
    held = shelf_->find(database, identifier, State::delivered);
    if (!held) held = shelf_->find(database, identifier, State::tapped);
  });
  if (!held) return std::nullopt;
  return std::move(held->request);
}

void NotificationStore::noteTapped(const std::string& identifier) {
  const double time = clock_->now();
  changeOrReport("The notification \"" + identifier + "\" is not taken away",
                 [&](Connection& database) { shelf_->markTapped(database, identifier, time); });
}

Status NotificationStore::keepResponse(const std::string& identifier, const std::string& action,
                                       const std::optional<std::string>& text) {
  bool kept = false;
  const double time = clock_->now();
  auto status = changeShelf([&](Connection& database) {
    shelf_->deliverDue(database, time);
    kept = responses_->put(database, identifier, action, text);
  });
  if (status && !kept) return Error{"There is no notification \"" + identifier + "\""};
  return status;
}

std::vector<KeptResponse> NotificationStore::takeResponses() {
  std::vector<KeptResponse> taken;
  const auto status = database_->transact([&](Connection& database) { taken = responses_->take(database); });
  report("The responses are not taken", status);
  // What could not be taken out is another one's to take.
  return status ? taken : std::vector<KeptResponse>();
}

std::optional<KeptResponse> NotificationStore::takeResponse(const std::string& identifier,
                                                            const std::string& action) {
  std::optional<KeptResponse> taken;
  const auto status = database_->transact(
      [&](Connection& database) { taken = responses_->take(database, identifier, action); });
  report("The response to \"" + identifier + "\" is not taken", status);
  return status ? taken : std::nullopt;
}

std::optional<KeptResponse> NotificationStore::claimResponse(const std::string& identifier,
                                                             const std::string& action) {
  std::optional<KeptResponse> taken;
  const auto status = database_->transact([&](Connection& database) {
    taken = responses_->take(database, identifier, action);
    if (taken) return;
    auto held = shelf_->find(database, identifier, State::delivered);
    if (held) taken = KeptResponse{{std::move(held->request), action}, std::nullopt};
  });
  report("The response to \"" + identifier + "\" is not taken", status);
  return status ? taken : std::nullopt;
}

Status NotificationStore::forget() {
  const auto status = changeShelf([&](Connection& database) { shelf_->clear(database); });
  if (!status) return status;
  std::vector<std::string> known;
  for (auto& category : categories()) known.push_back(std::move(category.identifier));
  changeCategories(known, {});
  return Done{};
}

std::int64_t NotificationStore::badge() {
  std::int64_t badge = 0;
  use("The badge is not known", [&](Connection& database) {
    Statement row(database, "SELECT badge FROM application WHERE identifier = ?1");
    if (row.bind(1, application_).step()) badge = row.integer(0);
  });
  return badge;
}

void NotificationStore::setBadge(std::int64_t badge) {
  transact("The badge is not kept", [&](Connection& database) { writeBadge(database, application_, badge); });
}

Status NotificationStore::deliverDue() {
  const double time = clock_->now();
  return changeShelf([&](Connection& database) { shelf_->deliverDue(database, time); });
}

Result<std::vector<HeldNotification>> NotificationStore::takeDue(bool refusedToo) {
  const double time = clock_->now();
  std::vector<HeldNotification> taken;
  const auto status = changeShelf([&](Connection& database) {
    shelf_->deliverDue(database, time);
    taken = shelf_->takeUnshown(database, refusedToo);
  });
  if (!status) return status.error();
  return taken;
}

void NotificationStore::putBack(const HeldNotification& taken) {
  transact("The notification \"" + taken.request.identifier + "\" is not shown again",
           [&](Connection& database) { shelf_->putBack(database, taken); });
}

Result<std::optional<double>> NotificationStore::nextDue() {
  std::optional<double> next;
  const auto read = database_->use([&](Connection& database) { next = shelf_->nextDue(database); });
  if (!read) return read.error();
  return next;
}

Status NotificationStore::changeShelf(platform::FunctionRef<void(Connection&)> work) {
  std::vector<platform::NotificationAttachment> released;
  auto status = database_->transact([&](Connection& database) {
    work(database);
    released = shelf_->takeReleased();
  });
  // What still stands in the database keeps its files.
  if (status) shelf_->removeFiles(released);
  return status;
}

void NotificationStore::changeOrReport(const std::string& loss,
                                       platform::FunctionRef<void(Connection&)> work) {
  report(loss, changeShelf(work));
}

void NotificationStore::use(const std::string& loss, platform::FunctionRef<void(Connection&)> work) {
  report(loss, database_->use(work));
}

void NotificationStore::transact(const std::string& loss, platform::FunctionRef<void(Connection&)> work) {
  report(loss, database_->transact(work));
}

}  // namespace VorselKelp::system
