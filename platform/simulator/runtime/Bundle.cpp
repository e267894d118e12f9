#include "VorselKelpPosix/Resources.h"
#include "VorselKelpSimulator/Runtime.h"

namespace VorselKelp::simulator {
namespace {

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
    return posix::readResource(name);
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

}  // namespace VorselKelp::simulator
