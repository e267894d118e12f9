#include "store/StoreFile.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "VorselKelpPosix/FileIO.h"
#include "VorselKelpPosix/LockFile.h"

namespace VorselKelp::posix {
namespace {

constexpr std::int64_t schemaVersion = 1;

/// The fresh store is invisible until it is renamed, so nothing has to survive while it is being made. Rows
/// are small, and a write copies whole pages: with pages of 2 KiB a set costs a sixth less than with 4 KiB.
constexpr const char* creation =
    "PRAGMA page_size = 2048;"
    "PRAGMA synchronous = OFF;"
    "PRAGMA journal_mode = WAL;"
    "BEGIN;"
    "CREATE TABLE object(key TEXT NOT NULL PRIMARY KEY, kind INTEGER NOT NULL, value) WITHOUT ROWID;"
    "CREATE TABLE entry(key TEXT NOT NULL, name TEXT NOT NULL, inner_name NOT NULL, kind INTEGER NOT NULL, "
    "value,"
    " PRIMARY KEY(key, name, inner_name)) WITHOUT ROWID;"
    "PRAGMA user_version = 1;"
    "COMMIT;"
    // Closing would take the log into the file as well, but never say that the disk had no room for it.
    "PRAGMA wal_checkpoint(TRUNCATE)";

bool isDamage(int code) {
  const int primary = code & 0xff;
  return primary == SQLITE_CORRUPT || primary == SQLITE_NOTADB;
}

/// The log and its index can't be written: the folder or the file system is read-only, or the disk is full.
bool forbidsWriting(int code) {
  const int primary = code & 0xff;
  return primary == SQLITE_CANTOPEN || primary == SQLITE_READONLY || primary == SQLITE_PERM ||
         primary == SQLITE_FULL || primary == SQLITE_IOERR;
}

std::string folderOf(const std::string& path) {
  return path.substr(0, path.rfind('/'));
}

/// A file name as a URI that SQLite reads without locks and without a log beside it.
std::string immutableUri(const std::string& path) {
  std::string uri = "file://";
  for (const char c : path) {
    if (c == '%' || c == '?' || c == '#') {
      static constexpr char digits[] = "0123456789abcdef";
      uri += {'%', digits[c >> 4], digits[c & 15]};
    } else {
      uri += c;
    }
  }
  return uri + "?immutable=1";
}

void removeWithLogs(const std::string& path) {
  for (const char* suffix : {"", "-wal", "-shm", "-journal"}) ::unlink((path + suffix).c_str());
}

}  // namespace

void StoreFile::report(const std::string& what) const {
  report_("user defaults " + path_ + ": " + what);
}

OpenStore StoreFile::open() {
  auto attempt = tryOpen();
  if (attempt.state == State::open) return std::move(attempt.store);
  if (attempt.state == State::failed) {
    report("can't be opened: " + attempt.reason);
    return {};
  }
  return openOrCreate(nullptr, {});
}

OpenStore StoreFile::replace(const OpenStore& damaged, const std::string& reason) {
  return openOrCreate(&damaged, reason);
}

/// `damaged` is a store known to be damaged although it can be opened.
OpenStore StoreFile::openOrCreate(const OpenStore* damaged, std::string reason) {
  if (const auto made = makeFolders(folderOf(path_)); !made) {
    report("can't be created: " + made.error().description);
    return {};
  }
  const auto lock = lockFile(path_ + ".lock", lockPatience_);
  if (!lock) {
    report("can't be created: " + lock.error().description);
    return {};
  }
  auto attempt = tryOpen();
  if (attempt.state == State::open && damaged && attempt.store.identity == damaged->identity) {
    attempt.store.database.reset();
    attempt.state = State::damaged;
    attempt.reason = std::move(reason);
  }
  const bool makeNew =
      (attempt.state == State::damaged && moveAside(attempt.reason)) || attempt.state == State::missing;
  if (makeNew && create()) attempt = tryOpen();
  if (attempt.state == State::failed) report("can't be opened: " + attempt.reason);
  return attempt.state == State::open ? std::move(attempt.store) : OpenStore{};
}

bool StoreFile::isMissing() const {
  struct stat status {};
  return ::stat(path_.c_str(), &status) != 0 && errno == ENOENT;
}

bool StoreFile::isCurrent(const OpenStore& store) const {
  struct stat status {};
  return ::stat(path_.c_str(), &status) == 0 && store.identity == FileIdentity{status.st_dev, status.st_ino};
}

/// SQLite finds the log by its name. A database that is moved aside while it is being opened would be read
/// together with the log of its successor, so whatever comes of such an opening does not count.
StoreFile::Attempt StoreFile::tryOpen() const {
  for (int attempts = 0; attempts < 100; ++attempts) {
    struct stat status {};
    if (::stat(path_.c_str(), &status) != 0) {
      return {errno == ENOENT ? State::missing : State::failed, {}, std::strerror(errno)};
    }
    if (!S_ISREG(status.st_mode)) return {State::failed, {}, "not a file"};
    if (status.st_size == 0) return {State::damaged, {}, "the file is empty"};

    // Only looked at from outside: closing a descriptor of the database file would drop the locks that
    // another connection of this process holds on it.
    auto attempt = tryOpenOnce();
    attempt.store.identity = {status.st_dev, status.st_ino};
    if (isCurrent(attempt.store)) return attempt;
  }
  return {State::failed, {}, "other processes keep replacing it"};
}

StoreFile::Attempt StoreFile::tryOpenOnce() const {
  auto database = std::make_unique<Database>(lockPatience_);
  database->open(path_, SQLITE_OPEN_READWRITE);
  // What is read first is read under the same lock, where it is read at once.
  database->execute("PRAGMA synchronous = NORMAL; BEGIN");
  const auto version = database->number("PRAGMA user_version");
  const int code = database->takeError();
  if (isDamage(code)) return {State::damaged, {}, database->reason()};
  if (forbidsWriting(code)) return tryOpenReadOnly(database->reason());
  if (code != SQLITE_OK) return {State::failed, {}, database->reason()};
  if (version > schemaVersion) return {State::failed, {}, "a newer version of this library made it"};
  if (version != schemaVersion) return {State::damaged, {}, "it is a database of something else"};
  if (!shortLived_) database->endReading();
  return {State::open, {std::move(database)}, {}};
}

/// Without a log the database alone can still be read.
StoreFile::Attempt StoreFile::tryOpenReadOnly(const std::string& reason) const {
  auto database = std::make_unique<Database>(lockPatience_);
  database->open(immutableUri(path_), SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
  const auto version = database->number("PRAGMA user_version");
  if (database->takeError() != SQLITE_OK || version != schemaVersion) return {State::failed, {}, reason};
  return {State::open, {std::move(database), true}, {}};
}

bool StoreFile::moveAside(const std::string& reason) const {
  const std::string aside = path_ + ".damaged";
  removeWithLogs(aside);
  if (::rename(path_.c_str(), aside.c_str()) != 0) {
    report("is damaged (" + reason + ") and can't be moved aside: " + std::strerror(errno));
    return false;
  }
  // The log belongs to the damaged database; a fresh one must not find it.
  ::rename(logPath().c_str(), (aside + "-wal").c_str());
  report("is damaged (" + reason + "); it is now " + aside + ", and an empty store takes its place");
  return true;
}

bool StoreFile::create() const {
  const std::string fresh = path_ + ".new";
  removeWithLogs(fresh);
  const int descriptor = ::open(fresh.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (descriptor < 0) {
    report(std::string("can't be created: ") + std::strerror(errno));
    return false;
  }
  Database database(lockPatience_);
  bool made = database.open(fresh, SQLITE_OPEN_READWRITE) && database.execute(creation);
  if (made) database.tidyLogWhenClosing(true);
  made = database.close() && made;
  const bool durable = made && ::fdatasync(descriptor) == 0;
  ::close(descriptor);
  for (const char* suffix : {"-wal", "-shm"}) ::unlink((path_ + suffix).c_str());
  if (!durable || ::rename(fresh.c_str(), path_.c_str()) != 0) {
    report("can't be created: " + (made ? std::string(std::strerror(errno)) : database.reason()));
    removeWithLogs(fresh);
    return false;
  }
  syncFolder(folderOf(path_));
  return true;
}

}  // namespace VorselKelp::posix
