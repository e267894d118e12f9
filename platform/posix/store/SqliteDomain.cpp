#include "store/SqliteDomain.h"

#include <sqlite3.h>

#include <exception>
#include <utility>

namespace VorselKelp::posix {
namespace {

using platform::DefaultsValue;
using platform::EntryPath;
using platform::MapKind;

/// A disk that damages whatever is written to it must not be fed fresh stores for ever.
constexpr int mostReplacements = 3;

constexpr std::chrono::seconds lookingInterval{1};

/// What a short-lived process leaves in the log is read by the next one as a whole. From this many pages on
/// it is dearer to read than to take in, with its two or three waits for the disk, once in so many
/// deliveries.
constexpr int longLog = 48;

/// Whether it is this process's turn. In a burst the log can't be emptied, for there is always somebody who
/// reads it: it is tried each time when it has grown so much again, and not by everyone.
bool hasPassedLongLog(const Database& database) {
  return database.logPages() / longLog > (database.logPages() - database.ownLogPages()) / longLog;
}

}  // namespace

SqliteDomain::SqliteDomain(StoreFile file, Opening opening, std::shared_ptr<Flusher> flusher)
    : file_(std::move(file)), flusher_(std::move(flusher)), opened_(opening == Opening::now) {
  if (opened_) store_ = file_.open();
}

SqliteDomain::~SqliteDomain() {
  if (store_.database) {
    if (!store_.readOnly) settleLog();
    store_.database->close();
  }
  if (flusher_) flusher_->finish(file_.logPath());
}

/// The log is found by its name: that of a file which was moved away is left alone.
void SqliteDomain::settleLog() {
  auto& database = *store_.database;
  database.endReading();
  const bool takeIn = !file_.shortLived() || hasPassedLongLog(database);
  if (takeIn && file_.isCurrent(store_) && database.takeLogIn()) return;
  if (unsynchronized_) flushLog(file_.logPath());
}

template <class Work>
std::optional<DefaultsValue> SqliteDomain::read(Work work) {
  const std::lock_guard lock(mutex_);
  if (!ready(false)) return {};
  auto value = work(DefaultsStore(*store_.database));
  noteError();
  if (depth_ == 0) store_.database->endReading();
  return value;
}

template <class Work>
void SqliteDomain::write(Work work) {
  const std::lock_guard lock(mutex_);
  if (!ready(true) || dropping_) return;
  if (depth_ == 0) store_.database->endReading();
  work(DefaultsStore(*store_.database));
  noteError();
}

std::optional<DefaultsValue> SqliteDomain::object(std::string_view key) {
  return read([&](DefaultsStore store) { return store.object(key); });
}

void SqliteDomain::setObject(std::string_view key, DefaultsValue value) {
  if (!isStorable(value)) {
    const std::lock_guard lock(mutex_);
    file_.report("a map nested too deep was not stored");
    return;
  }
  write([&](DefaultsStore store) { store.setObject(key, value); });
}

void SqliteDomain::removeObject(std::string_view key) {
  write([&](DefaultsStore store) { store.removeObject(key); });
}

std::optional<DefaultsValue> SqliteDomain::mapEntry(std::string_view key, EntryPath path, MapKind kind) {
  return read([&](DefaultsStore store) { return store.mapEntry(key, path, kind); });
}

void SqliteDomain::setMapEntry(std::string_view key, EntryPath path, MapKind kind, DefaultsValue value) {
  if (!isEntryOf(kind, value)) {
    const std::lock_guard lock(mutex_);
    file_.report("an entry of another type than its map's was not stored");
    return;
  }
  write([&](DefaultsStore store) { store.setMapEntry(key, path, kind, value); });
}

void SqliteDomain::removeMapEntry(std::string_view key, EntryPath path, MapKind kind) {
  write([&](DefaultsStore store) { store.removeMapEntry(key, path, kind); });
}

bool SqliteDomain::transact(platform::FunctionRef<void()> work) {
  const std::lock_guard lock(mutex_);
  if (depth_ > 0 || !ready(true)) {
    work();
    return depth_ > 0 && !dropping_;
  }
  store_.database->endReading();
  const bool begun = Database::Query(*store_.database, Sql::begin).run();
  dropping_ = !begun;
  noteError();

  // A scope object, so that a throwing `work` leaves no transaction open, and nothing of its half done.
  struct Scope {
    SqliteDomain& domain;
    const bool begun;
    bool& committed;
    const int exceptions = std::uncaught_exceptions();
    Scope(SqliteDomain& d, bool b, bool& c) : domain(d), begun(b), committed(c) { ++domain.depth_; }
    ~Scope() {
      if (std::uncaught_exceptions() > exceptions) domain.dropping_ = true;
      committed = domain.endTransaction(begun);
    }
  };
  bool committed = false;
  {
    const Scope scope(*this, begun, committed);
    work();
  }
  return committed;
}

bool SqliteDomain::endTransaction(bool begun) {
  auto& database = *store_.database;
  const bool committed = begun && !dropping_ && Database::Query(database, Sql::commit).run();
  if (begun && !committed) database.rollback();
  --depth_;
  dropping_ = false;
  noteError();
  if (std::exchange(synchronizeAfter_, false)) makeDurable();
  return committed;
}

void SqliteDomain::synchronize() {
  const std::lock_guard lock(mutex_);
  if (!store_.database) return;
  if (depth_ > 0) {
    synchronizeAfter_ = true;
  } else {
    makeDurable();
  }
}

void SqliteDomain::makeDurable() {
  if (flusher_) {
    flusher_->request(file_.logPath());
  } else {
    unsynchronized_ = true;
  }
}

/// True when there is a database to use.
bool SqliteDomain::ready(bool forWriting) {
  if (!opened_ && (forWriting || !file_.isMissing())) {
    opened_ = true;
    store_ = file_.open();
  }
  if (depth_ == 0 && store_.database) {
    if (damaged_) {
      replaceDamaged();
    } else {
      followFile();
    }
  }
  return store_.database != nullptr;
}

void SqliteDomain::replaceDamaged() {
  damaged_ = false;
  store_.database->close();
  if (++replacements_ <= mostReplacements) {
    store_ = file_.replace(store_, damage_);
  } else {
    store_ = {};
    file_.report("is damaged again and again (" + damage_ + "); it is not used any more");
  }
}

/// Another process may have found the store damaged and put a fresh one in its place. Looked at now and then.
void SqliteDomain::followFile() {
  const auto now = std::chrono::steady_clock::now();
  if (now - lastLook_ < lookingInterval) return;
  lastLook_ = now;
  if (file_.isCurrent(store_)) return;
  store_.database->close();
  store_ = file_.open();
}

/// After an error inside a transaction the rest of its writes are dropped and all of it is undone at its end.
void SqliteDomain::noteError() {
  const int code = store_.database->takeError();
  if (code == SQLITE_OK) return;
  if (depth_ > 0) dropping_ = true;
  const int primary = code & 0xff;
  if ((primary == SQLITE_CORRUPT || primary == SQLITE_NOTADB) && !store_.readOnly) {
    damaged_ = true;
    damage_ = store_.database->reason();
  } else {
    reportOnce(primary);
  }
}

void SqliteDomain::reportOnce(int code) {
  if (!reported_.insert(code).second) return;
  file_.report(store_.database->reason() + "; what can't be written is dropped");
}

}  // namespace VorselKelp::posix
