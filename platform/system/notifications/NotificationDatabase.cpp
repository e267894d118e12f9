#include "notifications/NotificationDatabase.h"

#include <utility>

namespace VorselKelp::system {
namespace {

/// A disk that damages whatever is written to it must not be fed fresh databases for ever.
constexpr int mostReplacements = 3;

}  // namespace

Status NotificationDatabase::open() {
  const std::lock_guard lock(mutex_);
  return openLocked();
}

Status NotificationDatabase::openLocked() {
  if (database_ && !damage_ && file_.isCurrent(*database_)) return Done{};
  close();
  if (damage_ && replacements_ == mostReplacements)
    return file_.unusable("it is damaged again and again (" + damage_->reason + ")", 0);
  auto opened = damage_ ? file_.replace(damage_->file, damage_->reason) : file_.open();
  if (!opened) return opened.error();
  if (std::exchange(damage_, std::nullopt)) ++replacements_;
  database_ = *std::move(opened);
  return Done{};
}

void NotificationDatabase::close() {
  if (database_ && !damage_ && file_.isCurrent(*database_)) database_->settleLog();
  database_ = nullptr;
}

Status NotificationDatabase::failed(const std::string& reason, int code) {
  if (isDamage(code)) damage_ = Damage{database_->identity(), reason};
  return file_.unusable(reason, code);
}

Status NotificationDatabase::run(Connection& connection, platform::FunctionRef<void(Connection&)> work) {
  work(connection);
  if (!connection.failure) return Done{};
  return failed(connection.failure->description, connection.failure->code);
}

Status NotificationDatabase::use(platform::FunctionRef<void(Connection&)> work) {
  const std::lock_guard lock(mutex_);
  if (auto opened = openLocked(); !opened) return opened;
  auto connection = database_->connection();
  return run(connection, work);
}

Status NotificationDatabase::transact(platform::FunctionRef<void(Connection&)> work) {
  const std::lock_guard lock(mutex_);
  if (auto opened = openLocked(); !opened) return opened;
  auto connection = database_->connection();
  const auto execute = [&](const char* sql) {
    return run(connection, [sql](Connection& database) { Statement(database, sql).run(); });
  };
  if (auto begun = execute("BEGIN IMMEDIATE"); !begun) return begun;
  auto status = run(connection, work);
  if (status) status = execute("COMMIT");
  if (!status) sqlite3_exec(connection.handle, "ROLLBACK", nullptr, nullptr, nullptr);
  return status;
}

}  // namespace VorselKelp::system
