#include "VorselKelpSimulator/SimulatedDevice.h"

#include <chrono>
#include <cmath>

#include "VorselKelpPosix/SystemRandom.h"
#include "VorselKelpSimulator/DeviceHome.h"
#include "VorselKelpSimulator/NotificationRecords.h"
#include "device/CategoryFile.h"
#include "device/DeviceDatabase.h"
#include "device/NotificationShelf.h"

namespace VorselKelp::simulator {
namespace {

using State = NotificationShelf::State;
constexpr std::size_t tokenBytes = 32;

double machineTime() {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

double readOffset(Connection& database) {
  Statement row(database, "SELECT value FROM device WHERE name = 'clockOffset'");
  return row.step() ? row.real(0) : 0;
}

double deviceTime(Connection& database) {
  return machineTime() + readOffset(database);
}

void ensureApplication(Connection& database, const std::string& application) {
  Statement(database, "INSERT OR IGNORE INTO application(identifier) VALUES(?1)").bind(1, application).run();
}

/// What a phone takes; anything else would never come, or come without an end.
bool isPossible(const platform::TimeIntervalTrigger& trigger) {
  return std::isfinite(trigger.seconds) && trigger.seconds > 0 && (!trigger.repeats || trigger.seconds >= 60);
}

}  // namespace

SimulatedDevice::SimulatedDevice(const DeviceHome& home, std::string application)
    : application_(std::move(application)),
      database_(std::make_unique<DeviceDatabase>(home.database())),
      categories_(std::make_unique<CategoryFile>(home.categories(application_))),
      shelf_(std::make_unique<NotificationShelf>(application_, home.attachments())) {}

SimulatedDevice::~SimulatedDevice() = default;

Status SimulatedDevice::open() {
  return database_->open();
}

platform::AuthorizationStatus SimulatedDevice::authorization() {
  auto status = platform::AuthorizationStatus::notDetermined;
  use([&](Connection& database) {
    Statement row(database, "SELECT authorization FROM application WHERE identifier = ?1");
    if (row.bind(1, application_).step()) status = static_cast<platform::AuthorizationStatus>(row.integer(0));
  });
  return status;
}

void SimulatedDevice::setAuthorization(platform::AuthorizationStatus status) {
  transact([&](Connection& database) {
    ensureApplication(database, application_);
    Statement(database, "UPDATE application SET authorization = ?2 WHERE identifier = ?1")
        .bind(1, application_)
        .bind(2, static_cast<std::int64_t>(status))
        .run();
  });
}

Result<std::string> SimulatedDevice::registerForRemoteNotifications() {
  std::string token;
  const auto status = database_->transact([&](Connection& database) {
    ensureApplication(database, application_);
    Statement(database,
              "UPDATE application SET registered = 1, token = coalesce(token, ?2) WHERE identifier = ?1")
        .bind(1, application_)
        .bind(2, posix::randomBytes(tokenBytes))
        .run();
    Statement row(database, "SELECT token FROM application WHERE identifier = ?1");
    if (row.bind(1, application_).step()) token = row.text(0);
  });
  if (!status) return status.error();
  if (token.size() != tokenBytes) return Error{"the device could not make a token"};
  return token;
}

void SimulatedDevice::unregisterForRemoteNotifications() {
  transact([&](Connection& database) {
    Statement(database, "UPDATE application SET registered = 0 WHERE identifier = ?1")
        .bind(1, application_)
        .run();
  });
}

std::optional<std::string> SimulatedDevice::remoteToken() {
  std::optional<std::string> token;
  use([&](Connection& database) {
    Statement row(database, "SELECT token FROM application WHERE identifier = ?1 AND registered");
    if (row.bind(1, application_).step()) token = row.text(0);
  });
  return token;
}

std::vector<platform::NotificationCategory> SimulatedDevice::categories() {
  auto read = categories_->read();
  if (read) return *std::move(read);
  reportCategories(read.error());
  return {};
}

std::vector<platform::NotificationAction> SimulatedDevice::actionsOf(const std::string& category) {
  for (auto& known : categories()) {
    if (known.identifier == category) return std::move(known.actions);
  }
  return {};
}

void SimulatedDevice::changeCategories(const std::vector<std::string>& removed,
                                       const std::vector<platform::NotificationCategory>& written) {
  if (removed.empty() && written.empty()) return;
  reportCategories(categories_->change(removed, written));
}

Result<platform::NotificationRequest> SimulatedDevice::deliver(platform::NotificationRequest request) {
  const auto taken = shelf_->takeFiles(request.content);
  std::vector<platform::NotificationAttachment> used;
  const auto status = changeShelf([&](Connection& database) {
    shelf_->put(database, request, State::delivered, deviceTime(database));
    if (request.content.badge) writeBadge(database, application_, *request.content.badge);
    if (!taken.empty()) used = shelf_->filesInUse(database);
  });
  // Not with every notification: those without a picture are many, and have no part in it.
  if (status && !taken.empty()) shelf_->removeForgottenFiles(used);
  if (status) return request;
  shelf_->removeFiles(taken);
  return status.error();
}

Status SimulatedDevice::schedule(platform::NotificationRequest request) {
  if (!request.trigger) {
    bool shown = false;
    use([&](Connection& database) { shown = mayNotify(database, application_); });
    if (!shown) return Done{};
    const auto delivered = deliver(std::move(request));
    return delivered ? Status(Done{}) : delivered.error();
  }
  const double seconds = request.trigger->seconds;
  if (!isPossible(*request.trigger)) {
    return Error{"The notification \"" + request.identifier + "\" can't be scheduled in " +
                 std::to_string(seconds) + " seconds" +
                 (request.trigger->repeats ? " repeatedly; at least 60 are needed" : "")};
  }
  const auto taken = shelf_->takeFiles(request.content);
  auto status = changeShelf([&](Connection& database) {
    shelf_->put(database, request, State::pending, deviceTime(database) + seconds);
  });
  if (!status) shelf_->removeFiles(taken);
  return status;
}

void SimulatedDevice::removePending(const std::vector<std::string>& identifiers) {
  changeOrReport([&](Connection& database) {
    shelf_->deliverDue(database, deviceTime(database));
    for (const auto& identifier : identifiers) shelf_->remove(database, identifier, State::pending);
  });
}

void SimulatedDevice::removeDelivered(const std::vector<std::string>& identifiers) {
  changeOrReport([&](Connection& database) {
    shelf_->deliverDue(database, deviceTime(database));
    for (const auto& identifier : identifiers) shelf_->remove(database, identifier, State::delivered);
  });
}

std::vector<HeldNotification> SimulatedDevice::delivered() {
  std::vector<HeldNotification> found;
  changeOrReport([&](Connection& database) {
    shelf_->deliverDue(database, deviceTime(database));
    found = shelf_->list(database, State::delivered);
  });
  return found;
}

std::vector<HeldNotification> SimulatedDevice::pending() {
  std::vector<HeldNotification> found;
  changeOrReport([&](Connection& database) {
    shelf_->deliverDue(database, deviceTime(database));
    found = shelf_->list(database, State::pending);
  });
  return found;
}

std::optional<platform::NotificationRequest> SimulatedDevice::tappable(const std::string& identifier) {
  std::optional<HeldNotification> held;
  changeOrReport([&](Connection& database) {
    shelf_->deliverDue(database, deviceTime(database));
    held = shelf_->find(database, identifier, State::delivered);
    if (!held) held = shelf_->find(database, identifier, State::tapped);
  });
  if (!held) return std::nullopt;
  return std::move(held->request);
}

void SimulatedDevice::noteTapped(const std::string& identifier) {
  changeOrReport(
      [&](Connection& database) { shelf_->markTapped(database, identifier, deviceTime(database)); });
}

std::int64_t SimulatedDevice::badge() {
  std::int64_t badge = 0;
  use([&](Connection& database) {
    Statement row(database, "SELECT badge FROM application WHERE identifier = ?1");
    if (row.bind(1, application_).step()) badge = row.integer(0);
  });
  return badge;
}

void SimulatedDevice::setBadge(std::int64_t badge) {
  transact([&](Connection& database) { writeBadge(database, application_, badge); });
}

double SimulatedDevice::clockOffset() {
  double offset = 0;
  use([&](Connection& database) { offset = readOffset(database); });
  return offset;
}

Status SimulatedDevice::advanceClock(double seconds) {
  return changeShelf([&](Connection& database) {
    if (seconds != 0) {
      Statement(database, "INSERT OR REPLACE INTO device VALUES('clockOffset', ?1)")
          .bind(1, readOffset(database) + seconds)
          .run();
    }
    shelf_->deliverDue(database, deviceTime(database));
  });
}

double SimulatedDevice::now() {
  return machineTime() + clockOffset();
}

Status SimulatedDevice::changeShelf(platform::FunctionRef<void(Connection&)> work) {
  std::vector<platform::NotificationAttachment> released;
  auto status = database_->transact([&](Connection& database) {
    work(database);
    released = shelf_->takeReleased();
  });
  // What still stands in the database keeps its files.
  if (status) shelf_->removeFiles(released);
  return status;
}

void SimulatedDevice::changeOrReport(platform::FunctionRef<void(Connection&)> work) {
  database_->report(changeShelf(work));
}

void SimulatedDevice::reportCategories(const Status& status) {
  if (status) return;
  database_->report(Error{"Cannot use the simulated device's categories " + status.error().description,
                          status.error().code});
}

void SimulatedDevice::use(platform::FunctionRef<void(Connection&)> work) {
  database_->report(database_->use(work));
}

void SimulatedDevice::transact(platform::FunctionRef<void(Connection&)> work) {
  database_->report(database_->transact(work));
}

}  // namespace VorselKelp::simulator
