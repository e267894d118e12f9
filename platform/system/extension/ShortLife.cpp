#include "VorselKelpSystem/ShortLife.h"

#include <malloc.h>
#include <sqlite3.h>

#include <chrono>
#include <filesystem>

#include "VorselKelp/VorselKellp.h"

namespace VorselKelp::system {
namespace fs = std::filesystem;

void prepareShortLife() {
  ::mallopt(M_TOP_PAD, 512 << 10);
  sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
}

void removeStaleAttachments(const std::string& temporaryFolder) {
  const auto limit = fs::file_time_type::clock::now() - std::chrono::hours(1);
  std::error_code error;
  for (auto entry = fs::directory_iterator(temporaryFolder, error);
       !error && entry != fs::directory_iterator(); entry.increment(error)) {
    if (!entry->path().filename().string().starts_with("vorsel-attachment-")) continue;
    std::error_code ignored;
    const auto changed = entry->last_write_time(ignored);
    if (!ignored && changed < limit) fs::remove_all(entry->path(), ignored);
  }
}

void leaveCore(posix::EventLoop& loop) {
  loop.discard();
  VorselKellp::uninstall();
  loop.discard();
}

}  // namespace VorselKelp::system
