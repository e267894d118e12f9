#include "VorselKelpLinux/SimulatedDevice.h"

#include <chrono>

#include "VorselKelpLinux/DeviceHome.h"
#include "VorselKelpLinux/NotificationRecords.h"
#include "device/DeviceDatabase.h"
#include "device/NotificationShelf.h"
#include "runtime/SystemRandom.h"

namespace VorselKelp::linux_platform {
namespace {

using State = NotificationShelf::State;
constexpr std::size_t tokenBytes = 32;

double machineTime() {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

double readOffset(sqlite3* database) {
  Statement row(database, "SELECT value FROM device WHERE name = 'clockOffset'");
  return row.step() ? row.real(0) : 0;
}

double deviceTime(sqlite3* database) {
  return machineTime() + readOffset(database);
}

void ensureApplication(sqlite3* database, const std::string& application) {
  Statement(database, "INSERT OR IGNORE INTO application(identifier) VALUES(?1)").bind(1, application).run();
}

}  // namespace

SimulatedDevice::SimulatedDevice(const DeviceHome& home, std::string application)
    : application_(std::move(application)),
      database_(std::make_unique<DeviceDatabase>(home.database())),
      shelf_(std::make_unique<NotificationShelf>(application_, home.attachments())) {}

SimulatedDevice::~SimulatedDevice() = default;

Status SimulatedDevice::open() {
  return database_->open();
}

platform::AuthorizationStatus SimulatedDevice::authorization() {
  auto status = platform::AuthorizationStatus::notDetermined;
  database_->use([&](sqlite3* database) {
    Statement row(database, "SELECT authorization FROM application WHERE identifier = ?1");
    if (row.bind(1, application_).step()) status = static_cast<platform::AuthorizationStatus>(row.integer(0));
  });
  return status;
}

void SimulatedDevice::setAuthorization(platform::AuthorizationStatus status) {
  database_->transact([&](sqlite3* database) {
    ensureApplication(database, application_);
    Statement(database, "UPDATE application SET authorization = ?2 WHERE identifier = ?1")
        .bind(1, application_)
        .bind(2, static_cast<std::int64_t>(status))
        .run();
  });
}

Result<std::string> SimulatedDevice::registerForRemoteNotifications() {
  std::string token;
  database_->transact([&](sqlite3* database) {
    ensureApplication(database, application_);
    Statement(database,
              "UPDATE application SET registered = 1, token = coalesce(token, ?2) WHERE identifier = ?1")
        .bind(1, application_)
        .bind(2, randomBytes(tokenBytes))
        .run();
    Statement row(database, "SELECT token FROM application WHERE identifier = ?1");
    if (row.bind(1, application_).step()) token = row.text(0);
  });
  if (token.size() != tokenBytes) return Error{"the device could not make a token"};
  return token;
}

void SimulatedDevice::unregisterForRemoteNotifications() {
  database_->transact([&](sqlite3* database) {
    Statement(database, "UPDATE application SET registered = 0 WHERE identifier = ?1")
        .bind(1, application_)
        .run();
  });
}

std::optional<std::string> SimulatedDevice::remoteToken() {
  std::optional<std::string> token;
  database_->use([&](sqlite3* database) {
    Statement row(database, "SELECT token FROM application WHERE identifier = ?1 AND registered");
    if (row.bind(1, application_).step()) token = row.text(0);
  });
  return token;
}

std::vector<platform::NotificationCategory> SimulatedDevice::categories() {
  std::vector<platform::NotificationCategory> found;
  database_->use([&](sqlite3* database) {
    Statement rows(database,
                   "SELECT identifier, actions, dismissAction FROM category WHERE application = ?1");
    rows.bind(1, application_);
    while (rows.step()) {
      auto& category = found.emplace_back();
      category.identifier = rows.text(0);
      const auto actions = rows.text(1);
      if (actions != "[]") {
        if (const auto json = JSONAny::decode(actions)) category.actions = decodeActions(*json);
      }
      category.customDismissAction = rows.integer(2) != 0;
    }
  });
  return found;
}

std::vector<platform::NotificationAction> SimulatedDevice::actionsOf(const std::string& category) {
  std::vector<platform::NotificationAction> actions;
  database_->use([&](sqlite3* database) {
    Statement row(database, "SELECT actions FROM category WHERE application = ?1 AND identifier = ?2");
    if (!row.bind(1, application_).bind(2, category).step()) return;
    if (const auto json = JSONAny::decode(row.text(0))) actions = decodeActions(*json);
  });
  return actions;
}

void SimulatedDevice::changeCategories(const std::vector<std::string>& removed,
                                       const std::vector<platform::NotificationCategory>& written) {
  if (removed.empty() && written.empty()) return;
  database_->transact([&](sqlite3* database) {
    Statement remove(database, "DELETE FROM category WHERE application = ?1 AND identifier = ?2");
    for (const auto& identifier : removed) remove.bind(1, application_).bind(2, identifier).run();
    Statement write(database, "INSERT OR REPLACE INTO category VALUES(?1, ?2, ?3, ?4)");
    for (const auto& category : written) {
      write.bind(1, application_).bind(2, category.identifier);
      write.bind(3, encodeLossy(encodeActions(category.actions)));
      write.bind(4, std::int64_t{category.customDismissAction}).run();
    }
  });
}

platform::NotificationRequest SimulatedDevice::deliver(platform::NotificationRequest request) {
  shelf_->takeFiles(request.content);
  changeShelf([&](sqlite3* database) {
    shelf_->put(database, request, State::delivered, deviceTime(database));
    if (request.content.badge) writeBadge(database, application_, *request.content.badge);
  });
  return request;
}

void SimulatedDevice::schedule(platform::NotificationRequest request) {
  if (!request.trigger) {
    deliver(std::move(request));
    return;
  }
  shelf_->takeFiles(request.content);
  changeShelf([&](sqlite3* database) {
    shelf_->put(database, request, State::pending, deviceTime(database) + request.trigger->seconds);
  });
}

void SimulatedDevice::removePending(const std::vector<std::string>& identifiers) {
  changeShelf([&](sqlite3* database) {
    shelf_->deliverDue(database, deviceTime(database));
    for (const auto& identifier : identifiers) shelf_->remove(database, identifier, State::pending);
  });
}

void SimulatedDevice::removeDelivered(const std::vector<std::string>& identifiers) {
  changeShelf([&](sqlite3* database) {
    shelf_->deliverDue(database, deviceTime(database));
    for (const auto& identifier : identifiers) shelf_->remove(database, identifier, State::delivered);
  });
}

std::vector<HeldNotification> SimulatedDevice::delivered() {
  std::vector<HeldNotification> found;
  changeShelf([&](sqlite3* database) {
    shelf_->deliverDue(database, deviceTime(database));
    found = shelf_->list(database, State::delivered);
  });
  return found;
}

std::vector<HeldNotification> SimulatedDevice::pending() {
  std::vector<HeldNotification> found;
  changeShelf([&](sqlite3* database) {
    shelf_->deliverDue(database, deviceTime(database));
    found = shelf_->list(database, State::pending);
  });
  return found;
}

std::optional<platform::NotificationRequest> SimulatedDevice::tappable(const std::string& identifier) {
  std::optional<HeldNotification> held;
  changeShelf([&](sqlite3* database) {
    shelf_->deliverDue(database, deviceTime(database));
    held = shelf_->find(database, identifier, State::delivered);
    if (!held) held = shelf_->find(database, identifier, State::tapped);
  });
  if (!held) return std::nullopt;
  return std::move(held->request);
}

void SimulatedDevice::noteTapped(const std::string& identifier) {
  changeShelf([&](sqlite3* database) { shelf_->markTapped(database, identifier, deviceTime(database)); });
}

std::int64_t SimulatedDevice::badge() {
  std::int64_t badge = 0;
  database_->use([&](sqlite3* database) {
    Statement row(database, "SELECT badge FROM application WHERE identifier = ?1");
    if (row.bind(1, application_).step()) badge = row.integer(0);
  });
  return badge;
}

void SimulatedDevice::setBadge(std::int64_t badge) {
  database_->transact([&](sqlite3* database) { writeBadge(database, application_, badge); });
}

double SimulatedDevice::clockOffset() {
  double offset = 0;
  database_->use([&](sqlite3* database) { offset = readOffset(database); });
  return offset;
}

void SimulatedDevice::advanceClock(double seconds) {
  database_->transact([&](sqlite3* database) {
    Statement(database, "INSERT OR REPLACE INTO device VALUES('clockOffset', ?1)")
        .bind(1, readOffset(database) + seconds)
        .run();
  });
}

void SimulatedDevice::changeShelf(platform::FunctionRef<void(sqlite3*)> work) {
  std::vector<platform::NotificationAttachment> released;
  database_->transact([&](sqlite3* database) {
    work(database);
    released = shelf_->takeReleased();
  });
  shelf_->removeFiles(released);
}

double SimulatedDevice::now() {
  return machineTime() + clockOffset();
}

}  // namespace VorselKelp::linux_platform
