#include "VorselKelpSimulator/DeviceHome.h"

#include <filesystem>

#include "VorselKelpPosix/SafeName.h"

namespace VorselKelp::simulator {
namespace {

std::string absolutePath(const std::string& path) {
  std::error_code error;
  const auto absolute = std::filesystem::absolute(path, error);
  return error ? path : absolute.lexically_normal().string();
}

}  // namespace

DeviceHome::DeviceHome(const std::string& path) : path_(absolutePath(path)) {
  while (path_.size() > 1 && path_.ends_with('/')) path_.pop_back();
}

std::string DeviceHome::arrivals(const std::string& application) const {
  return path_ + "/arrivals/" + posix::safeName(application);
}

std::string DeviceHome::container(const Manifest& manifest, ProcessKind kind) const {
  return path_ + "/applications/" + posix::safeName(bundleIdentifierOf(manifest, kind));
}

std::string DeviceHome::standardDefaults(const Manifest& manifest, ProcessKind kind) const {
  return container(manifest, kind) + "/Library/Preferences/standard.sqlite";
}

std::string DeviceHome::temporaryFolder(const Manifest& manifest, ProcessKind kind) const {
  return container(manifest, kind) + "/tmp";
}

}  // namespace VorselKelp::simulator
