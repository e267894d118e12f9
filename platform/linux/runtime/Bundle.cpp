#include <filesystem>
#include <fstream>

#include "VorselKelpLinux/Runtime.h"

namespace VorselKelp::linux_platform {
namespace {

constexpr std::size_t resourceLimit = std::size_t{1} << 20;

class ManifestBundle final : public platform::BundleInformation {
 public:
  ManifestBundle(const Manifest& manifest, ProcessKind kind) {
    if (kind == ProcessKind::application) main_ = manifest.properties;
    main_["CFBundleIdentifier"] = bundleIdentifierOf(manifest, kind);
    main_["CFBundleShortVersionString"] = manifest.version;
  }

  std::optional<std::string> mainBundleText(std::string_view key) override {
    const auto entry = main_.find(key);
    if (entry == main_.end()) return std::nullopt;
    return entry->second;
  }

  std::optional<std::string> libraryBundleText(std::string_view key) override {
    if (key == "CFBundleShortVersionString") return VORSELKELP_VERSION;
    return std::nullopt;
  }

  std::optional<std::string> libraryResource(std::string_view name) override {
    if (name.empty() || name.find('/') != std::string_view::npos) return std::nullopt;
    std::error_code error;
    const auto executable = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) return std::nullopt;
    // Beside the executables, in the build tree and where they are installed.
    const auto file = executable.parent_path().parent_path() / "share/vorselkelp" / name;
    std::ifstream stream(file, std::ios::binary);
    if (!stream) return std::nullopt;
    std::string bytes(resourceLimit, '\0');
    stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(stream.gcount()));
    return bytes;
  }

 private:
  std::map<std::string, std::string, std::less<>> main_;
};

}  // namespace

std::string bundleIdentifierOf(const Manifest& manifest, ProcessKind kind) {
  switch (kind) {
    case ProcessKind::application:
      break;
    case ProcessKind::serviceExtension:
      return manifest.bundleIdentifier + ".service";
    case ProcessKind::contentExtension:
      return manifest.bundleIdentifier + ".content";
  }
  return manifest.bundleIdentifier;
}

std::shared_ptr<platform::BundleInformation> makeBundleInformation(const Manifest& manifest,
                                                                   ProcessKind kind) {
  return std::make_shared<ManifestBundle>(manifest, kind);
}

}  // namespace VorselKelp::linux_platform
