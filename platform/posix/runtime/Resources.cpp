#include "VorselKelpPosix/Resources.h"

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>
#include <utility>
#include <vector>

#include "VorselKelpPosix/FileIO.h"

namespace VorselKelp::posix {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t sizeLimit = std::size_t{1} << 20;

/// The prefix that a program or library in its "bin" or "lib" was installed under.
fs::path prefixOf(const fs::path& file) {
  return file.parent_path().parent_path();
}

/// The system's prefixes for shared data, the most important first.
void addSystemFolders(std::vector<fs::path>& folders) {
  const char* value = std::getenv("XDG_DATA_DIRS");
  std::string_view list = value != nullptr && *value != '\0' ? value : "/usr/local/share:/usr/share";
  while (!list.empty()) {
    const auto end = list.find(':');
    const fs::path folder = list.substr(0, end);
    if (folder.is_absolute()) folders.push_back(folder);
    list = end == std::string_view::npos ? std::string_view{} : list.substr(end + 1);
  }
}

/// An application that brings the files along has them beside its programs; otherwise they are where the
/// library is (a static one is where the program is), or where the system keeps such files.
std::vector<fs::path> sharedFolders() {
  std::vector<fs::path> folders;
  std::error_code error;
  const auto program = fs::read_symlink("/proc/self/exe", error);
  if (!error) folders.push_back(prefixOf(program) / "share");
  Dl_info library{};
  if (::dladdr(reinterpret_cast<const void*>(&readResource), &library) != 0 && library.dli_fname != nullptr) {
    const auto file = fs::canonical(library.dli_fname, error);
    if (!error) folders.push_back(prefixOf(file) / "share");
  }
  addSystemFolders(folders);
  return folders;
}

}  // namespace

std::optional<std::string> findSharedFile(std::string_view path) {
  for (const auto& folder : sharedFolders()) {
    std::error_code error;
    if (auto file = folder / path; fs::exists(file, error)) return file.string();
  }
  return std::nullopt;
}

std::optional<std::string> readResource(std::string_view name) {
  if (name.empty() || name.find('/') != std::string_view::npos) return std::nullopt;
  for (const auto& folder : sharedFolders()) {
    if (auto bytes = readWholeFile(folder / "vorselkelp" / name, sizeLimit)) return *std::move(bytes);
  }
  return std::nullopt;
}

}  // namespace VorselKelp::posix
