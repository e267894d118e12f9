#include "notifications/ResponseShelf.h"

#include "notifications/NotificationShelf.h"

namespace VorselKelp::system {
namespace {

constexpr const char* responseColumns =
    "SELECT serial, identifier, action, input, content, userInfo, infoIsBytes FROM response WHERE "
    "application = ?1";
// What a program that never starts again leaves behind.
constexpr std::int64_t responsesKept = 100;

KeptResponse readResponse(const Statement& row) {
  KeptResponse kept;
  kept.response.request.identifier = row.text(1);
  kept.response.actionIdentifier = row.text(2);
  if (!row.isNull(3)) kept.text = row.text(3);
  kept.response.request.content = readContent(row, 4);
  return kept;
}

}  // namespace

bool ResponseShelf::put(Connection& database, const std::string& identifier, const std::string& action,
                        const std::optional<std::string>& text) const {
  Statement written(database,
                    "INSERT OR REPLACE INTO response(application, identifier, action, input, content, "
                    "userInfo, infoIsBytes) SELECT application, identifier, ?3, ?4, content, userInfo, "
                    "infoIsBytes FROM notification WHERE application = ?1 AND identifier = ?2 AND "
                    "state IN (1, 2) ORDER BY state LIMIT 1 RETURNING serial");
  written.bind(1, application_).bind(2, identifier).bind(3, action);
  if (text) written.bind(4, *text);
  if (!written.step()) return false;
  written.run();
  Statement(database,
            "DELETE FROM response WHERE serial IN (SELECT serial FROM response WHERE application = ?1 "
            "ORDER BY serial DESC LIMIT -1 OFFSET ?2)")
      .bind(1, application_)
      .bind(2, responsesKept)
      .run();
  return true;
}

std::vector<KeptResponse> ResponseShelf::take(Connection& database) const {
  std::vector<KeptResponse> taken;
  Statement rows(database, (std::string(responseColumns) + " ORDER BY serial").c_str());
  rows.bind(1, application_);
  while (rows.step()) taken.push_back(readResponse(rows));
  if (!taken.empty())
    Statement(database, "DELETE FROM response WHERE application = ?1").bind(1, application_).run();
  return taken;
}

std::optional<KeptResponse> ResponseShelf::take(Connection& database, const std::string& identifier,
                                                const std::string& action) const {
  Statement row(database, (std::string(responseColumns) + " AND identifier = ?2 AND action = ?3").c_str());
  row.bind(1, application_).bind(2, identifier).bind(3, action);
  if (!row.step()) return std::nullopt;
  auto taken = readResponse(row);
  Statement(database, "DELETE FROM response WHERE serial = ?1").bind(1, row.integer(0)).run();
  return taken;
}

}  // namespace VorselKelp::system
