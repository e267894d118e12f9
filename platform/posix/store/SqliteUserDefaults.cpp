#include "VorselKelpPosix/SqliteUserDefaults.h"

#include <map>
#include <mutex>
#include <utility>

#include "VorselKelpPosix/SafeName.h"
#include "store/SqliteDomain.h"

namespace VorselKelp::posix {
namespace {

class SqliteUserDefaults final : public platform::UserDefaults {
 public:
  explicit SqliteUserDefaults(UserDefaultsOptions options) : options_(std::move(options)) {
    if (!options_.report) options_.report = standardErrorLines();
  }

  std::shared_ptr<platform::DefaultsDomain> standard() override {
    const std::lock_guard lock(mutex_);
    return standardLocked();
  }

  std::shared_ptr<platform::DefaultsDomain> suite(std::string_view name) override {
    const std::lock_guard lock(mutex_);
    if (name.empty()) return standardLocked();
    if (const auto known = suites_.find(name); known != suites_.end()) return known->second;
    const auto container = options_.containerPath ? options_.containerPath(name) : std::nullopt;
    if (!container) return standardLocked();
    auto domain = domainAt(*container + "/Library/Preferences/" + safeName(name) + ".sqlite",
                           SqliteDomain::Opening::now);
    if (!domain->isOpen()) domain = nullptr;
    // A refusal is kept as well: the reason has been told, and a domain that appears later would split the
    // data.
    suites_.emplace(name, domain);
    return domain;
  }

 private:
  std::shared_ptr<platform::DefaultsDomain> standardLocked() {
    if (!standard_) standard_ = domainAt(options_.standardFile, SqliteDomain::Opening::byUse);
    return standard_;
  }

  std::shared_ptr<SqliteDomain> domainAt(const std::string& path, SqliteDomain::Opening opening) {
    return std::make_shared<SqliteDomain>(
        StoreFile(path, options_.shortLived, options_.lockPatience, options_.report), opening, flusher_);
  }

  std::mutex mutex_;
  UserDefaultsOptions options_;
  const std::shared_ptr<Flusher> flusher_ = options_.shortLived ? nullptr : std::make_shared<Flusher>();
  std::shared_ptr<SqliteDomain> standard_;
  std::map<std::string, std::shared_ptr<SqliteDomain>, std::less<>> suites_;
};

}  // namespace

std::shared_ptr<platform::UserDefaults> makeUserDefaults(UserDefaultsOptions options) {
  return std::make_shared<SqliteUserDefaults>(std::move(options));
}

}  // namespace VorselKelp::posix
