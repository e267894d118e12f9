#include "notifications/NotificationShelf.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "VorselKelpSystem/NotificationRecords.h"

namespace VorselKelp::system {
namespace {

using platform::NotificationRequest;
using State = NotificationShelf::State;

constexpr const char* columns = "SELECT identifier, due, seconds, repeats, content, userInfo, infoIsBytes";
// What the column "unshown" says; 0: somebody has taken it.
constexpr std::int64_t unshown = 1;
constexpr std::int64_t refused = 2;
// Nobody reads further back, and each may have files.
constexpr std::int64_t deliveredKept = 256;
// Taps may cross; older ones than these are over.
constexpr std::int64_t tappedKept = 100;

std::int64_t number(State state) {
  return static_cast<std::int64_t>(state);
}

platform::UserInfo readUserInfo(std::string bytes, bool asBytes) {
  if (asBytes) return platform::UserInfo::fromJSON(std::move(bytes));
  auto json = JSONAny::decode(bytes);
  if (!json) return {};
  auto* dictionary = std::get_if<JSONAny::Dictionary>(&json->value);
  return dictionary != nullptr ? platform::UserInfo(std::move(*dictionary)) : platform::UserInfo();
}

HeldNotification readRow(Statement& row) {
  HeldNotification held;
  held.request.identifier = row.text(0);
  held.due = row.real(1);
  if (!row.isNull(2)) held.request.trigger = {row.real(2), row.integer(3) != 0};
  held.request.content = readContent(row, 4);
  return held;
}

}  // namespace

platform::NotificationContent readContent(const Statement& row, int column) {
  const auto json = JSONAny::decode(row.text(column));
  auto content = json ? decodeContent(*json) : platform::NotificationContent();
  // A power cut may take a file along, or bring a notification back whose files had gone.
  std::erase_if(content.attachments, [](const auto& file) { return ::access(file.path.c_str(), F_OK) != 0; });
  content.userInfo = readUserInfo(row.text(column + 1), row.integer(column + 2) != 0);
  return content;
}

void writeBadge(Connection& database, const std::string& application, std::int64_t badge) {
  Statement(database,
            "INSERT INTO application(identifier, badge) VALUES(?1, ?2) "
            "ON CONFLICT(identifier) DO UPDATE SET badge = ?2")
      .bind(1, application)
      .bind(2, badge)
      .run();
}

bool mayNotify(Connection& database, const std::string& application) {
  Statement row(database, "SELECT authorization FROM application WHERE identifier = ?1");
  if (!row.bind(1, application).step()) return false;
  const auto status = static_cast<platform::AuthorizationStatus>(row.integer(0));
  return status != platform::AuthorizationStatus::notDetermined &&
         status != platform::AuthorizationStatus::denied;
}

void NotificationShelf::insert(Connection& database, const NotificationRequest& request, State state,
                               double due, bool unshown) const {
  const auto& info = request.content.userInfo;
  const std::string infoText =
      info.bytes() != nullptr ? *info.bytes() : encodeLossy(JSONAny(JSONAny::Dictionary(*info.dictionary())));
  Statement row(database,
                "INSERT INTO notification(application, identifier, state, due, seconds, repeats, content, "
                "userInfo, infoIsBytes, unshown) VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10)");
  row.bind(1, application_).bind(2, request.identifier).bind(3, number(state)).bind(4, due);
  if (request.trigger) row.bind(5, request.trigger->seconds).bind(6, std::int64_t{request.trigger->repeats});
  row.bind(7, encodeLossy(encodeContent(request.content))).bind(8, infoText);
  row.bind(9, std::int64_t{info.bytes() != nullptr}).bind(10, std::int64_t{unshown}).run();
}

void NotificationShelf::put(Connection& database, const NotificationRequest& request, State state, double due,
                            bool unshown) {
  for (const auto old : {State::pending, State::delivered, State::tapped})
    remove(database, request.identifier, old);
  insert(database, request, state, due, unshown);
  keepUsed(database, request.identifier);
  if (state == State::delivered) removeOldest(database);
}

void NotificationShelf::removeOldest(Connection& database) {
  std::vector<std::string> old;
  {
    Statement rows(database,
                   "SELECT identifier FROM notification WHERE application = ?1 AND state = ?2 "
                   "ORDER BY due DESC, serial DESC LIMIT -1 OFFSET ?3");
    rows.bind(1, application_).bind(2, number(State::delivered)).bind(3, deliveredKept);
    while (rows.step()) old.push_back(rows.text(0));
  }
  for (const auto& identifier : old) remove(database, identifier, State::delivered);
}

void NotificationShelf::remove(Connection& database, const std::string& identifier, State state) {
  const auto held = find(database, identifier, state);
  if (!held) return;
  Statement(database, "DELETE FROM notification WHERE application = ?1 AND identifier = ?2 AND state = ?3")
      .bind(1, application_)
      .bind(2, identifier)
      .bind(3, number(state))
      .run();
  for (const auto& file : held->request.content.attachments) released_.push_back(file);
  keepUsed(database, identifier);
}

void NotificationShelf::clear(Connection& database) {
  for (const auto state : {State::pending, State::delivered}) {
    for (const auto& held : list(database, state))
      released_.insert(released_.end(), held.request.content.attachments.begin(),
                       held.request.content.attachments.end());
  }
  for (const char* sql :
       {"DELETE FROM notification WHERE application = ?1", "DELETE FROM response WHERE application = ?1",
        "DELETE FROM application WHERE identifier = ?1"})
    Statement(database, sql).bind(1, application_).run();
}

void NotificationShelf::keepUsed(Connection& database, const std::string& identifier) {
  // A repeating notification shares its files with those of its kind that were delivered.
  for (const auto state : {State::pending, State::delivered}) {
    const auto held = find(database, identifier, state);
    if (!held) continue;
    std::erase_if(released_, [&](const auto& released) {
      const auto& used = held->request.content.attachments;
      return std::any_of(used.begin(), used.end(),
                         [&](const auto& file) { return file.path == released.path; });
    });
  }
}

void NotificationShelf::markTapped(Connection& database, const std::string& identifier, double now) {
  auto held = find(database, identifier, State::delivered);
  if (!held) return;
  remove(database, identifier, State::delivered);
  remove(database, identifier, State::tapped);
  held->request.content.attachments.clear();
  insert(database, held->request, State::tapped, now);
  Statement(database,
            "DELETE FROM notification WHERE serial IN (SELECT serial FROM notification "
            "WHERE application = ?1 AND state = ?2 ORDER BY due DESC, serial DESC LIMIT -1 OFFSET ?3)")
      .bind(1, application_)
      .bind(2, number(State::tapped))
      .bind(3, tappedKept)
      .run();
}

void NotificationShelf::deliverDue(Connection& database, double now) {
  bool delivered = false;
  for (auto& held : list(database, State::pending)) {
    if (held.due > now) break;
    auto& request = held.request;
    const auto trigger = request.trigger;
    const bool repeats = trigger && trigger->repeats && trigger->seconds > 0;
    const double missed = repeats ? std::floor((now - held.due) / trigger->seconds) : 0;
    const double last = repeats ? held.due + missed * trigger->seconds : held.due;
    remove(database, request.identifier, State::delivered);
    remove(database, request.identifier, State::tapped);
    remove(database, request.identifier, State::pending);
    if (repeats) insert(database, request, State::pending, last + trigger->seconds);
    const bool shown = mayNotify(database, application_);
    if (shown) insert(database, request, State::delivered, last, true);
    keepUsed(database, request.identifier);
    if (shown && request.content.badge) writeBadge(database, application_, *request.content.badge);
    delivered = delivered || shown;
  }
  if (delivered) removeOldest(database);
}

std::vector<HeldNotification> NotificationShelf::takeUnshown(Connection& database, bool refusedToo) {
  std::vector<HeldNotification> taken;
  const auto highest = refusedToo ? refused : unshown;
  {
    Statement rows(database,
                   (std::string(columns) + " FROM notification WHERE application = ?1 AND state = ?2 "
                                           "AND unshown BETWEEN 1 AND ?3 ORDER BY due, serial")
                       .c_str());
    rows.bind(1, application_).bind(2, number(State::delivered)).bind(3, highest);
    while (rows.step()) taken.push_back(readRow(rows));
  }
  if (taken.empty()) return taken;
  Statement(database,
            "UPDATE notification SET unshown = 0 WHERE application = ?1 AND state = ?2 AND unshown <= ?3")
      .bind(1, application_)
      .bind(2, number(State::delivered))
      .bind(3, highest)
      .run();
  return taken;
}

void NotificationShelf::putBack(Connection& database, const HeldNotification& taken) {
  Statement(database,
            "UPDATE notification SET unshown = ?5 WHERE application = ?1 AND identifier = ?2 AND state = ?3 "
            "AND due = ?4")
      .bind(1, application_)
      .bind(2, taken.request.identifier)
      .bind(3, number(State::delivered))
      .bind(4, taken.due)
      .bind(5, refused)
      .run();
}

std::optional<double> NotificationShelf::nextDue(Connection& database) const {
  Statement row(database, "SELECT min(due) FROM notification WHERE application = ?1 AND state = ?2");
  row.bind(1, application_).bind(2, number(State::pending));
  if (!row.step() || row.isNull(0)) return std::nullopt;
  return row.real(0);
}

std::vector<HeldNotification> NotificationShelf::list(Connection& database, State state) const {
  std::vector<HeldNotification> found;
  Statement rows(database, (std::string(columns) +
                            " FROM notification WHERE application = ?1 AND state = ?2 ORDER BY due, serial")
                               .c_str());
  rows.bind(1, application_).bind(2, number(state));
  while (rows.step()) found.push_back(readRow(rows));
  return found;
}

std::optional<HeldNotification> NotificationShelf::find(Connection& database, const std::string& identifier,
                                                        State state) const {
  Statement rows(database, (std::string(columns) +
                            " FROM notification WHERE application = ?1 AND identifier = ?2 AND state = ?3")
                               .c_str());
  rows.bind(1, application_).bind(2, identifier).bind(3, number(state));
  if (!rows.step()) return std::nullopt;
  return readRow(rows);
}

std::vector<platform::NotificationAttachment> NotificationShelf::filesInUse(Connection& database) const {
  std::vector<platform::NotificationAttachment> used;
  Statement rows(database, "SELECT content FROM notification");
  while (rows.step()) {
    const auto json = JSONAny::decode(rows.text(0));
    if (!json) continue;
    for (auto& file : decodeContent(*json).attachments) used.push_back(std::move(file));
  }
  return used;
}

std::vector<platform::NotificationAttachment> NotificationShelf::takeReleased() {
  return std::exchange(released_, {});
}

}  // namespace VorselKelp::system
