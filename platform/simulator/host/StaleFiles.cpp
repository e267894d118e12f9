#include "host/StaleFiles.h"

#include <chrono>
#include <filesystem>

namespace VorselKelp::simulator {
namespace fs = std::filesystem;

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

}  // namespace VorselKelp::simulator
