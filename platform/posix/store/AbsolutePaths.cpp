#include "store/AbsolutePaths.h"

#include <sqlite3.h>

#include <cstring>

namespace VorselKelp::posix {
namespace {

int takeAsItStands(sqlite3_vfs* self, const char* path, int size, char* result) {
  if (path[0] != '/') return sqlite3_vfs_find(nullptr)->xFullPathname(self, path, size, result);
  const auto length = std::strlen(path);
  if (length >= static_cast<std::size_t>(size)) return SQLITE_CANTOPEN;
  std::memcpy(result, path, length + 1);
  return SQLITE_OK;
}

/// SQLite's own, but for the names.
sqlite3_vfs makeVfs() {
  sqlite3_vfs vfs = *sqlite3_vfs_find(nullptr);
  vfs.pNext = nullptr;
  vfs.zName = "vorsel-absolute";
  vfs.xFullPathname = &takeAsItStands;
  return vfs;
}

}  // namespace

const char* absolutePaths() {
  static sqlite3_vfs vfs = makeVfs();
  static const int registered = sqlite3_vfs_register(&vfs, 0);
  return registered == SQLITE_OK ? vfs.zName : nullptr;
}

}  // namespace VorselKelp::posix
