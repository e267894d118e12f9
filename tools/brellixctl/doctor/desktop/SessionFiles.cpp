#include "brellixctl/doctor/desktop/SessionFiles.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sstream>

#include "VorselKelpPosix/FileIO.h"

namespace brellixctl {

namespace {

constexpr std::size_t sizeLimit = std::size_t{1} << 20;

std::string valueOf(const char* variable, const std::string& otherwise) {
  const char* value = std::getenv(variable);
  return value != nullptr && *value != '\0' ? value : otherwise;
}

std::string trimmed(const std::string& text) {
  constexpr const char* blanks = " \t\r";
  const auto first = text.find_first_not_of(blanks);
  return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(blanks) + 1 - first);
}

}  // namespace

std::string SessionFile::value(const std::string& key) const {
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    const auto sign = line.find('=');
    if (sign != std::string::npos && trimmed(line.substr(0, sign)) == key)
      return trimmed(line.substr(sign + 1));
  }
  return {};
}

std::vector<std::string> SessionFile::command() const {
  std::vector<std::string> words;
  bool quoted = false;
  bool within = false;
  for (const char c : value("Exec")) {
    if (c == '"') quoted = !quoted;
    const bool blank = c == ' ' && !quoted;
    if (!blank && !within) words.emplace_back();
    within = !blank;
    if (within && c != '"') words.back() += c;
  }
  return words;
}

std::optional<SessionFile> findSessionFile(const std::string& path) {
  std::istringstream folders(valueOf("XDG_DATA_HOME", valueOf("HOME", "/nowhere") + "/.local/share") + ":" +
                             valueOf("XDG_DATA_DIRS", "/usr/local/share:/usr/share"));
  for (std::string folder; std::getline(folders, folder, ':');) {
    auto file = folder + "/" + path;
    if (auto text = VorselKelp::posix::readWholeFile(file, sizeLimit))
      return SessionFile{std::move(file), *std::move(text)};
  }
  return std::nullopt;
}

std::string programProblem(const std::string& path) {
  if (!path.starts_with('/')) return "\"" + path + "\" is no absolute path";
  return ::access(path.c_str(), X_OK) == 0 ? std::string() : path + ": " + std::strerror(errno);
}

std::string folderProblem(const std::string& path) {
  std::error_code ignored;
  std::filesystem::path nearest = path;
  while (nearest.has_relative_path() && !std::filesystem::exists(nearest, ignored))
    nearest = nearest.parent_path();
  if (!std::filesystem::is_directory(nearest, ignored)) return nearest.string() + " is no folder";
  return ::access(nearest.c_str(), R_OK | W_OK | X_OK) == 0 ? std::string()
                                                            : nearest.string() + ": " + std::strerror(errno);
}

}  // namespace brellixctl
