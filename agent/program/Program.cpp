#include "program/Program.h"

#include <unistd.h>

#include <array>
#include <climits>

namespace VorselKelp::agent {
namespace {

constexpr std::string_view deleted = " (deleted)";

std::string running() {
  std::array<char, PATH_MAX + deleted.size()> path{};
  const auto count = ::readlink("/proc/self/exe", path.data(), path.size());
  return count > 0 ? std::string(path.data(), static_cast<std::size_t>(count)) : std::string();
}

}  // namespace

std::string programPath() {
  auto path = running();
  if (path.ends_with(deleted)) path.resize(path.size() - deleted.size());
  return path;
}

bool programReplaced() {
  return running().ends_with(deleted);
}

}  // namespace VorselKelp::agent
