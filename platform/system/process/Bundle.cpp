#include "VorselKelpPosix/Resources.h"
#include "VorselKelpSystem/Process.h"

namespace VorselKelp::system {
namespace {

class TextBundle final : public platform::BundleInformation {
 public:
  explicit TextBundle(BundleTexts texts) : main_(std::move(texts)) {}

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
  const BundleTexts main_;
};

}  // namespace

std::shared_ptr<platform::BundleInformation> makeBundle(const std::string& identifier,
                                                        const std::string& version, BundleTexts texts) {
  texts["CFBundleIdentifier"] = identifier;
  texts["CFBundleShortVersionString"] = version;
  return std::make_shared<TextBundle>(std::move(texts));
}

}  // namespace VorselKelp::system
